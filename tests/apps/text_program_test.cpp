// `tarvex text`, as built, and the pieces that put its letters in their places.
#include "support/precompiled.h"

#include "apps/support/program.h"
#include "tarvex/text_baseline.h"

namespace tarvex::app::test {
namespace {

std::string Text(const Arguments& arguments, const std::string& input = {}) {
    return OutputOf(Arguments{"text"} + arguments + Arguments{"-o", "-"}, input);
}

std::vector<double> Frame(const Arguments& arguments) { return Info(Text(arguments)).at("frame"); }

TEST(TextProgram, EachGlyphIsAPathAtTheFontsOwnPlace) {
    const Arguments font = {"--font", "DejaVu Sans", "--size", "204.8"};
    // A tenth of the font's units: the I is 604 wide and runs from 201 to 403, from the baseline up to 1493,
    // and the ascent is 1901.
    const Json info = Info(Text(Arguments{"II I"} + font));
    EXPECT_EQ(info.at("elements").size(), 3u);
    const double space = 65.1;
    const std::vector<double> lefts = {20.1, 80.5, 140.9 + space};
    for (std::size_t i = 0; i < 3; ++i) {
        const std::vector<double> frame = info["elements"][i].at("frame");
        EXPECT_NEAR(frame[0], lefts[i], 0.06);
        EXPECT_NEAR(frame[2], lefts[i] + 20.2, 0.06);
        EXPECT_NEAR(frame[1], 190.1 - 149.3, 0.06);
        EXPECT_NEAR(frame[3], 190.1, 0.06);
    }
    EXPECT_NEAR(info.at("page")[2].get<double>(), 3 * 60.4 + space, 0.06);
    EXPECT_NEAR(Frame(Arguments{"II", "--letter-spacing", "-7"} + font)[2], 100.7 - 7, 0.06);
    EXPECT_LT(Frame(Arguments{"AV"} + font)[2], Frame(Arguments{"AV", "--no-kerning"} + font)[2] - 5);
}

TEST(TextProgram, LinesAreSetBelowOneAnotherAndAligned) {
    for (const auto& [align, left] : {std::pair("left", 0), {"center", 1}, {"right", 2}}) {
        const Json info =
            Info(Text({"IIII\\nI", "--font", "DejaVu Sans", "--align", align, "--size", "100"}));
        const std::vector<double> last = info.at("elements").back().at("frame");
        const std::vector<double> first = info["elements"][0].at("frame");
        EXPECT_NEAR(last[0] - first[0], left * 1.5 * 29.5, 0.1) << align;
        EXPECT_NEAR(last[1] - first[1], 116.4, 0.2) << "ascent and descent are 1901 and 483 of 2048";
    }
    const std::string read = Text({"-"}, "a\\n\xC3\xA9\nb\n");
    EXPECT_EQ(read, Text({"a\\\\n\xC3\xA9\\nb"})) << "standard input has no escapes";
}

TEST(TextProgram, WhatCannotBeDrawnIsSaidInOneLine) {
    ExpectFailures({
        {"text a\xF4\x8F\xBF\xBF -o -", 1, "no installed font has U+10FFFF"},
        {"text ' \\n ' -o -", 1, "there is nothing in it to draw"},
        {"text '' -o -", 1, "there is nothing in it to draw"},
        {"text 'far too long' -o - --ellipse 9", 1, "the ellipse around only 57 px"},
        {"text a -o - --at 9", 2, "it goes with --ellipse"},
        {"text a -o - --warp arch", 2, "--warp and --amount go together"},
        {"text a -o - --size -1", 2, "is not a number above 0"},
    });
    // What is found out as the text is set, and not in the command line, leads to no help.
    const std::pair<Arguments, const char*> late[] = {
        {{"\xFF"}, "not all of it is UTF-8"},
        {{"a", "--font", std::string(32, 'x')}, "at most 31 characters"}};
    for (const auto& [arguments, message] : late) {
        const ProgramResult result = RunTarvex(Arguments{"text", "-o", "-"} + arguments);
        EXPECT_EQ(result.status, 2) << message;
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, testing::HasSubstr(message));
    }
    const ProgramResult replaced = RunTarvex({"text", "a", "-o", "-", "--font", "No such face"});
    EXPECT_EQ(replaced.status, 0);
    EXPECT_THAT(replaced.errors, testing::StartsWith("tarvex: there is no font No such face; "));
}

TEST(TextProgram, GlyphsStandUprightOnTheEllipse) {
    // A baseline of radius 200: the letters reach 72.9 of 100 beyond it; inside they reach towards the
    // centre.
    const Arguments circle = {"--font", "DejaVu Sans", "--size", "100", "--ellipse", "200"};
    const auto size = [](const std::vector<double>& f) { return std::pair(f[2] - f[0], f[3] - f[1]); };
    for (const auto& [at, isUpright] : {std::pair("0", true), {"180", true}, {"90", false}, {"-90", false}}) {
        const auto [width, height] = size(Frame(Arguments{"I", "--at", at} + circle));
        EXPECT_NEAR(width, isUpright ? 9.86 : 72.9, 0.1) << at;
        EXPECT_NEAR(height, isUpright ? 72.9 : 9.86, 0.1) << at;
    }
    const std::vector<double> all = Frame(Arguments{std::string(41, 'I')} + circle);
    EXPECT_NEAR(all[2] - all[0], 2 * 272.9, 2) << "all around";
}

TEST(EllipseLength, AgreesWithTheCircumferenceAndInvertsItself) {
    for (const auto& [rx, ry] : {std::pair(1.0, 1.0), {300, 20}, {20, 300}, {1e-3, 1e5}}) {
        const CEllipse ellipse({0, 0}, rx, ry);
        const EllipseLength length(ellipse);
        EXPECT_NEAR(length.Whole() / ellipse.GetCircumference(), 1, 1e-5);
        for (const double part : {-1.25, 0.0, 0.1, 0.5, 0.999, 3.75}) {
            const double angle = length.AngleAt(part * length.Whole());
            EXPECT_NEAR(length.At(angle) / length.Whole(), part - std::floor(part), 1e-9)
                << rx << ' ' << part;
        }
    }
}

}  // namespace
}  // namespace tarvex::app::test
