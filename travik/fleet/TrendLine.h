#pragma once

#include <travik/fleet/Export.h>

#include <span>

/// How a value drifts, by a textbook formula. Numbers are finite throughout.
namespace Travik {

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
