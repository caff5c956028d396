// Comparing pictures with what they should show.
#pragma once

#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "tarvex/picture.h"

namespace tarvex::app::test {

inline std::string Shown(const Rgba& c) {
    return "(" + std::to_string(c.red) + " " + std::to_string(c.green) + " " + std::to_string(c.blue) + " " +
           std::to_string(c.alpha) + ")";
}

/// Every pixel is `expected(x, y)` to within `tolerance` levels a channel; says which is not.
inline testing::AssertionResult Shows(const Picture& picture, int width, int height,
                                      const std::function<Rgba(int, int)>& expected, int tolerance = 0) {
    if (picture.width != width || picture.height != height) {
        return testing::AssertionFailure()
               << "is " << picture.width << " x " << picture.height << ", not " << width << " x " << height;
    }
    const auto differs = [tolerance](int a, int b) { return std::abs(a - b) > tolerance; };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Rgba found = picture.At(x, y);
            const Rgba wanted = expected(x, y);
            if (differs(found.red, wanted.red) || differs(found.green, wanted.green) ||
                differs(found.blue, wanted.blue) || differs(found.alpha, wanted.alpha)) {
                return testing::AssertionFailure()
                       << "pixel " << x << ", " << y << " is " << Shown(found) << ", not " << Shown(wanted);
            }
        }
    }
    return testing::AssertionSuccess();
}

}  // namespace tarvex::app::test
