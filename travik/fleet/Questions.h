#pragma once

#include <travik/fleet/FleetDatabase.h>
#include <travik/service/BlockSelector.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Questions to a fleet in a database. Each module counts once, with its latest image; vanished images do not count.
/// All throw FleetError where the database cannot be read.
namespace Travik {

/// Which modules are meant; what is empty does not matter.
struct FleetFilter {
    std::optional<std::string> name;
    std::optional<std::string> productIndex;
    std::optional<std::string> partNumber;
};

struct FleetModule {
    std::string module;
    std::string path;
    std::string name; ///< empty where none is recorded
    std::optional<std::int64_t> serialNumber;
    std::string productIndex;
    std::string productionDate; ///< ISO 8601
};

/// A place in the tables of a fleet: a point of a curve, or a single value.
struct FleetPoint {
    std::string key;
    std::string field;
    std::int64_t row = 0;
    std::string rowLabel;
    std::size_t point = 0;           ///< number in the curve
    std::optional<double> axisValue; ///< what labels it; nothing where points are numbered, and for a single value
    std::string axisUnit;
    std::string unit;
};

struct OutlierQuestion {
    BlockSelector blocks;
    FleetFilter filter;
    /// From how many sigmas on a value lies outside.
    double threshold = 6;
    /// Fewer modules than so many say nothing about each other.
    std::size_t fewest = 5;
};

/// A value that lies outside those of the other modules.
struct Outlier {
    FleetModule module;
    FleetPoint point;
    double value;
    double median;
    double sigma; ///< 1.4826 MAD, at least the step in which the value is stored
    double score; ///< sigmas from the median, with sign
};

struct OutlierAnswer {
    std::size_t modules = 0;       ///< that have such a block
    std::size_t points = 0;        ///< places that were looked at
    std::size_t tooFew = 0;        ///< places that too few modules have
    std::vector<Outlier> outliers; ///< by module, then by place
};

/// The values of the blocks that lie outside, at each point of each curve: further from the median over the modules
/// than `threshold` sigmas. Points of different axes belong together where their labels are the same number.
TRAVIK_FLEET_EXPORT OutlierAnswer outliers(const FleetDatabase& database, const OutlierQuestion& question);

struct TrendQuestion {
    enum class Over : unsigned char { SerialNumber, ProductionDate };

    NameSelector fields;
    BlockSelector blocks;
    FleetFilter filter;
    Over over = Over::SerialNumber;
    std::optional<std::int64_t> row;
    /// Only the point with this label: a number, and where the labels are frequencies maybe a unit of those ("3 GHz").
    std::optional<std::string> at;
    std::size_t fewest = 5;
    bool keepsSamples = false; ///< whether the answer has the points that a line goes through
};

/// How a value changes over the modules.
struct Trend {
    FleetPoint point;
    std::size_t modules;
    double slope; ///< Theil-Sen, a serial number, or a year of 365.25 days
    double low;   ///< its confidence interval of 95 %
    double high;
    double intercept;                               ///< at serial number 0, or 1970-01-01
    double from;                                    ///< the value of the line at the first serial number or date
    double to;                                      ///< and at the last
    std::vector<std::pair<double, double>> samples; ///< serial number or year, and value; as the question asks

    bool isSure() const { return low > 0 || high < 0; }
};

/// A line through the values of each point. Modules without the serial number or the date are left out.
TRAVIK_FLEET_EXPORT std::vector<Trend> trends(const FleetDatabase& database, const TrendQuestion& question);

struct WearCount {
    FleetModule module;
    std::string counter;
    double value;
    std::optional<std::int64_t> operatingHours;
    std::optional<double> perThousandHours;
};

/// The wear counters, those that grow fastest first; those of which that is not known last.
TRAVIK_FLEET_EXPORT std::vector<WearCount> wear(const FleetDatabase& database, const FleetFilter& filter);

struct DamagedImage {
    FleetModule module;
    std::vector<std::string> problems;
};

/// The images that do not verify, by path: every one, not only the latest.
TRAVIK_FLEET_EXPORT std::vector<DamagedImage> damagedImages(const FleetDatabase& database, const FleetFilter& filter);
/// How many images there are that have not vanished.
TRAVIK_FLEET_EXPORT std::size_t imageCount(const FleetDatabase& database, const FleetFilter& filter);

} // namespace Travik
