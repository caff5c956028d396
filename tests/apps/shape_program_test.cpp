// `tarvex shape`, as built.
#include "support/precompiled.h"

#include "apps/support/program.h"
#include "tarvex/svg_path.h"

namespace tarvex::app::test {
namespace {

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
    double Area(const Arguments& arguments) {
        const std::string drawing = OutputOf(Arguments{"shape"} + arguments + Arguments{"-o", "-"});
        return std::fabs(Info(drawing).at("area").get<double>());
    }

    TemporaryDirectory m_directory;
};

TEST_F(ShapeProgram, KeepsArcsAndPageAndColour) {
    const std::string star = File("star.svg", STAR), disc = File("disc.svg", DISC);
    const std::string output = OutputOf({"shape", "difference", star, disc, "-o", "-"});
    EXPECT_THAT(output, testing::HasSubstr("viewBox=\"0 0 100 100\""));
    EXPECT_THAT(output, testing::HasSubstr("fill=\"#cc3333\""));
    const std::size_t start = output.find(" d=\"") + 4;
    const auto contours = ParsePathData(output.substr(start, output.find('"', start) - start)).contours;
    ASSERT_EQ(contours.size(), 5u);  // the tips
    for (const Contour& tip : contours) {
        int lines = 0;
        for (std::size_t i = 1; i < tip.size(); ++i) {
            const bool isLine = tip[i - 1].cp2 == tip[i - 1].pt && tip[i].cp1 == tip[i].pt;
            lines += isLine;
            if (isLine) continue;
            for (const DPOINT& p : {tip[i - 1].pt, tip[i].pt})
                EXPECT_NEAR(std::hypot(p.x - 50, p.y - 50), 28, 0.01);
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
    const std::string even = OutputOf({"shape", "xor", nested, far, "--fill-a", "alternate", "-o", "-"});
    EXPECT_EQ(std::count(even.begin(), even.end(), 'z'), 3);
    EXPECT_NEAR(Area({"difference", nested, far, "--raster", "--fill-a", "winding"}), 8100, 100);
}

TEST_F(ShapeProgram, SaysWhatIsWrongAndHowItEnds) {
    File("disc.svg", DISC), File("star.svg", STAR), File("text.svg", "hello");
    File("line.svg", "<svg><path d='M0 0h9'/></svg>");
    ExpectFailures(
        {
            {"shape difference @/disc.svg @/disc.svg -o @/o.svg", 1, "the difference of"},
            {"shape union @/line.svg @/disc.svg -o @/o.svg", 1, "can be filled"},
            {"shape xor @/disc.svg @/star.svg -o @/o.svg --raster", 2, "rasters have no xor"},
            {"shape minus @/disc.svg @/star.svg -o @/o.svg", 2, "'minus' is none"},
            {"shape union @/disc.svg @/star.svg -o @/o.svg --fill-a full", 2, "'full' is neither"},
            {"shape union - - -o @/o.svg", 2, "not both"},
            {"shape union @/disc.svg @/star.svg -o @/o.gif", 2, "neither .svg nor .json"},
            {"shape union @/disc.svg @/disc.svg -o @/disc.svg", 3, "disc.svg"},
            {"shape union @/text.svg @/disc.svg -o @/o.svg", 3, "not an SVG drawing"},
        },
        m_directory);
    const std::string damaged = File("damaged.svg", "<svg><path id='p' d='M0 0h9v9zq'/></svg>");
    const ProgramResult result = RunTarvex({"shape", "union", damaged, m_directory / "disc.svg", "-o", "-"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, testing::HasSubstr("1 path data (in path \"p\")"));
}

}  // namespace
}  // namespace tarvex::app::test
