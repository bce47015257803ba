#pragma once

#include <travik/service/Export.h>

#include <vector>

/// What families of modules are judged by: ranks, which one that is far off does not move. Numbers are finite
/// throughout.
namespace Travik {

/// The middle number, of an even count the mean of the two. NaN of none.
TRAVIK_SERVICE_EXPORT double median(std::vector<double> numbers);

/// Where most numbers lie, and how far around it.
struct TRAVIK_SERVICE_EXPORT RobustSpread {
    /// To make of a median absolute deviation a standard deviation, where the numbers are normally distributed.
    static constexpr double consistency = 1.4826;

    double median;
    double mad;   ///< median absolute deviation from the median
    double sigma; ///< 1.4826 MAD, and at least the step in which the numbers are stored

    RobustSpread(const std::vector<double>& numbers, double step);
    /// How many sigmas a number lies above the median; infinite where sigma is 0 and it is another number.
    double score(double number) const;
};

} // namespace Travik
