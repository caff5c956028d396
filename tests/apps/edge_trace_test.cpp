// `tarvex trace --mode edges`, as built.
#include "support/precompiled.h"

#include "apps/support/program.h"

namespace tarvex::app::test {
namespace {

/// A light disc on a dark ground, as a grey picture: radius 30 about the point 50, 40 of the plane.
std::string DiscPicture(int step) {
    std::string picture = "P5 100 80 255\n";
    for (int y = 0; y < 80; ++y) {
        for (int x = 0; x < 100; ++x) {
            const double inside = 30 - std::hypot(x + 0.5 - 50, y + 0.5 - 40);
            picture += static_cast<char>(60 + std::lround(step * std::clamp(inside + 0.5, 0.0, 1.0)));
        }
    }
    return picture;
}

TEST(EdgeTrace, EdgesAreStrokesInThePicturesOwnCoordinates) {
    for (const char* detector : {"canny", "shen-castan"}) {
        SCOPED_TRACE(detector);
        const std::string traced =
            OutputOf({"trace", "-", "-o", "-", "--mode", "edges", "--detector", detector}, DiscPicture(100));
        EXPECT_THAT(traced, testing::HasSubstr("fill=\"none\" stroke=\"#000\""));
        const Json info = Info(traced);
        EXPECT_EQ(info.at("contours"), 1);
        EXPECT_EQ(info.at("closed"), 1);
        ExpectFrame(info, {20, 10, 80, 70}, 0.3);
        EXPECT_NEAR(info.at("length").get<double>(), 2 * 3.14159 * 30, 2);
    }
}

TEST(EdgeTrace, OptionsDecideAndWrongOnesAreRefused) {
    const Arguments edges = {"trace", "-", "-o", "-", "--mode", "edges"};
    EXPECT_NE(OutputOf(edges + Arguments{"--steps", "20,80"}, DiscPicture(100)), "");
    EXPECT_NE(OutputOf(edges + Arguments{"--sigma", "3", "--format", "json"}, DiscPicture(100)), "");
    ExpectFailures({
        {"trace - -o - --mode edges --steps 20,200", 1, "no edge", DiscPicture(100)},
        {"trace - -o - --mode edges --steps 80,20", 2, "--steps"},
        {"trace - -o - --mode edges --sigma 0", 2, "--sigma"},
        {"trace - -o - --mode edges --detector sobel", 2, "--detector"},
        {"trace - -o - --mode edges --threshold 9", 2, "--threshold"},
        {"trace - -o - --sigma 2", 2, "--sigma"},
    });
}

}  // namespace
}  // namespace tarvex::app::test
