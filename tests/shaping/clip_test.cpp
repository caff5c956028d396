// The clipper against an oracle and its own laws, on the kinds of sets that break clippers.
#include "support/precompiled.h"

#include <cstdlib>
#include <map>
#include <set>
#include <utility>

#include "shaping/clip/clip.h"
#include "shaping/clip/crossing.h"
#include "shaping/clip/double_double.h"
#include "shaping/clip/predicates.h"
#include "support/clip_cases.h"
#include "support/clip_oracle.h"

namespace tarvex::clip {

inline void PrintTo(const Contour& c, std::ostream* os) {
    *os << (c.hole ? "hole" : "outer");
    for (const DPOINT& p : c.vertices) *os << " (" << p.x << ", " << p.y << ')';
}

inline bool operator==(const Contour& a, const Contour& b) {  // to the bit, unlike the points' own comparison
    const auto same = [](const DPOINT& p, const DPOINT& q) { return p.x == q.x && p.y == q.y; };
    return a.hole == b.hole &&
           std::equal(a.vertices.begin(), a.vertices.end(), b.vertices.begin(), b.vertices.end(), same);
}

}  // namespace tarvex::clip

namespace tarvex::test {
namespace {

using clip::Contour;
using clip::Point;
using clip::Turn;
using Result = std::vector<Contour>;

constexpr int kOperations = 4;
constexpr int kUnion = 3;

int FromEnvironment(const char* name, int usual) {
    const char* wanted = std::getenv(name);
    return wanted == nullptr ? usual : std::atoi(wanted);
}

/// Calls `check(seed)` for some hundreds of seeds until it fails. For long runs, TARVEX_CLIP_CASES says of
/// how many, and TARVEX_CLIP_SEED from which one on, so that a run can be shared out and resumed.
template <class Check>
void ForSeeds(int usual, Check&& check) {
    const int first = FromEnvironment("TARVEX_CLIP_SEED", 0);
    const int end = first + FromEnvironment("TARVEX_CLIP_CASES", usual);
    for (int seed = first; seed < end && !::testing::Test::HasFatalFailure(); ++seed) check(seed);
}

Result ClipSets(int op, const ContourSet& subject, const ContourSet& clip) {
    const std::vector<std::span<const DPOINT>> a(subject.begin(), subject.end());
    const std::vector<std::span<const DPOINT>> b(clip.begin(), clip.end());
    return clip::Clip(static_cast<clip::Operation>(op), a, b);
}

ContourSet AsSet(const Result& result) {
    ContourSet set;
    for (const Contour& c : result) set.push_back(c.vertices);
    return set;
}

/// Relative to the first vertex, so that small contours far out keep their digits.
double SignedArea(const std::vector<DPOINT>& v) {
    long double twice = 0;
    for (std::size_t i = 1; i + 1 < v.size(); ++i) {
        const long double ax = v[i].x - static_cast<long double>(v[0].x),
                          ay = v[i].y - static_cast<long double>(v[0].y);
        const long double bx = v[i + 1].x - static_cast<long double>(v[0].x),
                          by = v[i + 1].y - static_cast<long double>(v[0].y);
        twice += ax * by - ay * bx;
    }
    return static_cast<double>(twice / 2);
}

double TotalArea(const Result& result) {
    double area = 0;
    for (const Contour& c : result) area += SignedArea(c.vertices);
    return area;
}

std::string Describe(const ClipCase& c) {
    std::ostringstream text;
    text.precision(17);
    for (const ContourSet* set : {&c.subject, &c.clip}) {
        text << (set == &c.subject ? "subject" : "\nclip");
        for (const auto& contour : *set) {
            text << "\n ";
            for (const DPOINT& p : contour) text << " {" << p.x << ", " << p.y << "},";
        }
    }
    return text.str();
}

/// What keeps a result from being simple contours that stay apart, decided exactly; empty for a good one.
std::string FaultIn(const Result& result) {
    struct Edge {
        Point a, b;
        bool Holds(const Point& p) const {
            return Turn(a, b, p) == 0 && p.x >= std::min(a.x, b.x) && p.x <= std::max(a.x, b.x) &&
                   p.y >= std::min(a.y, b.y) && p.y <= std::max(a.y, b.y);
        }
    };
    std::vector<Edge> edges;
    for (const Contour& c : result) {
        if (c.vertices.size() < 3) return "a contour of less than three vertices";
        std::set<std::pair<double, double>> seen;
        const std::size_t n = c.vertices.size();
        for (std::size_t i = 0; i < n; ++i) {
            const DPOINT& p = c.vertices[i];
            const DPOINT& q = c.vertices[(i + 1) % n];
            if (!seen.emplace(p.x, p.y).second) return "a contour that meets a vertex twice";
            if (std::pair(p.y, p.x) < std::pair(c.vertices[0].y, c.vertices[0].x))
                return "a start that is not the lowest";
            edges.push_back({{p.x, p.y}, {q.x, q.y}});
        }
        const auto at = [&c](std::size_t i) { return Point{c.vertices[i].x, c.vertices[i].y}; };
        if ((Turn(at(0), at(1), at(n - 1)) < 0) != c.hole) return "a contour that turns against its flag";
    }
    for (const Edge& e : edges) {
        for (const Edge& f : edges) {
            if (&e == &f) continue;
            const bool ends = clip::Same(e.a, f.a) && clip::Same(e.b, f.b);
            const bool opposite = clip::Same(e.a, f.b) && clip::Same(e.b, f.a);
            if (ends || opposite) return "an edge twice";
            if (!clip::Same(f.a, e.a) && !clip::Same(f.a, e.b) && e.Holds(f.a)) return "a vertex on an edge";
            if (Turn(e.a, e.b, f.a) * Turn(e.a, e.b, f.b) < 0 &&
                Turn(f.a, f.b, e.a) * Turn(f.a, f.b, e.b) < 0)
                return "edges that cross";
        }
    }
    return {};
}

template <class Number>
void ExpectAreas(const ClipCase& c, int seed) {
    const SlabOracle<Number> oracle(c.subject, c.clip);
    for (int op = 0; op < kOperations; ++op) {
        const Result result = ClipSets(op, c.subject, c.clip);
        ASSERT_EQ(FaultIn(result), "") << "seed " << seed << " operation " << op << '\n' << Describe(c);
        ASSERT_NEAR(TotalArea(result), oracle.Area(op), AreaSlack(c))
            << "seed " << seed << " operation " << op << '\n'
            << Describe(c);
    }
}

TEST(Clip, GridSetsHaveTheirExactAreaInContoursThatStayApart) {
    ForSeeds(300, [](int seed) {
        ExpectAreas<Fraction>(ClipCases(static_cast<std::uint32_t>(seed)).OnGrid(), seed);
    });
}

TEST(Clip, AnySetsHaveTheirAreaInContoursThatStayApart) {
    ForSeeds(400, [](int seed) {
        ExpectAreas<long double>(ClipCases(static_cast<std::uint32_t>(seed)).Any(), seed);
    });
}

ContourSet Mirrored(ContourSet set) {
    for (auto& contour : set)
        for (DPOINT& p : contour) p = {p.y, -p.x};
    return set;
}

ContourSet Moved(ContourSet set, double by) {
    for (auto& contour : set)
        for (DPOINT& p : contour) p = {p.x + by, p.y + by};
    return set;
}

TEST(Clip, TheOperationsKeepTheLawsOfSets) {
    ForSeeds(300, [](int seed) {
        const ClipCase c = ClipCases(static_cast<std::uint32_t>(seed) + 1000000).Any();
        Result result[kOperations];
        double area[kOperations];
        for (int op = 0; op < kOperations; ++op)
            area[op] = TotalArea(result[op] = ClipSets(op, c.subject, c.clip));
        const double a = TotalArea(ClipSets(kUnion, c.subject, {}));
        const double b = TotalArea(ClipSets(kUnion, {}, c.clip));
        const double slack = 4 * AreaSlack(c);
        SCOPED_TRACE("seed " + std::to_string(seed) + '\n' + Describe(c));
        ASSERT_NEAR(area[3] + area[1], a + b, slack);
        ASSERT_NEAR(area[2], area[3] - area[1], slack);
        ASSERT_NEAR(area[0] + area[1], a, slack);
        for (int op = 0; op < kOperations; ++op) {
            const ContourSet once = AsSet(result[op]);
            ASSERT_EQ(ClipSets(kUnion, once, {}), result[op]) << "clipping a result again changed it";
            ASSERT_EQ(ClipSets(1, once, once), result[op]);
            ASSERT_TRUE(ClipSets(0, once, once).empty());
            if (op != 0) {
                ASSERT_EQ(ClipSets(op, c.clip, c.subject), result[op]) << "the order of the operands told";
            }
            ASSERT_NEAR(TotalArea(ClipSets(op, Mirrored(c.subject), Mirrored(c.clip))), area[op], slack);
        }
    });
}

TEST(Clip, AMoveThatRoundsNothingMovesTheResult) {
    for (int seed = 0; seed < 100; ++seed) {
        const ClipCase c = ClipCases(static_cast<std::uint32_t>(seed)).OnGrid();
        for (const double by : {16.0, -1024.0, 1048576.0}) {
            for (int op = 0; op < kOperations; ++op) {
                ASSERT_NEAR(TotalArea(ClipSets(op, Moved(c.subject, by), Moved(c.clip, by))),
                            TotalArea(ClipSets(op, c.subject, c.clip)), 1e-6)
                    << "seed " << seed << Describe(c);
            }
        }
    }
}

TEST(Clip, PointsAreInTheResultWhenTheirPlacesInTheOperandsSaySo) {
    for (int seed = 0; seed < 200; ++seed) {
        ClipCases cases(static_cast<std::uint32_t>(seed));
        const ClipCase c = cases.OnGrid();
        for (int op = 0; op < kOperations; ++op) {
            const ContourSet result = AsSet(ClipSets(op, c.subject, c.clip));
            for (int i = 0; i < 50; ++i) {
                const DPOINT p{17 * cases.Uniform(),
                               17 * cases.Uniform()};  // never on an edge, as it happens
                ASSERT_EQ(IsInside(result, p),
                          CombinedInside(op, IsInside(c.subject, p), IsInside(c.clip, p)))
                    << "seed " << seed << " operation " << op << " at " << p.x << ' ' << p.y << '\n'
                    << Describe(c);
            }
        }
    }
}

std::vector<DPOINT> Square(double left, double bottom, double size) {
    return {{left, bottom}, {left + size, bottom}, {left + size, bottom + size}, {left, bottom + size}};
}

TEST(Clip, HoleFlagsAreRightAtAnyDepth) {
    ContourSet rings;
    for (int i = 0; i < 200; ++i) rings.push_back(Square(i, i, 1000 - 2 * i));
    const Result result = ClipSets(kUnion, rings, {Square(2000, 0, 1)});
    ASSERT_EQ(result.size(), 201U);
    for (const Contour& c : result) {
        const bool isRing = c.vertices[0].x < 1000;
        EXPECT_EQ(c.hole, isRing && static_cast<int>(c.vertices[0].x) % 2 == 1);
    }
}

TEST(Clip, WhatTouchesInAPointStaysApartAndWhatSharesAnEdgeIsOne) {
    struct Case {
        const char* name;
        ContourSet subject, clip;
        int op;
        Result expected;
    };
    const Case cases[] = {
        {"corner to corner",
         {Square(0, 0, 1)},
         {Square(1, 1, 1)},
         3,
         {{Square(0, 0, 1), false}, {Square(1, 1, 1), false}}},
        {"edge to edge",
         {Square(0, 0, 1)},
         {Square(1, 0, 1)},
         3,
         {{{{0, 0}, {1, 0}, {2, 0}, {2, 1}, {1, 1}, {0, 1}}, false}}},
        {"part of an edge",
         {Square(0, 0, 2)},
         {Square(2, 0.5, 1)},
         3,
         {{{{0, 0}, {2, 0}, {2, 0.5}, {3, 0.5}, {3, 1.5}, {2, 1.5}, {2, 2}, {0, 2}}, false}}},
        {"a hole that touches its contour",
         {Square(0, 0, 4)},
         {{{0, 2}, {2, 1}, {2, 3}}},
         0,
         {{{{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 2}}, false}, {{{2, 1}, {0, 2}, {2, 3}}, true}}},
        {"a vertex against an edge from outside",
         {Square(0, 0, 4)},
         {{{4, 2}, {6, 1}, {6, 3}}},
         0,
         {{Square(0, 0, 4), false}}},
        {"the same twice",
         {Square(0, 0, 1), Square(0, 0, 1)},
         {Square(5, 5, 1)},
         3,
         {{Square(5, 5, 1), false}}},
        {"a bow tie",
         {{{0, 0}, {2, 2}, {2, 0}, {0, 2}}},
         {},
         3,
         {{{{2, 0}, {2, 2}, {1, 1}}, false}, {{{0, 0}, {1, 1}, {0, 2}}, false}}},
    };
    for (const Case& c : cases) {
        EXPECT_THAT(ClipSets(c.op, c.subject, c.clip), ::testing::UnorderedElementsAreArray(c.expected))
            << c.name;
    }
}

TEST(Clip, ContoursBetweenTheSameTwoVerticesComeFromLeftToRightHoweverTheyWereFound) {
    const std::vector<DPOINT> left{{0, 0}, {1, 4}, {4, 6}, {-2, 4}}, right{{0, 0}, {4, 2}, {4, 6}};
    const std::vector<DPOINT> below{{-9, 1}, {-8, 1}, {-2, 4}};  // touches the left one, and is found first
    const Result expected{{below, false}, {left, false}, {right, false}};
    EXPECT_EQ(ClipSets(kUnion, {right, left}, {below}), expected);
    EXPECT_EQ(ClipSets(kUnion, {below, left}, {right}), expected);
    EXPECT_EQ(ClipSets(2, {left}, {right}), (Result{{left, false}, {right, false}}));
}

TEST(Clip, ThousandsOfEdgesThroughOnePointMeetThereOnce) {
    ContourSet ties;  // of edges from (x, y) to (1 - 2x, 1 - 2y), which all meet in (1/3, 1/3), no double
    for (int x = -1000; x < 1000; x += 2) {
        const DPOINT p{double(x), 1000}, q{double(x + 1), 1000};
        ties.push_back({p, {1 - 2 * p.x, 1 - 2 * p.y}, {1 - 2 * q.x, 1 - 2 * q.y}, q});
    }
    const Result result = ClipSets(2, ties, {});
    ASSERT_EQ(result.size(), 2000U);
    for (const Contour& c : result) {
        ASSERT_EQ(c.vertices.size(), 3U);
        ASSERT_TRUE(std::any_of(c.vertices.begin(), c.vertices.end(),
                                [](const DPOINT& p) { return p.x == 1.0 / 3 && p.y == 1.0 / 3; }));
    }
}

TEST(Clip, InputVerticesComeOutBitForBit) {
    const ContourSet subject{{{0.1, 0.2}, {1e12 / 3, 0.7}, {1e-9 / 7, 1e12 / 9}}};
    const Result result = ClipSets(kUnion, subject, {Square(-5, -5, 1)});
    ASSERT_EQ(result.size(), 2U);
    EXPECT_THAT(AsSet(result), ::testing::Contains(::testing::SizeIs(3)));
    for (const Contour& c : result) {
        if (c.vertices.size() != 3) continue;
        for (const DPOINT& p : c.vertices)
            EXPECT_TRUE(std::any_of(subject[0].begin(), subject[0].end(),
                                    [&p](const DPOINT& q) { return p.x == q.x && p.y == q.y; }));
    }
}

/// The crossing of two lines with every intermediate number a proper sum of two doubles.
Point PlainCrossing(const clip::Segment& e, const clip::Segment& f) {
    using clip::DoubleDouble;
    const auto minus = [](double a, double b) { return clip::Difference(a, b); };
    const DoubleDouble ex = minus(e.b.x, e.a.x), ey = minus(e.b.y, e.a.y);
    const DoubleDouble fx = minus(f.b.x, f.a.x), fy = minus(f.b.y, f.a.y);
    const DoubleDouble t = (minus(f.a.x, e.a.x) * fy - minus(f.a.y, e.a.y) * fx) / (ex * fy - ey * fx);
    return {(DoubleDouble{e.a.x, 0} + t * ex).high, (DoubleDouble{e.a.y, 0} + t * ey).high};
}

TEST(CutPoint, IsWhatTheFullArithmeticGivesBitForBit) {
    std::mt19937_64 random(7);
    const auto whole = [&random](int bits) {
        return static_cast<double>(random() >> (64 - bits)) - std::ldexp(1.0, bits - 1);
    };
    int compared = 0;
    for (int i = 0; i < 40000; ++i) {
        const int bits = 2 + i % 52;  // few bits: ties and exact crossings; many: everything else
        const auto any = [&] { return Point{std::ldexp(whole(bits), i % 7 * 20 - 60), whole(bits)}; };
        clip::Segment e{any(), any()}, f{any(), any()};
        if (i % 3 == 0)
            f.a = {e.a.x + (e.b.x - e.a.x) * 1e-13, std::nextafter(e.a.y, e.b.y)};  // all but parallel
        if (i % 6 == 0) f.b = {e.b.x - (e.b.x - e.a.x) * 1e-13, std::nextafter(e.b.y, -e.a.y)};
        for (clip::Segment* s : {&e, &f}) {
            if (!clip::Before(s->a, s->b)) std::swap(s->a, s->b);
        }
        if (clip::Before(f.a, e.a)) std::swap(e, f);
        const bool cross =
            Turn(e.a, e.b, f.a) * Turn(e.a, e.b, f.b) < 0 && Turn(f.a, f.b, e.a) * Turn(f.a, f.b, e.b) < 0;
        const Point plain = PlainCrossing(e, f);
        const bool inside = std::max(e.a.y, f.a.y) <= plain.y && plain.y <= std::min(e.b.y, f.b.y) &&
                            std::max(std::min(e.a.x, e.b.x), std::min(f.a.x, f.b.x)) <= plain.x &&
                            plain.x <= std::min(std::max(e.a.x, e.b.x), std::max(f.a.x, f.b.x));
        if (!cross || !inside) continue;
        ++compared;
        const Point cut = clip::CutPoint(e, e, f, f);
        ASSERT_TRUE(clip::Same(cut, plain))
            << i << ": " << cut.x << ' ' << cut.y << " not " << plain.x << ' ' << plain.y;
    }
    EXPECT_GT(compared, 4000);
}

TEST(Clip, ZerosOfBothSignsInOnePlaceArePositiveInAnyOrder) {
    const std::vector<DPOINT> plus{{0, 0}, {2, 1}, {1, 2}}, minus{{-0.0, -0.0}, {-2, 1}, {-1, 2}};
    for (const auto& [a, b] : {std::pair(plus, minus), std::pair(minus, plus)}) {
        const Result both = ClipSets(kUnion, {a}, {b});
        ASSERT_EQ(both.size(), 2U);
        for (const Contour& c : both)
            EXPECT_FALSE(std::signbit(c.vertices[0].x) || std::signbit(c.vertices[0].y));
    }
    const Result alone = ClipSets(kUnion, {minus}, {});
    ASSERT_EQ(alone.size(), 1U);
    EXPECT_TRUE(std::signbit(alone[0].vertices[0].x) && std::signbit(alone[0].vertices[0].y));
}

TEST(Turn, TellsTheSideExactlyAtAnyScale) {
    std::mt19937_64 random(5);
    const auto whole = [&random](int bits) {
        return static_cast<std::int64_t>(random() >> (64 - bits)) - (std::int64_t{1} << (bits - 1));
    };
    for (int i = 0; i < 20000; ++i) {
        const int bits = 2 + i % 28;
        const std::int64_t x = whole(bits), y = whole(bits), u = whole(bits), v = whole(bits);
        const std::int64_t s = i % 3 == 0 ? 2 * u : whole(bits), t = i % 3 == 0 ? 2 * v : whole(bits);
        const std::int64_t exact = u * t - v * s;
        const int sign = (exact > 0) - (exact < 0);
        for (const int scale : {0, -1060, 900}) {
            const auto at = [scale](std::int64_t k, std::int64_t l) {
                return Point{std::ldexp(static_cast<double>(k), scale),
                             std::ldexp(static_cast<double>(l), scale)};
            };
            ASSERT_EQ(Turn(at(x, y), at(x + u, y + v), at(x + s, y + t)), sign) << i << " at scale " << scale;
        }
    }
}

TEST(Turn, DoesNotDependOnTheOrderOfItsPoints) {
    std::mt19937_64 random(6);
    const auto any = [&random] {  // any finite double
        for (;;) {
            const std::uint64_t bits = random();
            double v = 0;
            std::memcpy(&v, &bits, sizeof v);
            if (std::isfinite(v)) return v;
        }
    };
    for (int i = 0; i < 20000; ++i) {
        const Point a{any(), any()};
        const Point b{any(), any()};
        const Point c = i % 2 == 0 ? Point{any(), any()}
                                   : Point{std::nextafter(a.x / 2 + b.x / 2, any()), a.y / 2 + b.y / 2};
        const int turn = Turn(a, b, c);
        ASSERT_TRUE(Turn(b, c, a) == turn && Turn(c, a, b) == turn && Turn(b, a, c) == -turn &&
                    Turn(c, b, a) == -turn);
        ASSERT_EQ(clip::ExactTurn(a, b, c), turn);
    }
}

}  // namespace
}  // namespace tarvex::test
