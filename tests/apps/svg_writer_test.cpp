// Path data: exact to half a unit of the last decimal however it is abbreviated, and short.
#include "support/precompiled.h"

#include "support/property.h"
#include "tarvex/decimal.h"
#include "tarvex/svg_path.h"
#include "tarvex/svg_writer.h"

namespace tarvex::app::test {
namespace {

BPOINT Node(const DPOINT& cp1, const DPOINT& pt, const DPOINT& cp2) {
    BPOINT node;
    node.cp1 = cp1;
    node.pt = pt;
    node.cp2 = cp2;
    return node;
}

Contour Polygon(const std::vector<DPOINT>& points) {
    Contour contour;
    for (const DPOINT& p : points) contour.push_back(Node(p, p, p));
    return contour;
}

std::string PathOf(const std::vector<Contour>& contours, int precision = 2) {
    const std::vector<ContourView> views(contours.begin(), contours.end());
    return SvgPathData(views, precision);
}

// ---------------------------------------------------------------------------------------------
// Numbers

TEST(DecimalText, IsTheShortestThatGivesTheValueBack) {
    struct Case {
        std::int64_t units;
        int precision;
        const char* dropped;
        const char* kept;
    };
    for (const Case& c :
         {Case{0, 2, "0", "0"}, Case{50, 2, ".5", "0.5"}, Case{-50, 2, "-.5", "-0.5"},
          Case{-1, 2, "-.01", "-0.01"}, Case{100, 2, "1", "1"}, Case{-1200, 2, "-12", "-12"},
          Case{1230, 2, "12.3", "12.3"}, Case{1234, 2, "12.34", "12.34"}, Case{7, 0, "7", "7"},
          Case{-10, 0, "-10", "-10"}, Case{1, 9, ".000000001", "0.000000001"},
          Case{INT64_MIN, 0, "-9223372036854775808", "-9223372036854775808"},
          Case{INT64_MIN, 9, "-9223372036.854775808", "-9223372036.854775808"}}) {
        EXPECT_EQ(DecimalText(c.units, c.precision, LeadingZero::Dropped).View(), c.dropped);
        EXPECT_EQ(DecimalText(c.units, c.precision, LeadingZero::Kept).View(), c.kept);
    }
}

TEST(ToUnits, RoundsToTheNearestAndSaturates) {
    EXPECT_EQ(ToUnits(1.234, 2), 123);
    EXPECT_EQ(ToUnits(1.236, 2), 124);
    EXPECT_EQ(ToUnits(-1.236, 2), -124);
    EXPECT_EQ(ToUnits(-0.001, 2), 0);
    EXPECT_EQ(ToUnits(std::nan(""), 2), 0);
    EXPECT_EQ(ToUnits(1e300, 9), 1'000'000'000'000'000);
    EXPECT_EQ(ToUnits(-std::numeric_limits<double>::infinity(), 0), -1'000'000'000'000'000);
}

// ---------------------------------------------------------------------------------------------
// Texts

struct PathCase {
    const char* name;
    std::vector<Contour> contours;
    const char* expected;
};

TEST(SvgPathData, ChoosesTheShortestForm) {
    const Contour square = Polygon({{1, 1}, {3, 1}, {3, 3}, {1, 3}, {1, 1}});
    const Contour wave = {Node({0, 0}, {0, 0}, {1, 1}), Node({2, 1}, {3, 0}, {4, -1}),
                          Node({5, -1}, {6, 0}, {6, 0})};
    const PathCase cases[] = {
        {"a closed square: its last side is the closing", {square}, "m1 1h2v2H1z"},
        {"the letter of a repeated command is left out, and after a moveto the lineto's",
         {Polygon({{0, 0}, {1, 2}, {3, 5}})},
         "m0 0 1 2 2 3"},
        {"signs and points separate", {Polygon({{0.5, 0.25}, {0, 0}, {-1, 0.75}})}, "m.5.25L0 0-1 .75"},
        {"an absolute coordinate where it is shorter",
         {Polygon({{100.25, 7.75}, {9, 0}})},
         "m100.25 7.75L9 0"},
        {"a curve whose control point mirrors the last is smooth", {wave}, "m0 0c1 1 2 1 3 0s2-1 3 0"},
        {"and so is one that starts at its own point after a line",
         {{Node({0, 0}, {0, 0}, {0, 0}), Node({4, 0}, {4, 0}, {4, 0}), Node({6, 1}, {6, 3}, {6, 3})}},
         "m0 0h4s2 1 2 3"},
        {"a curve along its chord is a line",
         {{Node({0, 0}, {0, 0}, {1, 2}), Node({2, 4}, {3, 6}, {3, 6})}},
         "m0 0 3 6"},
        {"a curve that overshoots its chord is none",
         {{Node({0, 0}, {0, 0}, {-1, 0}), Node({3, 0}, {3, 0}, {3, 0})}},
         "m0 0c-1 0 3 0 3 0"},
        {"a second contour starts where the first was closed",
         {square, Polygon({{2, 2}, {4, 2}, {2, 3}, {2, 2}})},
         "m1 1h2v2H1zm1 1h2L2 3z"},
        {"what vanishes by rounding is left out",
         {Polygon({{1, 1}, {1.001, 1}, {1, 1.002}, {1, 1}}), square},
         "m1 1h2v2H1z"},
        {"no contour, no node, one node", {{}, Polygon({{5, 5}})}, ""},
    };
    for (const PathCase& c : cases) EXPECT_EQ(PathOf(c.contours), c.expected) << c.name;
}

// ---------------------------------------------------------------------------------------------
// Reading back

rc::Gen<double> Coordinate() {
    return rc::gen::oneOf(
        rc::gen::map(rc::gen::inRange(-20, 20), [](int v) { return static_cast<double>(v); }),
        rc::gen::map(rc::gen::inRange(-2000, 2000), [](int v) { return v / 8.0; }),
        rc::gen::map(rc::gen::inRange(-2'000'000'000, 2'000'000'000), [](int v) { return v / 1234567.0; }));
}

rc::Gen<DPOINT> Place() {
    return rc::gen::map(rc::gen::pair(Coordinate(), Coordinate()), [](const std::pair<double, double>& p) {
        return DPOINT{p.first, p.second};
    });
}

/// Contours with everything the writer looks for: corners, handles on their anchors, mirrored
/// handles, horizontal and vertical steps, repeated points, closed or not.
Contour AnyContour() {
    const int count = *rc::gen::inRange(2, 8);
    Contour contour;
    for (int i = 0; i < count; ++i) {
        DPOINT pt = *Place();
        if (i > 0) {
            const int step = *rc::gen::inRange(0, 6);
            if (step == 0) pt.x = contour.back().pt.x;
            if (step == 1) pt.y = contour.back().pt.y;
            if (step == 2) pt = contour.back().pt;
        }
        const int handles = *rc::gen::inRange(0, 3);
        DPOINT cp1 = handles == 0 ? pt : *Place();
        DPOINT cp2 = handles == 0 ? pt : handles == 1 ? DPOINT{2 * pt.x - cp1.x, 2 * pt.y - cp1.y} : *Place();
        contour.push_back(Node(cp1, pt, cp2));
    }
    if (*rc::gen::inRange(0, 2) == 1) contour.back().pt = contour.front().pt;
    return contour;
}

/// How far a written coordinate may be from the one given.
double Tolerance(int precision) { return 0.5 * std::pow(10.0, -precision) + 1e-6; }

bool Near(const DPOINT& a, const DPOINT& b, double tolerance) {
    return std::fabs(a.x - b.x) <= tolerance && std::fabs(a.y - b.y) <= tolerance;
}

double DistanceToChord(const DPOINT& p, const DPOINT& a, const DPOINT& b) {
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double t = std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
    return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}

/// Whether the segment between two nodes read back is that from `from` to `to`.
bool Matches(const BPOINT& start, const BPOINT& end, const BPOINT& from, const BPOINT& to, double tolerance) {
    if (!Near(start.pt, from.pt, tolerance) || !Near(end.pt, to.pt, tolerance)) return false;
    if (!(start.cp2 == start.pt && end.cp1 == end.pt))
        return Near(start.cp2, from.cp2, tolerance) && Near(end.cp1, to.cp1, tolerance);
    // A line stands for a curve whose rounded control points lie on it.
    const double most = tolerance * std::sqrt(2.0);
    return DistanceToChord(from.cp2, start.pt, end.pt) <= most &&
           DistanceToChord(to.cp1, start.pt, end.pt) <= most;
}

/// Whether all of a segment may have been rounded to one point.
bool MayVanish(const BPOINT& from, const BPOINT& to, double tolerance) {
    return Near(from.pt, to.pt, 2 * tolerance) && Near(from.cp2, from.pt, 2 * tolerance) &&
           Near(to.cp1, to.pt, 2 * tolerance);
}

void ExpectSame(const Contour& read, const Contour& contour, double tolerance) {
    std::size_t next = 1;
    for (std::size_t i = 1; i < contour.size(); ++i) {
        if (next < read.size() &&
            Matches(read[next - 1], read[next], contour[i - 1], contour[i], tolerance)) {
            ++next;
        } else {
            RC_ASSERT(MayVanish(contour[i - 1], contour[i], tolerance));
        }
    }
    RC_ASSERT(next == read.size());
}

void CheckReadingBack() {
    const int precision = *rc::gen::inRange(0, 5);
    std::vector<Contour> contours;
    const int count = *rc::gen::inRange(1, 4);
    for (int i = 0; i < count; ++i) contours.push_back(AnyContour());
    const std::string text = PathOf(contours, precision);
    const PathContours read = ParsePathData(text);
    RC_ASSERT(read.isSound);

    const double tolerance = Tolerance(precision);
    std::size_t next = 0;
    std::ptrdiff_t closed = 0;
    for (const Contour& contour : contours) {
        bool mayVanish = true;
        for (std::size_t i = 1; i < contour.size(); ++i) {
            mayVanish = mayVanish && MayVanish(contour[i - 1], contour[i], tolerance);
        }
        if (mayVanish && read.contours.size() - next < contours.size()) continue;
        RC_ASSERT(next < read.contours.size());
        ExpectSame(read.contours[next++], contour, tolerance);
        closed += contour.front().pt == contour.back().pt ? 1 : 0;
    }
    RC_ASSERT(std::ranges::count(text, 'z') == closed);
}

TEST(SvgPathData, ReadsBackWithinHalfAUnitOfTheLastDecimal) {
    tarvex::test::ExpectLaw(CheckReadingBack, 1000);
}

TEST(SvgPathData, TakesAnyCoordinate) {
    const double far = std::numeric_limits<double>::max();
    const double infinite = std::numeric_limits<double>::infinity();
    const Contour wild = {Node({far, -far}, {infinite, 0}, {std::nan(""), 1}),
                          Node({-far, far}, {-infinite, 5}, {1, far}), Node({0, 0}, {1, 1}, {0, 0})};
    for (int precision = 0; precision <= MAX_PRECISION; ++precision) {
        const PathContours read = ParsePathData(PathOf({wild}, precision));
        EXPECT_TRUE(read.isSound);
        EXPECT_EQ(read.contours.size(), 1u);
    }
}

// ---------------------------------------------------------------------------------------------
// Documents

TEST(WriteSvg, GivesEachShapeOnePathInTheSizeOfThePicture) {
    const Contour square = Polygon({{1, 1}, {3, 1}, {3, 3}, {1, 3}, {1, 1}});
    const Contour line = Polygon({{0, 0}, {2, 5}});
    const Contour point = Polygon({{2, 2}, {2, 2}});
    const SvgShape shapes[] = {
        {{square, square}, Paint::Fill, "#000", 1},
        {{square}, Paint::Fill, "#ff8000", 1},
        {{point}, Paint::Fill, "#123456", 1},
        {{line}, Paint::Stroke, "a\"b<&", 1.5},
    };
    EXPECT_EQ(WriteSvg({640, 480.5, 2}, shapes),
              "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"640\" height=\"480.5\" viewBox=\"0 0 640 "
              "480.5\">\n"
              "<path fill-rule=\"evenodd\" d=\"m1 1h2v2H1zm0 0h2v2H1z\"/>\n"
              "<path fill-rule=\"evenodd\" fill=\"#ff8000\" d=\"m1 1h2v2H1z\"/>\n"
              "<path fill=\"none\" stroke=\"a&quot;b&lt;&amp;\" stroke-width=\"1.5\" d=\"m0 0 2 5\"/>\n"
              "</svg>\n");
}

}  // namespace
}  // namespace tarvex::app::test
