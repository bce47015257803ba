#pragma once

#include <travik/registry/ImageFindings.h>
#include <travik/service/NumberFormat.h>

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What a report page shows, without a word of how it looks: who the modules are, what is wrong with them, and their
/// blocks with values, tables, layout and bytes. Whoever has calibration tables can fill this in; `Report.h` does so
/// from images. docs/report.md shows the JSON that becomes of it. All texts are UTF-8.
namespace Travik {

/// Numbers of one source, such as the points of a curve.
struct ReportValues {
    std::vector<double> values; ///< not finite: there is none
    /// By place, in ascending order: what is shown where it is not the format's text of the number.
    std::vector<std::pair<std::size_t, std::string>> asText;
};

/// The middle and the spread of a family at each point. NaN where no source has a number.
struct ReportSpread {
    std::vector<double> lowest, lowerQuartile, median, upperQuartile, highest;
};

/// What the rows of a table lie over.
struct ReportAxis {
    std::string name; ///< "RFBO_ATT_CAL_FREQ (15720)"; of rows that are only counted, what they are
    std::string unit;
    NumberFormat format;
    std::vector<double> values;     ///< empty for rows that are only counted
    std::vector<std::string> texts; ///< instead of the numbers
    bool isLogarithmic = false;     ///< the values are spaced so
};

/// A column of a table, which is a curve of its plot.
struct ReportCurve {
    std::string name; ///< "row 3", "-10 dB", "amplitude"
    std::string unit;
    NumberFormat format;
    bool isText = false;
    std::vector<ReportValues> values; ///< one for each of the table's `drawn`
    std::optional<ReportSpread> spread;
};

struct ReportTable {
    std::string name; ///< "values (filter 2)"
    ReportAxis axis;
    std::string curvesName; ///< what the curves are: "row", "LOOPGAIN_PK_LIST (12305)"; may be empty
    std::vector<ReportCurve> curves;
    std::size_t rows = 0;
    bool isPlotted = false; ///< to be shown as curves, not only as numbers
    bool isMatrix = false;  ///< its curves are rows of a matrix: a heat map tells more than a bundle of curves
    /// Which of the block's places the values of the curves are of; of many, not all are drawn.
    std::vector<std::size_t> drawn;
    /// Of those whose axis is another one, their own. The same length as `drawn`, or empty.
    std::vector<std::vector<double>> ownAxes;
    /// Of a comparison: how many values differ.
    std::size_t changedValues = 0;
    /// Of a family, by place: how many robust deviations (1.4826 MAD) its farthest point lies from the median, at most
    /// `farthest`; negative where it cannot be compared. Empty where there are too few to judge.
    std::vector<double> deviations;
    static constexpr double farthest = 1000;
    std::vector<std::size_t> odd; ///< places that lie far off all others, the farthest first
};

/// A single value of a block.
struct ReportField {
    std::string name;
    std::vector<std::string> texts; ///< one a place, with its unit; empty where the block ends before it
};

/// How a field is stored.
struct ReportLayoutField {
    std::string name, type, purpose, unit;
    std::size_t offset = 0;                                      ///< bytes from the start of the block
    std::size_t width = 0;                                       ///< bytes of an element
    std::vector<std::pair<std::size_t, std::size_t>> dimensions; ///< extent and stride, outermost first
};

/// Where a block lies in one of the sources.
struct ReportPlace {
    std::size_t source = 0;
    std::size_t offset = 0;
    std::size_t size = 0;
    std::string checksum;    ///< "ok", "wrong", "not checked"; empty where it has none
    std::string crc;         ///< the same of its CRC-32
    std::vector<char> bytes; ///< may be left out
};

/// A block of one module, or the same block of several.
struct ReportBlock {
    int id = 0;
    std::string key, className;
    std::size_t occurrence = 0; ///< 0 for the first of its identifier
    std::size_t kind = 0;       ///< of the page's `kinds`
    std::vector<ReportPlace> places;
    std::vector<ReportField> fields;
    std::vector<ReportTable> tables;
    std::vector<ReportLayoutField> layout;
    enum class Change : unsigned char { None, Equal, Changed, Added, Removed };
    Change change = Change::None; ///< of a comparison
    std::size_t changedBytes = 0; ///< of a comparison
};

/// One line of who a module is.
struct ReportFact {
    std::string group, label;
    std::string value; ///< empty: not recorded
    std::string mark;  ///< what is wrong with it
};

/// A module, or whatever else values come from.
struct ReportSource {
    std::string name;  ///< of the file
    std::string title; ///< "RFBO, serial number 101337"
    std::size_t kind = 0;
    std::size_t size = 0; ///< bytes
    std::size_t blocks = 0;
    std::vector<ReportFact> facts;
    std::vector<ImageFinding> findings;
};

enum class ReportForm : unsigned char { Module, Comparison, Family };

/// What stands above the blocks.
struct ReportHead {
    ReportForm form = ReportForm::Module;
    std::string title;
    std::string generator; ///< "datablock 0.1.0"
    std::vector<std::string> kinds;
    std::vector<ReportSource> sources;
    std::vector<std::string> remarks; ///< what the page leaves out, and why
};

} // namespace Travik
