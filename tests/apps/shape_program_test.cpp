// `tarvex shape`, as built.
#include "support/precompiled.h"

#include <nlohmann/json.hpp>

#include "apps/support/path_parser.h"
#include "apps/support/program.h"
#include "apps/support/temporary_directory.h"

namespace tarvex::app::test {
namespace {

using Json = nlohmann::json;

/// A star drawn in one go, whose middle the nonzero rule fills.
const std::string STAR =
    "<svg viewBox='0 0 100 100'><path fill='#c33' d='M50 2L79 95 3 38 97 38 21 95z'/></svg>";
const std::string DISC = "<svg viewBox='0 0 100 100'><circle cx='50' cy='50' r='28'/></svg>";
const std::string SQUARES =  // that overlap, and are one shape all the same
    "<svg viewBox='-10 -10 120 120'><rect width='60' height='60'/><rect x='40' width='60' height='60'/>"
    "<path d='M0 80h10v10' id='open'/><rect width='900' height='900' fill='none' stroke='red'/></svg>";

class ShapeProgram : public testing::Test {
  protected:
    std::string File(const std::string& name, const std::string& content) {
        WriteFile(m_directory / name, content);
        return m_directory / name;
    }

    /// The summed area of what the combination fills.
    double Area(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "shape");
        arguments.insert(arguments.end(), {"-o", "-"});
        const ProgramResult result = RunTarvex(arguments);
        EXPECT_EQ(result.status, 0) << result.errors;
        const ProgramResult info = RunTarvex({"info", "-", "--json"}, result.output);
        return info.status == 0 ? std::fabs(Json::parse(info.output).at("area").get<double>()) : -1;
    }

    TemporaryDirectory m_directory;
};

TEST_F(ShapeProgram, KeepsArcsAndPageAndColour) {
    const std::string star = File("star.svg", STAR), disc = File("disc.svg", DISC);
    const ProgramResult result = RunTarvex({"shape", "difference", star, disc, "-o", "-"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, testing::HasSubstr("viewBox=\"0 0 100 100\""));
    EXPECT_THAT(result.output, testing::HasSubstr("fill=\"#cc3333\""));
    const std::size_t start = result.output.find(" d=\"") + 4;
    const auto contours = ParsePath(result.output.substr(start, result.output.find('"', start) - start));
    ASSERT_EQ(contours.size(), 5u);  // the tips
    for (const ParsedContour& contour : contours) {
        int lines = 0;
        for (const ParsedSegment& segment : contour.segments) {
            lines += segment.isLine;
            if (segment.isLine) continue;
            EXPECT_NEAR(std::hypot(segment.start.x - 50, segment.start.y - 50), 28, 0.01);
            EXPECT_NEAR(std::hypot(segment.end.x - 50, segment.end.y - 50), 28, 0.01);
        }
        EXPECT_EQ(lines, 2);
    }
}

TEST_F(ShapeProgram, UnitesWhatEachDrawingFills) {
    const std::string squares = File("a.svg", SQUARES);
    const std::string far = File("b.svg", "<svg><rect x='200' width='10' height='10'/></svg>");
    const std::string nested = File("c.svg", "<svg><path d='M0 0h90v90h-90zM30 30h30v30h-30z'/></svg>");
    EXPECT_NEAR(Area({"difference", squares, far}), 6000 + 50, 0.01);  // the open path is closed
    EXPECT_NEAR(Area({"difference", nested, far}), 8100, 0.01);        // by the nonzero rule
    const ProgramResult even = RunTarvex({"shape", "xor", nested, far, "--fill-a", "alternate", "-o", "-"});
    EXPECT_EQ(std::count(even.output.begin(), even.output.end(), 'z'), 3);
    EXPECT_NEAR(Area({"difference", nested, far, "--raster", "--fill-a", "winding"}), 8100, 100);
}

TEST_F(ShapeProgram, SaysWhatIsWrongAndHowItEnds) {
    const std::string disc = File("disc.svg", DISC), star = File("star.svg", STAR);
    const std::string out = m_directory / "out.svg";
    const std::string damaged = File("damaged.svg", "<svg><path id='p' d='M0 0h9v9zq'/></svg>");
    struct Case {
        std::vector<std::string> arguments;
        int status;
        const char* says;
    };
    const Case cases[] = {
        {{"difference", disc, disc, "-o", out}, 1, "the difference of"},
        {{"union", File("line.svg", "<svg><path d='M0 0h9'/></svg>"), disc, "-o", out}, 1, "can be filled"},
        {{"xor", disc, star, "-o", out, "--raster"}, 2, "rasters have no xor"},
        {{"minus", disc, star, "-o", out}, 2, "'minus' is none"},
        {{"union", disc, star, "-o", out, "--fill-a", "full"}, 2, "'full' is neither"},
        {{"union", "-", "-", "-o", out}, 2, "not both"},
        {{"union", disc, star, "-o", m_directory / "out.gif"}, 2, "neither .svg nor .json"},
        {{"union", disc, disc, "-o", disc}, 3, "disc.svg"},
        {{"union", File("text.svg", "hello"), disc, "-o", out}, 3, "not an SVG drawing"},
        {{"union", damaged, disc, "-o", out}, 0, "1 path data (in path \"p\")"},
    };
    for (const Case& c : cases) {
        std::vector<std::string> arguments = c.arguments;
        arguments.insert(arguments.begin(), "shape");
        const ProgramResult result = RunTarvex(arguments);
        EXPECT_EQ(result.status, c.status) << c.says;
        EXPECT_THAT(result.errors, testing::HasSubstr(c.says));
    }
}

}  // namespace
}  // namespace tarvex::app::test
