// `tarvex trace --mode centerline`, as built: from a picture to the drawing that it writes.
#include "support/precompiled.h"

#include <regex>

#include "apps/support/program.h"
#include "tarvex/bezier.h"
#include "tarvex/svg_path.h"

namespace tarvex::app::test {
namespace {

struct DrawnLine {
    DPOINT from, to;
    double width;
};

double DistanceTo(const DrawnLine& line, DPOINT p) {
    const double dx = line.to.x - line.from.x, dy = line.to.y - line.from.y, square = dx * dx + dy * dy;
    const double along = (p.x - line.from.x) * dx + (p.y - line.from.y) * dy;
    const double t = square > 0 ? std::clamp(along / square, 0.0, 1.0) : 0;
    return std::hypot(p.x - line.from.x - t * dx, p.y - line.from.y - t * dy);
}

/// Dark lines with round ends on light paper, as a grey picture.
std::string PictureOf(const std::vector<DrawnLine>& lines, int width, int height) {
    std::string picture = "P5 " + std::to_string(width) + ' ' + std::to_string(height) + " 255\n";
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            double part = 0;
            for (const DrawnLine& line : lines)
                part = std::max(part, line.width / 2 + 0.5 - DistanceTo(line, {x + 0.5, y + 0.5}));
            picture += static_cast<char>(std::lround(240 - 210 * std::clamp(part, 0.0, 1.0)));
        }
    }
    return picture;
}

struct WrittenStroke {
    double width;
    std::vector<DPOINT> points;  // 16 to a segment
};

std::vector<WrittenStroke> ReadStrokes(const std::string& svg) {
    static const std::regex element("<path stroke-width=\"([^\"]*)\" d=\"([^\"]*)\"/>");
    std::vector<WrittenStroke> strokes;
    for (std::sregex_iterator i(svg.begin(), svg.end(), element), end; i != end; ++i) {
        const std::string data = (*i)[2];
        for (const Contour& nodes : ParsePathData(data).contours) {
            WrittenStroke stroke{std::stod((*i)[1]), {nodes[0].pt}};
            for (std::size_t n = 1; n < nodes.size(); ++n) {
                for (int k = 1; k <= 16; ++k)
                    stroke.points.push_back(CBezier(nodes[n - 1], nodes[n]).GetCurvePoint(k / 16.0));
            }
            strokes.push_back(std::move(stroke));
        }
    }
    return strokes;
}

TEST(CenterlineTrace, DrawnLinesComeBackAsStrokesOfTheirPlaceLengthAndWidth) {
    const std::vector<DrawnLine> lines = {{{20, 30}, {220, 75}, 6},  // crossed by the next
                                          {{60, 15}, {90, 150}, 3.5},
                                          {{120, 130}, {230, 130}, 9},
                                          {{150, 100}, {160, 20}, 5}};  // crosses the first
    const DrawnLine dot{{200, 25}, {200, 25}, 12};
    std::vector<DrawnLine> marks = lines;
    marks.push_back(dot);
    const ProgramResult traced =
        RunTarvex({"trace", "-", "-o", "-", "--mode", "centerline"}, PictureOf(marks, 250, 160));
    ASSERT_EQ(traced.status, 0) << traced.errors;
    const std::vector<WrittenStroke> strokes = ReadStrokes(traced.output);
    ASSERT_EQ(strokes.size(), lines.size()) << traced.output;
    for (const DrawnLine& line : lines) {
        SCOPED_TRACE(testing::Message() << "the line from " << line.from.x << ", " << line.from.y);
        const auto apart = [](DPOINT p, DPOINT q) { return std::hypot(p.x - q.x, p.y - q.y); };
        const auto missing = [&](const WrittenStroke& s) {
            const DPOINT a = s.points.front(), b = s.points.back();
            return std::min(std::max(apart(a, line.from), apart(b, line.to)),
                            std::max(apart(a, line.to), apart(b, line.from)));
        };
        const auto stroke =
            std::min_element(strokes.begin(), strokes.end(),
                             [&](const auto& a, const auto& b) { return missing(a) < missing(b); });
        EXPECT_LE(missing(*stroke), 1.2) << "from end to end";
        EXPECT_NEAR(stroke->width, line.width, 0.4);
        for (const DPOINT p : stroke->points) {
            const bool isEnd = std::min(apart(p, line.from), apart(p, line.to)) <= 1.2;
            EXPECT_LE(DistanceTo(line, p), isEnd ? 1.2 : 0.4);
        }
    }
    std::smatch circle;
    static const std::regex element("<circle cx=\"([^\"]*)\" cy=\"([^\"]*)\" r=\"([^\"]*)\"");
    ASSERT_TRUE(std::regex_search(traced.output, circle, element)) << "a dot";
    EXPECT_NEAR(std::stod(circle[1]), dot.from.x, 0.8);
    EXPECT_NEAR(std::stod(circle[2]), dot.from.y, 0.8);
    EXPECT_NEAR(std::stod(circle[3]), dot.width / 2, 0.6);
}

TEST(CenterlineTrace, PicturesWithoutLinesOrEdgesSayWhyAndOddOnesAreTraced) {
    struct Case {
        std::string picture;
        int centerline, edges;
    };
    std::string board = "P1 101 60\n";
    for (int i = 0; i < 101 * 60; ++i) board += (i % 101 + i / 101) % 2 == 0 ? "1 " : "0 ";
    const Case cases[] = {
        {"P1 1 1 1", 1, 1},
        {"P1 1 1 0", 1, 1},
        {"P1 9 1 1 1 1 1 1 1 1 1 1", 1, 1},
        {"P1 1 5 0 0 0 0 0", 1, 1},
        {"P1 9 1 0 0 1 1 1 1 1 1 0", 0, 1},  // an edge across a single row has no length
        {"P1 1 9 0 0 1 1 1 1 1 1 0", 0, 1},
        {board, 0, 1},  // smoothed it is even
    };
    for (const Case& c : cases) {
        for (const auto& [mode, status] : {std::pair("centerline", c.centerline), {"edges", c.edges}}) {
            const ProgramResult result = RunTarvex({"trace", "-", "-o", "-", "--mode", mode}, c.picture);
            SCOPED_TRACE(c.picture.substr(0, 30) + ' ' + mode);
            EXPECT_EQ(result.status, status) << result.errors;
            EXPECT_EQ(result.output.empty(), status != 0);
            EXPECT_THAT(result.errors, testing::HasSubstr(status != 0 ? "standard input: no " : ""));
        }
    }
}

}  // namespace
}  // namespace tarvex::app::test
