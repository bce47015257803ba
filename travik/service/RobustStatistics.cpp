#include <travik/service/RobustStatistics.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Travik {

double median(std::vector<double> numbers) {
    if (numbers.empty())
        return std::numeric_limits<double>::quiet_NaN();
    const auto middle = numbers.begin() + std::ssize(numbers) / 2;
    std::ranges::nth_element(numbers, middle);
    const double upper = *middle;
    if (numbers.size() % 2 == 1)
        return upper;
    return (*std::max_element(numbers.begin(), middle) + upper) / 2;
}

RobustSpread::RobustSpread(const std::vector<double>& numbers, double step) : median(Travik::median(numbers)) {
    std::vector<double> deviations(numbers);
    for (double& deviation : deviations)
        deviation = std::abs(deviation - median);
    mad = Travik::median(std::move(deviations));
    sigma = std::max(consistency * mad, step);
}

double RobustSpread::score(double number) const {
    const double deviation = number - median;
    return deviation == 0 ? 0 : deviation / sigma;
}

} // namespace Travik
