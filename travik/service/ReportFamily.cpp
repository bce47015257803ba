#include <travik/service/Report.h>
#include <travik/service/RobustStatistics.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

/// The middle of a family, and who lies far off it. All by ranks: a module that is far off does not move what it is
/// held against.
namespace Travik {

namespace {

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

/// Of ascending numbers, between two of them where the place is.
double quantile(const std::vector<double>& ascending, double part) {
    if (ascending.empty())
        return unknown;
    const double place = part * static_cast<double>(ascending.size() - 1);
    const auto below = static_cast<std::size_t>(place);
    const std::size_t above = std::min(below + 1, ascending.size() - 1);
    const double fraction = place - static_cast<double>(below);
    return fraction == 0 ? ascending[below] : ascending[below] + fraction * (ascending[above] - ascending[below]);
}

/// A difference below which nothing is odd, however alike the others are.
double stepOf(const ReportCurve& curve, double middle) {
    const int decimals = curve.format.decimals();
    return decimals >= 0 ? std::pow(10.0, -decimals) : std::max(std::abs(middle) * 1e-6, 1e-30);
}

class Judge {
public:
    explicit Judge(ReportTable& table) : table_(table), farthest_(table.drawn.size(), -1.0) {}

    void look(ReportCurve& curve) {
        ReportSpread spread;
        std::vector<double> sigmas;
        std::vector<double> numbers;
        for (std::size_t row = 0; row < table_.rows; ++row) {
            numbers.clear();
            for (std::size_t i = 0; i < table_.drawn.size(); ++i) {
                if (const double number = at(curve, i, row); std::isfinite(number))
                    numbers.push_back(number);
            }
            std::ranges::sort(numbers);
            spread.lowest.push_back(quantile(numbers, 0));
            spread.lowerQuartile.push_back(quantile(numbers, 0.25));
            spread.median.push_back(quantile(numbers, 0.5));
            spread.upperQuartile.push_back(quantile(numbers, 0.75));
            spread.highest.push_back(quantile(numbers, 1));
            sigmas.push_back(numbers.empty() ? unknown
                                             : RobustSpread(numbers, stepOf(curve, spread.median.back())).sigma);
        }
        measure(curve, spread, sigmas);
        curve.spread = std::move(spread);
    }

    /// Far off is what is far off by itself, and farther than the others are: of many points one is always rather far.
    void conclude() {
        std::vector<double> known;
        std::ranges::copy_if(farthest_, std::back_inserter(known), [](double distance) { return distance >= 0; });
        if (known.size() < fewestJudged)
            return;
        constexpr double factor = 6;
        const RobustSpread usual(known, 0);
        const double limit = std::max(factor, usual.median + factor * usual.sigma);
        table_.deviations = farthest_;
        for (std::size_t i = 0; i < farthest_.size(); ++i) {
            if (farthest_[i] > limit || (!isComparable(i) && hasValues(i)))
                table_.odd.push_back(i);
        }
        std::ranges::stable_sort(table_.odd,
                                 [&](std::size_t left, std::size_t right) { return rank(left) > rank(right); });
    }

    /// Those to be drawn, in the order of their places.
    std::vector<std::size_t> choice(std::size_t most) const {
        std::vector<std::size_t> chosen = table_.odd;
        chosen.resize(std::min(chosen.size(), most));
        std::vector<std::size_t> others(farthest_.size());
        std::iota(others.begin(), others.end(), 0U);
        std::vector<bool> isOdd(farthest_.size());
        for (const std::size_t i : table_.odd)
            isOdd[i] = true;
        std::erase_if(others, [&](std::size_t i) { return farthest_[i] < 0 || isOdd[i]; });
        std::ranges::stable_sort(others, {}, [&](std::size_t i) { return farthest_[i]; });
        const std::size_t room = std::min(most - chosen.size(), others.size());
        for (std::size_t i = 0; i < room; ++i)
            chosen.push_back(others[room == 1 ? others.size() / 2 : i * (others.size() - 1) / (room - 1)]);
        std::ranges::sort(chosen);
        return chosen;
    }

private:
    ReportTable& table_;
    std::vector<double> farthest_;

    bool isComparable(std::size_t i) const { return table_.ownAxes.empty() || table_.ownAxes[i].empty(); }
    bool hasValues(std::size_t i) const {
        return std::ranges::any_of(table_.curves,
                                   [&](const ReportCurve& curve) { return !curve.values[i].values.empty(); });
    }
    double rank(std::size_t i) const { return isComparable(i) ? farthest_[i] : 2 * ReportTable::farthest; }

    double at(const ReportCurve& curve, std::size_t i, std::size_t row) const {
        const std::vector<double>& values = curve.values[i].values;
        return row < values.size() && isComparable(i) ? values[row] : unknown;
    }

    /// Where by chance all are close, the neighbours say what is usual.
    static std::vector<double> smoothed(const std::vector<double>& sigmas) {
        constexpr std::size_t reach = 3;
        std::vector<double> made;
        for (std::size_t i = 0; i < sigmas.size(); ++i) {
            std::vector<double> near;
            for (std::size_t j = i - std::min(i, reach); j <= i + reach && j < sigmas.size(); ++j) {
                if (std::isfinite(sigmas[j]))
                    near.push_back(sigmas[j]);
            }
            made.push_back(near.empty() ? 0 : median(std::move(near)));
        }
        return made;
    }

    void measure(const ReportCurve& curve, const ReportSpread& spread, const std::vector<double>& sigmas) {
        const std::vector<double> usual = smoothed(sigmas);
        for (std::size_t i = 0; i < farthest_.size(); ++i) {
            for (std::size_t row = 0; row < table_.rows; ++row) {
                const double number = at(curve, i, row);
                if (!std::isfinite(number))
                    continue;
                const double distance = std::abs(number - spread.median[row]) / std::max(sigmas[row], usual[row]);
                farthest_[i] =
                    std::max(farthest_[i], std::isfinite(distance) ? std::min(distance, ReportTable::farthest)
                                                                   : ReportTable::farthest);
            }
        }
    }
};

} // namespace

void judgeFamily(ReportTable& table, std::size_t mostDrawn) {
    Judge judge(table);
    for (ReportCurve& curve : table.curves) {
        if (!curve.isText)
            judge.look(curve);
    }
    judge.conclude();
    if (table.drawn.size() <= mostDrawn)
        return;
    drawOnly(table, judge.choice(mostDrawn));
}

void drawOnly(ReportTable& table, std::span<const std::size_t> chosen) {
    const auto keep = [&](auto& items) {
        std::remove_reference_t<decltype(items)> kept;
        for (const std::size_t i : chosen)
            kept.push_back(std::move(items[i]));
        items = std::move(kept);
    };
    for (ReportCurve& curve : table.curves)
        keep(curve.values);
    keep(table.drawn);
    if (!table.ownAxes.empty())
        keep(table.ownAxes);
}

bool isLogarithmic(std::span<const double> values) {
    constexpr std::size_t few = 4;
    constexpr double narrow = 8;
    if (values.size() < few || !(values.front() > 0) || !(values.back() / values.front() >= narrow))
        return false;
    // The relative spread of the steps.
    const auto unevenness = [&](auto scale) {
        double sum = 0;
        double squares = 0;
        for (std::size_t i = 1; i < values.size(); ++i) {
            const double step = scale(values[i]) - scale(values[i - 1]);
            if (!(step >= 0) || !std::isfinite(step))
                return std::numeric_limits<double>::infinity();
            sum += step;
            squares += step * step;
        }
        const auto count = static_cast<double>(values.size() - 1);
        return squares * count / (sum * sum);
    };
    return unevenness([](double value) { return std::log(value); }) < unevenness([](double value) { return value; });
}

} // namespace Travik
