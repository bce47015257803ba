#pragma once

#include <travik/fleet/Questions.h>
#include <travik/service/Report.h>

#include <string>

/// The questions to a fleet as pages: the JSON documents of docs/report.md, with the family of curves of each block.
namespace Travik {

/// The blocks asked for with the curves of all modules; those that `outliers` finds are what lies far off.
TRAVIK_FLEET_EXPORT ReportDocuments outlierReport(const FleetDatabase& database, const OutlierQuestion& question,
                                                  const std::string& generator);
/// The fields asked for, with the curves of all modules; and of up to a hundred points the values over serial numbers
/// or years, with their line.
TRAVIK_FLEET_EXPORT ReportDocuments trendReport(const FleetDatabase& database, TrendQuestion question,
                                                const std::string& generator);
/// The wear counters of each kind of module, those that wear fastest first.
TRAVIK_FLEET_EXPORT ReportDocuments wearReport(const FleetDatabase& database, const FleetFilter& filter,
                                               const std::string& generator);
/// The images that do not verify.
TRAVIK_FLEET_EXPORT ReportDocuments damageReport(const FleetDatabase& database, const FleetFilter& filter,
                                                 const std::string& generator);

} // namespace Travik
