#include <travik/fleet/TrendLine.h>
#include <travik/service/RobustStatistics.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>

namespace Travik {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

struct Point {
    double x;
    double y;
    friend auto operator<=>(const Point&,
                            const Point&) = default; // NOLINT(modernize-use-nullptr): of what it compares to
};

/// The slopes of all pairs of points of different x, by their rank. Of few points they are listed; of many a slope of a
/// rank is closed in on: how many are below some slope is the number of pairs that are out of order in y - slope x.
class PairSlopes {
public:
    /// Sorted by x, then y.
    explicit PairSlopes(std::vector<Point> points) : points_(std::move(points)) {
        constexpr std::size_t few = 500;
        const std::size_t n = points_.size();
        count_ = std::uint64_t{n} * (n - 1) / 2;
        for (std::size_t i = 0; i < n;) {
            std::size_t end = i;
            while (end < n && points_[end].x == points_[i].x)
                ++end;
            count_ -= std::uint64_t{end - i} * (end - i - 1) / 2;
            i = end;
        }
        if (n <= few)
            list();
        else
            bound();
    }

    std::uint64_t count() const { return count_; }

    /// The slope with so many below it.
    double of(std::uint64_t rank) {
        if (listed_.empty())
            return closeIn(rank);
        const auto at = listed_.begin() + static_cast<std::ptrdiff_t>(rank);
        std::ranges::nth_element(listed_, at);
        return *at;
    }

private:
    std::vector<Point> points_;
    std::uint64_t count_ = 0;
    std::vector<double> listed_;
    double least_ = 0;
    double most_ = 0;
    std::vector<double> order_;
    std::vector<double> merged_;

    void list() {
        listed_.reserve(count_);
        for (std::size_t i = 0; i < points_.size(); ++i) {
            for (std::size_t j = i + 1; j < points_.size(); ++j) {
                if (points_[j].x > points_[i].x)
                    listed_.push_back((points_[j].y - points_[i].y) / (points_[j].x - points_[i].x));
            }
        }
    }

    // The steepest slopes are between neighbours in x.
    void bound() {
        least_ = std::numeric_limits<double>::infinity();
        most_ = -least_;
        std::size_t before = 0; // the points of the x before: [before, here)
        std::size_t here = 0;
        for (std::size_t i = 0; i < points_.size(); i = here) {
            before = i;
            here = i;
            while (here < points_.size() && points_[here].x == points_[before].x)
                ++here;
            if (here == points_.size())
                break;
            std::size_t end = here;
            while (end < points_.size() && points_[end].x == points_[here].x)
                ++end;
            const double dx = points_[here].x - points_[before].x;
            least_ = std::min(least_, (points_[here].y - points_[here - 1].y) / dx);
            most_ = std::max(most_, (points_[end - 1].y - points_[before].y) / dx);
        }
    }

    std::uint64_t countBelow(double slope) {
        order_.resize(points_.size());
        merged_.resize(points_.size());
        for (std::size_t i = 0; i < points_.size(); ++i)
            order_[i] = points_[i].y - slope * points_[i].x;
        std::uint64_t inversions = 0;
        const std::size_t n = order_.size();
        for (std::size_t width = 1; width < n; width *= 2) {
            for (std::size_t begin = 0; begin < n; begin += 2 * width) {
                const std::size_t middle = std::min(begin + width, n);
                const std::size_t end = std::min(begin + 2 * width, n);
                std::size_t left = begin;
                std::size_t right = middle;
                for (std::size_t to = begin; to < end; ++to) {
                    if (right == end || (left < middle && order_[left] <= order_[right])) {
                        merged_[to] = order_[left++];
                    } else {
                        inversions += middle - left;
                        merged_[to] = order_[right++];
                    }
                }
            }
            order_.swap(merged_);
        }
        return inversions;
    }

    double closeIn(std::uint64_t rank) {
        double low = least_;
        double high = most_;
        for (int i = 0; i < 200; ++i) {
            const double middle = low + (high - low) / 2;
            if (middle <= low || middle >= high || high - low <= 1e-15 * std::max(std::abs(low), std::abs(high)))
                break;
            (countBelow(middle) > rank ? high : low) = middle;
        }
        return low + (high - low) / 2;
    }
};

/// What ties in one of the variables take off the variance of Kendall's statistic, times 18.
double tiesOf(std::vector<double> numbers) {
    std::ranges::sort(numbers);
    double sum = 0;
    for (std::size_t i = 0; i < numbers.size();) {
        std::size_t end = i;
        while (end < numbers.size() && numbers[end] == numbers[i])
            ++end;
        const auto k = static_cast<double>(end - i);
        sum += k * (k - 1) * (2 * k + 5);
        i = end;
    }
    return sum;
}

} // namespace

TrendLine theilSen(std::span<const double> x, std::span<const double> y) {
    constexpr double normalQuantile = 1.959963984540054; // of 97.5 %
    std::vector<Point> points;
    const double middle = median({x.begin(), x.end()});
    for (std::size_t i = 0; i < x.size(); ++i)
        points.push_back({x[i] - middle, y[i]}); // differences of x are what counts, and are the more exact
    std::ranges::sort(points);
    if (points.size() < 2 || points.front().x == points.back().x)
        return {nan, nan, nan, nan};
    PairSlopes slopes(std::move(points));
    const std::uint64_t count = slopes.count();
    TrendLine line;
    line.slope = slopes.of(count / 2);
    if (count % 2 == 0)
        line.slope = (slopes.of(count / 2 - 1) + line.slope) / 2;
    line.intercept = median({y.begin(), y.end()}) - line.slope * middle;
    const auto n = static_cast<double>(x.size());
    const double variance =
        (n * (n - 1) * (2 * n + 5) - tiesOf({x.begin(), x.end()}) - tiesOf({y.begin(), y.end()})) / 18;
    const double half = normalQuantile * std::sqrt(std::max(variance, 0.0));
    const auto last = static_cast<double>(count - 1);
    const auto total = static_cast<double>(count);
    line.low = slopes.of(static_cast<std::uint64_t>(std::clamp(std::nearbyint((total - half) / 2) - 1, 0.0, last)));
    line.high = slopes.of(static_cast<std::uint64_t>(std::clamp(std::nearbyint((total + half) / 2), 0.0, last)));
    return line;
}

} // namespace Travik
