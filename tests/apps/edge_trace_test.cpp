// `tarvex trace --mode edges`, as built.
#include "support/precompiled.h"

#include <nlohmann/json.hpp>

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
        const ProgramResult traced =
            RunTarvex({"trace", "-", "-o", "-", "--mode", "edges", "--detector", detector}, DiscPicture(100));
        ASSERT_EQ(traced.status, 0) << traced.errors;
        EXPECT_THAT(traced.output, testing::HasSubstr("fill=\"none\" stroke=\"#000\""));
        const auto info = nlohmann::json::parse(RunTarvex({"info", "-", "--json"}, traced.output).output);
        EXPECT_EQ(info.at("contours"), 1) << detector;
        EXPECT_EQ(info.at("closed"), 1) << detector;
        const std::vector<double> frame = info.at("frame");
        const double wanted[] = {20, 10, 80, 70};
        for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(frame[i], wanted[i], 0.3) << detector;
        EXPECT_NEAR(info.at("length").get<double>(), 2 * 3.14159 * 30, 2) << detector;
    }
}

TEST(EdgeTrace, OptionsDecideAndWrongOnesAreRefused) {
    const std::tuple<std::vector<std::string>, int> cases[] = {
        {{"--mode", "edges", "--steps", "20,200"}, 1},  // nothing is that high
        {{"--mode", "edges", "--steps", "20,80"}, 0},
        {{"--mode", "edges", "--sigma", "3", "--format", "json"}, 0},
        {{"--mode", "edges", "--steps", "80,20"}, 2},
        {{"--mode", "edges", "--sigma", "0"}, 2},
        {{"--mode", "edges", "--detector", "sobel"}, 2},
        {{"--mode", "edges", "--threshold", "9"}, 2},
        {{"--sigma", "2"}, 2},
    };
    for (const auto& [options, status] : cases) {
        std::vector<std::string> arguments = {"trace", "-", "-o", "-"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const ProgramResult result = RunTarvex(arguments, DiscPicture(100));
        EXPECT_EQ(result.status, status) << testing::PrintToString(options) << result.errors;
        EXPECT_EQ(result.output.empty(), status != 0);
    }
}

}  // namespace
}  // namespace tarvex::app::test
