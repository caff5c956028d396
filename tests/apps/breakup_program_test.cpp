// `tarvex breakup` and `tarvex region`, as built.
#include "support/precompiled.h"

#include "apps/support/program.h"
#include "apps/support/satin_checker.h"
#include "breakup/shapes.h"

namespace tarvex::app::test {
namespace {

/// Letters, a ring, a fill that overlaps itself, something wide, and what is no fill.
const char* const DRAWING =
    "<svg xmlns='http://www.w3.org/2000/svg' width='100mm' viewBox='0 0 500 250'>"
    "<path fill='#c00' d='M20 20H180V50H115V180H85V50H20Z'/>"
    "<path fill='#06a' fill-rule='evenodd' d='M300 20a80 80 0 1 1-.1 0zM300 50a50 50 0 1 0 .1 0z'/>"
    "<path fill='green' d='M200 210h160v12h-160zM274 170h12v79h-12z'/>"
    "<rect x='400' y='20' width='90' height='180'/>"
    "<path d='M0 0H500' stroke='red' fill='none'/></svg>";

/// What the satin's reader finds in the file that a drawing or picture becomes.
SatinFile SatinOf(const std::string& input, const Arguments& options = {}) {
    return CheckSatin(OutputOf(Arguments{"breakup", "-", "-o", "-", "--format", "satin"} + options, input));
}

TEST(BreakUpProgram, WritesSatinColumnsThatTheirReaderTakes) {
    const std::string text = OutputOf({"breakup", "-", "-o", "-", "--format", "satin"}, DRAWING);
    const SatinFile file = CheckSatin(text);
    EXPECT_THAT(file.faults, testing::IsEmpty());
    EXPECT_EQ(file.columns, 2 + 1 + 3);
    ASSERT_EQ(file.fills, 1) << "18 mm are wider than a satin can be";
    EXPECT_NEAR(std::min(file.angles[0], 180 - file.angles[0]), 0, 1) << "stitches run across the height";
    EXPECT_THAT(text, testing::HasSubstr("width=\"100mm\" height=\"50mm\""));
    EXPECT_EQ(SatinOf(DRAWING, {"--max-satin-mm", "19"}).fills, 0);
    EXPECT_GT(SatinOf(DRAWING, {"--mm-width", "400"}).fills, 1);
    EXPECT_THAT(OutputOf({"breakup", "-", "-o", "-", "--format", "satin", "--mm-width", "400"}, DRAWING),
                testing::HasSubstr("width=\"400mm\""));
}

TEST(BreakUpProgram, WritesSatinForEveryFixedShape) {
    for (const tarvex::test::NamedShape& shape : tarvex::test::FixedShapes()) {
        std::string picture =
            "P5 " + std::to_string(shape.size) + ' ' + std::to_string(shape.size) + " 255\n";
        for (int y = 0; y < shape.size; ++y)
            for (int x = 0; x < shape.size; ++x) picture += shape.inside(x + 0.5, y + 0.5) ? '\0' : '\xff';
        const SatinFile file = SatinOf(picture, {"--max-satin-mm", "100"});
        EXPECT_THAT(file.faults, testing::IsEmpty()) << shape.name;
        EXPECT_GT(file.columns, 0) << shape.name;
        EXPECT_EQ(file.fills, 0) << shape.name;
    }
}

TEST(BreakUpProgram, TellsEverythingInJsonAndShowsItInLayers) {
    const TemporaryDirectory directory;
    const std::string svg = OutputOf({"breakup", "-", "-o", "-", "--json", directory / "all.json"}, DRAWING);
    for (const char* layer : {"regions", "inclinations", "rails", "cuts"})
        EXPECT_THAT(svg, testing::HasSubstr(std::string("inkscape:label=\"") + layer + '"'));
    const Json all = Json::parse(ReadFile(directory / "all.json"));
    EXPECT_EQ(all.at("shapes").size(), 4U);
    EXPECT_NEAR(all.at("millimetresPerUnit").get<double>(), 0.2, 1e-9);
    const Json& island = all["shapes"][0].at("islands").at(0);
    EXPECT_EQ(island.at("result"), "done");
    EXPECT_EQ(island.at("regions").size(), 2U);
    for (const Json& region : island["regions"]) {
        for (const Json& inclination : region.at("inclinations")) {
            EXPECT_LT(inclination.at(0).get<std::size_t>(), region.at("rails").at(0).size());
            EXPECT_LT(inclination.at(1).get<std::size_t>(), region.at("rails").at(1).size());
        }
    }
    EXPECT_EQ(all["shapes"][1]["islands"][0]["regions"][0].at("ring"), true);
    EXPECT_EQ(all["shapes"][2]["islands"][0]["regions"].size(), 3U) << "two subpaths that cross are one plus";
    EXPECT_THAT(OutputOf({"breakup", "-", "-o", "-", "--format", "png"}, DRAWING),
                testing::StartsWith("\x89PNG"));
}

TEST(BreakUpProgram, OutlinesTheRegionAroundAPixel) {
    std::string picture = "P2 60 40 9\n";
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 60; ++x)
            picture += x >= 10 && x < 50 && y >= 10 && y < 30 ? (x < 30 ? "3 " : "4 ") : "9 ";
    const Arguments base = {"region", "-", "-o", "-", "--seed", "12,12", "--no-smooth"};
    EXPECT_THAT(OutputOf(base, picture), testing::HasSubstr("m10.5 15.5")) << "through the pixels' centres";
    const Json narrow = Json::parse(OutputOf(base + Arguments({"--format", "json"}), picture));
    EXPECT_EQ(narrow.at("contours").at(0).at("nodes").size(), 2U * (19 + 19) + 1);
    const Json wide =
        Json::parse(OutputOf(base + Arguments({"--format", "json", "--tolerance", "60"}), picture));
    EXPECT_GT(wide.at("contours").at(0).at("nodes").size(), 105U) << "corners are those of means";
    const Json stitches = Json::parse(OutputOf(base + Arguments({"--format", "json", "--breakup"}), picture));
    EXPECT_EQ(stitches.at("shapes").at(0).at("islands").at(0).at("regions").size(), 1U);
}

TEST(BreakUpProgram, SaysWhatIsWrong) {
    const std::string white = "P1 4 4 0000 0000 0000 0000";
    ExpectFailures({
        {"breakup - -o -", 1, "no filled shape", "<svg/>"},
        {"breakup - -o -", 1, "no filled shape", white},
        {"breakup - -o -", 3, "standard input", "junk"},
        {"breakup - -o x.dat", 2, "--format"},
        {"breakup - -o - --mm-width nan", 2, "--mm-width"},
        {"breakup - -o - --format dst", 2, "'dst' is none of"},
        {"region - -o - --seed 5", 2, "--seed"},
        {"region - -o - --seed 5,-1", 2, "--seed"},
        {"region - -o - --seed 5,4", 1, "outside the picture of 4 x 4", white},
        {"region - -o - --seed 1,1 --format satin", 2, "need --breakup"},
    });
}

}  // namespace
}  // namespace tarvex::app::test
