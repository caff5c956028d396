// The guarded divisor.
#include "support/precompiled.h"

#include "core/guarded.h"

namespace tarvex {
namespace {

TEST(GuardedDivisor, PushesSmallValuesOutToTheToleranceAndLeavesZeroAlone) {
    const double inf = std::numeric_limits<double>::infinity();
    const double justBelow = std::nextafter(1e-8, 0.0);
    struct Case {
        double v, expected;
    };
    for (const auto& [v, expected] : {Case{1e-8, 1e-8},
                                      {-1e-8, -1e-8},
                                      {justBelow, 1e-8},
                                      {-justBelow, -1e-8},
                                      {5e-324, 1e-8},
                                      {-5e-324, -1e-8},
                                      {0.0, 0.0},
                                      {3.5, 3.5},
                                      {inf, inf},
                                      {-inf, -inf}}) {
        EXPECT_EQ(GuardedDivisor(v), expected) << v;
    }
    EXPECT_TRUE(std::isnan(GuardedDivisor(std::nan(""))));
}

}  // namespace
}  // namespace tarvex
