#pragma once

#include <travik/fleet/Export.h>

#include <span>
#include <vector>

/// The statistics of the questions to a fleet: robust ones, by their textbook formulas. Numbers are finite throughout.
namespace Travik {

/// The middle number, of an even count the mean of the two. NaN of none.
TRAVIK_FLEET_EXPORT double median(std::vector<double> numbers);

/// Where most numbers lie, and how far around it.
struct TRAVIK_FLEET_EXPORT RobustSpread {
    /// To make of a median absolute deviation a standard deviation, where the numbers are normally distributed.
    static constexpr double consistency = 1.4826;

    double median = 0;
    double mad = 0;   ///< median absolute deviation from the median
    double sigma = 0; ///< 1.4826 MAD, and at least the step in which the numbers are stored

    RobustSpread(const std::vector<double>& numbers, double step);
    /// How many sigmas a number lies above the median; infinite where sigma is 0 and it is another number.
    double score(double number) const;
};

/// The line through points by Theil and Sen: its slope is the median of the slopes of all pairs of points of different
/// x, its intercept median(y) - slope median(x). `low` and `high` bound the slope with 95 % confidence, from the
/// variance of Kendall's rank statistic (Sen 1968).
struct TrendLine {
    double slope = 0;
    double intercept = 0;
    double low = 0;
    double high = 0;

    /// Whether the confidence interval leaves 0 out.
    bool isSure() const { return low > 0 || high < 0; }
};

/// Of as many x as y. All NaN where no two x differ. Takes n log n time.
TRAVIK_FLEET_EXPORT TrendLine theilSen(std::span<const double> x, std::span<const double> y);

} // namespace Travik
