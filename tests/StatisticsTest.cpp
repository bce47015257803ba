#include "Support.h"

#include <travik/fleet/TrendLine.h>
#include <travik/service/RobustStatistics.h>

#include <cmath>
#include <limits>

namespace StatisticsTest {

using namespace Travik;

TEST(Statistics, FollowTheirFormulas) {
    EXPECT_TRUE(std::isnan(median({})));
    EXPECT_EQ(median({3, 1, 2}), 2);
    EXPECT_EQ(median({4, 1, 2, 3}), 2.5);
    const RobustSpread spread({1, 1, 2, 2, 4, 6, 9}, 0); // a textbook's: median 2, MAD 1
    EXPECT_EQ(spread.median, 2);
    EXPECT_EQ(spread.mad, 1);
    EXPECT_DOUBLE_EQ(spread.score(9), 7 / 1.4826);
    const RobustSpread same({5, 5, 5, 5}, 0);
    EXPECT_EQ(same.score(5), 0);
    EXPECT_EQ(same.score(6), std::numeric_limits<double>::infinity());
    EXPECT_EQ(RobustSpread({5, 5, 5, 5}, 0.5).score(6), 2);

    const std::vector<double> x{1, 2, 3, 4, 5};
    const TrendLine line = theilSen(x, std::vector<double>{3, 5, 7, 9, 100});
    EXPECT_EQ(line.slope, 2);
    EXPECT_EQ(line.intercept, 1);
    EXPECT_TRUE(std::isnan(theilSen(std::vector<double>{1, 1}, std::vector<double>{1, 2}).slope));
    EXPECT_TRUE(std::isnan(theilSen({}, {}).slope));
    EXPECT_EQ(theilSen(std::vector<double>{1, 1, 2}, std::vector<double>{0, 2, 4}).slope, 3); // of 4 and 2
}

// Many points take the way that lists no pairs; the answer is that of all pairs.
TEST(Statistics, ManyPointsHaveTheSlopesOfAllPairs) {
    std::mt19937 random(1);
    for (const bool withTies : {false, true}) {
        std::vector<double> x;
        std::vector<double> y;
        for (int i = 0; i < 800; ++i) {
            x.push_back(withTies ? static_cast<double>(random() % 100)
                                 : 1e5 + static_cast<double>(random() % 1000000) / 7);
            y.push_back(0.01 * x.back() + static_cast<double>(random() % 1000) / 3);
        }
        std::vector<double> slopes;
        for (std::size_t i = 0; i < x.size(); ++i) {
            for (std::size_t j = 0; j < x.size(); ++j) {
                if (x[j] > x[i])
                    slopes.push_back((y[j] - y[i]) / (x[j] - x[i]));
            }
        }
        const double expected = median(slopes);
        EXPECT_NEAR(theilSen(x, y).slope, expected, 1e-9 * std::abs(expected));
        std::ranges::transform(x, y.begin(), [](double place) { return 2 * place; });
        EXPECT_NEAR(theilSen(x, y).slope, 2, 1e-9);
    }
}

} // namespace StatisticsTest
