// `tarvex transform`, `tarvex warp` and `tarvex info`, as built.
#include "support/precompiled.h"

#include "apps/support/program.h"

namespace tarvex::app::test {
namespace {

const char* const DRAWING =
    "<?xml version='1.0'?><!-- kept -->"
    "<svg xmlns='http://www.w3.org/2000/svg' width='10cm' height='5cm' viewBox='0 0 200 100'>"
    "<title>T &amp; t</title>"
    "<g class='k' transform='translate(20 20)' stroke='#00f' stroke-width='2'>"
    "<rect id='r' data-x='1' width='80' height='40' fill='red' style='opacity:.5'/>"
    "<path d='M100 10a20 20 0 0 1 40 0a20 20 0 0 1-40 0z' transform='translate(0 10)'/></g></svg>";

std::string Changed(Arguments arguments, const std::string& drawing = DRAWING) {
    arguments.insert(arguments.begin() + 1, {"-", "-o", "-"});
    return OutputOf(arguments, drawing);
}

TEST(DrawingProgram, InfoMeasuresTheDrawingAndEachElement) {
    const Json info = Info(DRAWING);
    EXPECT_EQ(info.at("kind"), "drawing");
    EXPECT_EQ(info.at("page"), (Json{0.0, 0.0, 200.0, 100.0}));
    EXPECT_EQ(info.at("contours"), 2);
    EXPECT_EQ(info.at("closed"), 2);
    ExpectFrame(info, {20, 20, 160, 60}, 1e-3);
    const Json& rect = info.at("elements").at(0);
    EXPECT_EQ(rect.at("element"), "rect");
    EXPECT_EQ(rect.at("id"), "r");
    EXPECT_EQ(rect.at("nodes"), 4);
    EXPECT_EQ(rect.at("length"), 240);
    EXPECT_EQ(rect.at("area"), 3200);
    EXPECT_EQ(rect.at("winding"), "clockwise");
    const Json& circle = info["elements"].at(1);
    EXPECT_EQ(circle.at("id"), nullptr);
    EXPECT_NEAR(circle.at("length").get<double>(), 40 * 3.14159265, 1e-2);
    EXPECT_NEAR(circle.at("area").get<double>(), 400 * 3.14159265, 1e-1);
    EXPECT_NEAR(info.at("area").get<double>(), 3200 + circle["area"].get<double>(), 1e-5);
    EXPECT_EQ(info.at("remarks"), nullptr);

    const std::string text = OutputOf({"info", "-"}, DRAWING);
    EXPECT_THAT(text, testing::HasSubstr("standard input: SVG drawing, 200 x 100\n"));
    EXPECT_THAT(text, testing::HasSubstr("20,20 to 100,60"));
}

TEST(DrawingProgram, WindingTellsTheSenseOnTheScreen) {
    const std::pair<const char*, const char*> cases[] = {
        {"M0 0H9V9z", "clockwise"}, {"M0 0V9H9z", "counter-clockwise"}, {"M0 0H9V9zM0 0V9H9z", "mixed"},
        {"M0 0H9", "none"},         {"M0 0H9V9", "clockwise"},          {"M.1.1L.7.7 1.3 1.3z", "none"},
    };
    for (const auto& [data, winding] : cases)
        EXPECT_EQ(Info("<svg><path d='" + std::string(data) + "'/></svg>").at("winding"), winding) << data;
}

TEST(DrawingProgram, InfoTellsSizeAndFormatOfPictures) {
    EXPECT_EQ(OutputOf({"info", "-"}, "P5 2 1 255\nab"), "standard input: PNM picture, 2 x 1 pixels, grey\n");
    EXPECT_EQ(
        Info("P6 1 1 255\nabc"),
        Json::parse(R"({"file":"-","kind":"picture","format":"PNM","width":1,"height":1,"pixels":"RGB"})"));
}

TEST(DrawingProgram, TransformGivesTheExpectedFrameAndArea) {
    // The outlines' frame is 20,20 to 160,60: its centre 90,40, its half sides 70 and 20.
    const struct {
        Arguments options;
        std::vector<double> frame;
        double areaGrowth;
    } cases[] = {
        {{}, {20, 20, 160, 60}, 1},
        {{"--translate", "-5,7.5"}, {15, 27.5, 155, 67.5}, 1},
        {{"--scale", "2"}, {-50, 0, 230, 80}, 4},
        {{"--scale", "-1,.5"}, {20, 30, 160, 50}, 0.5},
        {{"--rotate", "90"}, {70, -30, 110, 110}, 1},
        {{"--rotate", "-270"}, {70, -30, 110, 110}, 1},
        {{"--rotate", "60,0,0"}, {20, 30, 160, 50}, 0.5},
        {{"--rotate", "0,60,0"}, {55, 20, 125, 60}, 0.5},
        {{"--rotate", "0,0,180"}, {20, 20, 160, 60}, 1},
        {{"--rotate", "90", "--scale", "2,1", "--translate", "1,2"}, {71, -98, 111, 182}, 2},
    };
    const double area = Info(DRAWING).at("area");
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.options));
        const Json info = Info(Changed(Arguments{"transform"} + c.options));
        ExpectFrame(info, c.frame, 0.011);
        EXPECT_NEAR(info.at("area").get<double>(), area * c.areaGrowth, 2);
    }
}

TEST(DrawingProgram, PositiveAnglesTurnClockwise) {
    const std::string bar = "<svg viewBox='-9 -9 18 18'><path d='M0 0H8'/><circle r='8'/></svg>";
    const Json info = Info(Changed({"transform", "--rotate", "90"}, bar));
    ExpectFrame(info.at("elements").at(0), {0, 0, 0, 8}, 0.01);
}

TEST(DrawingProgram, WarpByNothingChangesNothingWithinThePrecision) {
    const std::vector<double> frame = Info(DRAWING).at("frame");
    for (int type = 1; type <= 10; ++type) {
        const Json info = Info(Changed({"warp", "--type", std::to_string(type), "--amount", "0"}));
        ExpectFrame(info, frame, 0.011);
        EXPECT_EQ(info.at("elements").at(0).at("nodes"), 4);
        EXPECT_EQ(info.at("elements").at(0).at("length"), 240);
        EXPECT_NEAR(info.at("area").get<double>(), Info(DRAWING).at("area").get<double>(), 1);
    }
}

TEST(DrawingProgram, WarpTakesNumbersAndNamesLengthsAndPercentages) {
    const std::string byNumber = Changed({"warp", "--type", "8", "--amount", "10"});
    EXPECT_EQ(Changed({"warp", "--type", "arch", "--amount", "25%"}), byNumber);
    EXPECT_EQ(Changed({"warp", "--type", "sag", "--amount", "-10"}), byNumber);
    // The middle of the drawing's top, x = 90, moves up by 10.
    EXPECT_NEAR(Info(byNumber).at("frame")[1].get<double>(), 10, 0.02);
}

TEST(DrawingProgram, AllButGeometryIsCarriedOver) {
    const std::string out = Changed({"transform", "--translate", "1,0", "--precision", "1"});
    EXPECT_EQ(out,
              "<?xml version=\"1.0\"?><!-- kept --><svg xmlns=\"http://www.w3.org/2000/svg\" width=\"10cm\" "
              "height=\"5cm\" viewBox=\"0 0 200 100\"><title>T &amp; t</title>"
              "<g class=\"k\" stroke=\"#00f\" stroke-width=\"2\">"
              "<path id=\"r\" data-x=\"1\" fill=\"red\" style=\"opacity:.5\" d=\"m21 20h80v40H21z\"/>" +
                  out.substr(out.find("<path d=")));
}

TEST(DrawingProgram, StrokesGrowWithTheDrawing) {
    const std::string drawing =
        "<svg viewBox='0 0 100 100'><g transform='scale(2)' stroke='red' stroke-dasharray='3,1'>"
        "<path d='M5 5h1' style='stroke-width:4;fill:none'/><path d='M5 6h1' "
        "vector-effect='non-scaling-stroke'/>"
        "<path d='M5 7h1' stroke='none' stroke-width='5'/></g></svg>";
    const std::string out = Changed({"transform", "--scale", "1.5"}, drawing);
    EXPECT_THAT(out, testing::HasSubstr("stroke-width:12"));
    EXPECT_THAT(out, testing::HasSubstr("stroke-dasharray=\"9 3\""));
    EXPECT_THAT(out, testing::HasSubstr("<path vector-effect=\"non-scaling-stroke\" d="));
    EXPECT_THAT(out, testing::HasSubstr("stroke=\"none\" stroke-width=\"5\""));
}

TEST(DrawingProgram, ThePageGrowsToHoldOutlinesAndStrokesAndNeverShrinks) {
    const std::pair<Arguments, const char*> cases[] = {
        {{"--scale", ".1"}, "width=\"10cm\" height=\"5cm\" viewBox=\"0 0 200 100\""},
        {{"--translate", "99,0"}, "width=\"13cm\" height=\"5cm\" viewBox=\"0 0 260 100\""},
        {{"--translate", "-121,-71"}, "width=\"15.1cm\" height=\"7.6cm\" viewBox=\"-102 -52 302 152\""},
    };
    for (const auto& [options, root] : cases)
        EXPECT_THAT(Changed(Arguments{"transform"} + options), testing::HasSubstr(root));
    EXPECT_THAT(Changed({"transform"}, "<svg><path d='M5 5h10v20'/></svg>"),
                testing::HasSubstr("viewBox=\"5 5 10 20\""));
}

TEST(DrawingProgram, NestedDrawingsBecomeGroupsAndBentLinesStayUnfilled) {
    const std::string out = Changed({"warp", "--type", "arch", "--amount", "10"},
                                    "<s:svg xmlns:s='http://www.w3.org/2000/svg' viewBox='0 0 90 90'><s:svg "
                                    "x='9' viewBox='0 0 9 9' id='n'>"
                                    "<s:line x2='9' y2='9'/></s:svg></s:svg>");
    EXPECT_THAT(out, testing::HasSubstr("<s:g id=\"n\"><s:path "));
    EXPECT_THAT(out, testing::HasSubstr("style=\"fill:none\""));
}

TEST(DrawingProgram, WhatIsLeftOutIsSaidInOneLine) {
    const ProgramResult result =
        RunTarvex({"transform", "-", "-o", "-"},
                  "<svg><circle r='5' fill='url(#g)'/><text>A</text><style>a{}</style></svg>");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(
        result.errors,
        "tarvex: standard input: left out, being no outlines: 1 text; gradients, patterns, clips, masks and "
        "filters are not changed along; lengths of strokes in the style sheet are not changed along\n");
    EXPECT_THAT(result.output, testing::Not(testing::HasSubstr("text")));
}

TEST(DrawingProgram, EveryFailureIsOneLineAndAStatus) {
    const std::string circle = "<svg><circle r='5'/></svg>";
    const TemporaryDirectory directory;
    WriteFile(directory / "a.svg", circle);
    ExpectFailures(
        {
            {"transform - -o x.png", 2, "x.png: its ending is not .svg"},
            {"transform - -o - --rotate 1,2", 2, "--rotate: '1,2' is not an angle"},
            {"transform - -o - --rotate x", 2, "--rotate: 'x'"},
            {"transform - -o - --rotate nan", 2, "--rotate: 'nan'"},
            {"transform - -o - --scale 0", 2, "--scale: '0' is not a factor other than 0"},
            {"transform - -o - --scale 1e99", 2, "--scale"},
            {"transform - -o - --translate 5", 2, "--translate: '5' is not two lengths"},
            {"transform - -o - --translate 5,", 2, "--translate: '5,'"},
            {"warp - -o - --type 1", 2, "--amount is required"},
            {"warp - -o - --amount 1", 2, "--type is required"},
            {"warp - -o - --type 11 --amount 1", 2, "--type: '11' is not a type"},
            {"warp - -o - --type bend --amount 1", 2, "--type: 'bend'"},
            {"warp - -o - --type 1 --amount %", 2, "--amount: '%' is not a length"},
            {"transform '' -o -", 2, "the file's name is empty"},
            {"info ''", 2, "the file's name is empty"},
            {"info - more", 2, "standard input goes alone"},

            {"transform - -o -", 1, "the drawing has no outlines", "<svg/>"},
            {"transform - -o -", 1, "no outlines (left out, being no outlines: 1 use)", "<svg><use/></svg>"},
            {"warp - -o - --type 1 --amount 9", 1, "no outlines", "<svg><path d='M1 1'/></svg>"},
            {"transform - -o - --scale 1e8", 1, "too large", "<svg><circle r='9e8'/></svg>"},

            {"transform - -o -", 3, "standard input: the file is empty"},
            {"transform - -o -", 3, "standard input: not an SVG drawing", "P5 1 1 255\na"},
            {"warp - -o - --type 1 --amount 9", 3, "standard input: damaged XML", "<svg><g>"},
            {"transform /no/such.svg -o -", 3, "/no/such.svg: No such file"},
            {"transform - -o /no/out.svg", 3, "/no/out.svg: cannot be written", circle},
            {"transform @/a.svg -o @/./a.svg --scale 2", 3, "it is the input"},
            {"info -", 3, "neither an SVG drawing nor a picture", "hello"},
            {"info -", 3, "standard input: the file is empty"},
            {"info -", 3, "damaged PNM", "P5 2 1 255\na"},
            {"info -", 3, "its root element is not svg", "<html/>"},
            {"info - --max-pixels 1", 3, "--max-pixels", "P5 2 1 255\nab"},
            {"info /dev/zero", 3, "/dev/zero: neither"},
        },
        directory);
}

}  // namespace
}  // namespace tarvex::app::test
