#pragma once

#include <travik/registry/ModuleInfo.h>
#include <travik/service/ReportModel.h>

#include <span>
#include <string>
#include <vector>

/// Images as a report: what a page shows of one module, of two compared, and of a family.
namespace Travik {

struct ReportImage {
    std::string name; ///< of the file, any bytes
    std::span<const char> bytes;
};

/// What keeps a page usable, however many images there are. What is left out is said among the remarks.
struct ReportLimits {
    std::size_t values = 2'000'000;            ///< points of the curves of families
    std::size_t bytes = std::size_t{4} << 20U; ///< of the images, for the view of their bytes
    std::size_t blocks = 2000;
};

/// The JSON documents of a page: what stands above the blocks, and the blocks one by one, so that a page need not parse
/// what is not looked at. ASCII but for texts, and harmless inside an HTML element: no "<" in them.
struct ReportDocuments {
    std::string title; ///< as it is, not escaped
    std::string head;
    std::vector<std::string> blocks;
};

/// Blocks are the same where identifier and occurrence are, of a family among the images of a module of the same name.
/// The bytes must outlive the call only. Of a comparison there are two images, changed blocks first.
TRAVIK_SERVICE_EXPORT ReportDocuments reportOf(std::span<const ReportImage> images, ReportForm form,
                                               const std::string& generator, const ReportLimits& limits = {});

/// Who a module is, a line a fact, as `datablock info` has it.
TRAVIK_SERVICE_EXPORT std::vector<ReportFact> reportFacts(const ModuleInfo& info);

/// Of a table of a family, whose `drawn` are all places one after the other: finds its middle, its spread and what lies
/// far off all others, and leaves of the curves those to be drawn, at most so many: the odd first, of the others an
/// even choice from the nearest to the farthest. The extremes stand in the spread.
TRAVIK_SERVICE_EXPORT void judgeFamily(ReportTable& table, std::size_t mostDrawn);
/// So few cannot be judged: then `odd` and `deviations` stay empty.
inline constexpr std::size_t fewestJudged = 5;

/// Leaves of the curves of a family these, by their places in ascending order. Spread and deviations stay those of all.
TRAVIK_SERVICE_EXPORT void drawOnly(ReportTable& table, std::span<const std::size_t> chosen);

/// Whether ascending values are spaced more evenly by ratio than by difference.
TRAVIK_SERVICE_EXPORT bool isLogarithmic(std::span<const double> values);

/// The documents of docs/report.md.
TRAVIK_SERVICE_EXPORT std::string reportBlockJson(const ReportBlock& block);
/// Only what a table of contents needs is taken from the blocks; their bytes, values and layout may be gone.
TRAVIK_SERVICE_EXPORT std::string reportHeadJson(const ReportHead& head, std::span<const ReportBlock> blocks);

} // namespace Travik
