// Raw polygon sets: ownership, trivial results, the marking of operands, and the text form.
#include "support/precompiled.h"

#include "tarvex/clipper.h"

namespace tarvex::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Set {
    ClipPolygon polygon;

    Set() = default;
    Set(std::initializer_list<std::vector<DPOINT>> contours) {
        for (std::vector<DPOINT> contour : contours) Add(std::move(contour));
    }
    Set(const Set&) = delete;
    Set& operator=(const Set&) = delete;
    ~Set() { FreeClipPolygon(polygon); }

    void Add(std::vector<DPOINT> contour, int hole = 0) {
        AddClipContour(polygon, {static_cast<std::int32_t>(contour.size()), contour.data()}, hole);
    }
    std::vector<int> Counts() const {
        std::vector<int> counts;
        for (int i = 0; i < polygon.contourCount; ++i) counts.push_back(polygon.contours[i].vertexCount);
        return counts;
    }
    std::vector<int> Holes() const { return {polygon.holes, polygon.holes + polygon.contourCount}; }
};

std::vector<DPOINT> Square(double left, double bottom, double size) {
    return {{left, bottom}, {left + size, bottom}, {left + size, bottom + size}, {left, bottom + size}};
}

TEST(ClipPolygons, OnlyDifferenceAndIntersectionMarkWhatCannotContribute) {
    struct Case {
        int op;
        std::vector<int> subject, clip, result;
    };
    const Case cases[] = {
        {0, {4, 4}, {4, -4, 4}, {8, 4}},      {1, {4, -4}, {4, -4, 4}, {4}},
        {2, {4, 4}, {4, 4, 4}, {8, 8, 4, 4}}, {3, {4, 4}, {4, 4, 4}, {12, 4, 4}},
        {4, {4, 4}, {4, 4, 4}, {}},           {-1, {4, 4}, {4, 4, 4}, {}},
    };
    for (const Case& c : cases) {
        Set subject{Square(0, 0, 2), Square(20, 0, 2)};
        Set clip{Square(1, 1, 2), Square(50, 0, 1), Square(-1, -1, 1)};  // overlapping, apart, touching
        Set result;
        ClipPolygons(c.op, subject.polygon, clip.polygon, result.polygon);
        EXPECT_EQ(subject.Counts(), c.subject) << "operation " << c.op;
        EXPECT_EQ(clip.Counts(), c.clip) << "operation " << c.op;
        if (c.op < 2) {
            EXPECT_THAT(result.Counts(), ::testing::SizeIs(c.result.size())) << "operation " << c.op;
        }
    }
}

TEST(ClipPolygons, MarkedContoursStayMarkedAndAreSkipped) {
    Set subject{Square(0, 0, 4)};
    Set clip{Square(1, 1, 1), Square(9, 9, 1)};
    Set result;
    ClipPolygons(0, subject.polygon, clip.polygon, result.polygon);
    ClipPolygons(3, subject.polygon, clip.polygon, result.polygon);
    EXPECT_THAT(clip.Counts(), ElementsAre(4, -4));
    EXPECT_THAT(result.Counts(), ElementsAre(4)) << "the marked square is not in the union";
}

TEST(ClipPolygons, EmptyOperandsGiveTheirTrivialResults) {
    for (int op = 0; op < 4; ++op) {
        for (int empty = 0; empty < 3; ++empty) {
            Set subject, clip;
            if (empty == 1) subject.Add(Square(0, 0, 1));
            if (empty == 2) clip.Add(Square(0, 0, 1));
            Set result{Square(7, 7, 7)};
            ClipPolygons(op, subject.polygon, clip.polygon, result.polygon);
            const bool keepsSubject = empty == 1 && op != 1;
            const bool keepsClip = empty == 2 && op >= 2;
            EXPECT_EQ(result.polygon.contourCount, keepsSubject || keepsClip ? 1 : 0) << op << ' ' << empty;
            EXPECT_EQ(result.polygon.contours != nullptr, keepsSubject || keepsClip);
            if (empty == 1) {
                EXPECT_THAT(subject.Counts(), ElementsAre(4));
            }
        }
    }
}

TEST(ClipPolygons, AHoleThatIsCoveredComesOutFlagged) {
    Set subject{Square(0, 0, 10), Square(4, 4, 2)};
    Set clip{Square(3, 3, 4)};
    Set result;
    ClipPolygons(1, subject.polygon, clip.polygon, result.polygon);
    EXPECT_THAT(result.Holes(), ElementsAre(1, 0));  // the sweep leaves the hole first
}

TEST(ClipPolygons, TheResultMayReplaceAnOperand) {
    Set subject{Square(0, 0, 2)};
    Set clip{Square(1, 0, 2)};
    ClipPolygons(1, subject.polygon, clip.polygon, subject.polygon);
    EXPECT_THAT(subject.Counts(), ElementsAre(4));
    EXPECT_EQ(subject.polygon.contours[0].vertices[0].x, 1);
    ClipPolygons(3, subject.polygon, subject.polygon, subject.polygon);
    EXPECT_THAT(subject.Counts(), ElementsAre(4));
}

TEST(ClipPolygons, ContoursThatAreNotFiniteOrHaveNoStorageAreIgnored) {
    const double bad[] = {std::nan(""), INFINITY, -INFINITY};
    for (const double value : bad) {
        Set subject{Square(0, 0, 1), {{0, 0}, {value, 1}, {1, 1}}, {}, {{3, 3}}, {{3, 3}, {4, 4}}};
        AddClipContour(subject.polygon, {7, nullptr}, 0);
        Set clip{Square(0, 0, 2), {{5, 5}, {6, value}, {7, 5}}};
        Set result;
        ClipPolygons(1, subject.polygon, clip.polygon, result.polygon);
        EXPECT_THAT(result.Counts(), ElementsAre(4));
        EXPECT_THAT(clip.Counts(), ElementsAre(4, 3)) << "an ignored contour is not marked";
    }
}

TEST(ClipPolygons, ExtremeCoordinatesNeitherOverflowNorVanish) {
    for (const double size : {std::numeric_limits<double>::max(), 1e300, 1e-300, 5e-324}) {
        Set subject{{{0, 0}, {size, 0}, {size, size}, {0, size}}};
        Set clip{{{0, 0}, {size, size}, {0, size}}, {{-size, 0}, {1, 1e-300}, {1e-300, 1}}};
        Set result;
        for (int op = 0; op < 4; ++op) {
            ClipPolygons(op, subject.polygon, clip.polygon, result.polygon);
            EXPECT_GT(result.polygon.contourCount, 0) << size << " operation " << op;
        }
    }
}

TEST(ClipPolygonText, IsWrittenWithFifteenDigitsAndReadBack) {
    Set set;
    set.Add({{0.5, -1}, {1e20, 2}, {1.0 / 3, 0}}, 1);
    set.Add({}, 0);
    EXPECT_EQ(WriteClipPolygon(set.polygon, ClipHoleFlags::written),
              "2\n3\n1\n 0.500000000000000 -1.000000000000000\n"
              " 100000000000000000000.000000000000000 2.000000000000000\n"
              " 0.333333333333333 0.000000000000000\n0\n0\n");
    for (const ClipHoleFlags flags : {ClipHoleFlags::omitted, ClipHoleFlags::written}) {
        const std::string text = WriteClipPolygon(set.polygon, flags);
        Set read;
        ASSERT_TRUE(ReadClipPolygon(text, flags, read.polygon));
        EXPECT_EQ(WriteClipPolygon(read.polygon, flags), text);
        EXPECT_THAT(read.Counts(), ElementsAre(3, 0));
        EXPECT_THAT(read.Holes(), ElementsAre(flags == ClipHoleFlags::written ? 1 : 0, 0));
        for (std::size_t length = 0; length + 4 < text.size();
             ++length)  // the last number is whole up to its zeros
            EXPECT_FALSE(ReadClipPolygon(text.substr(0, length), flags, read.polygon)) << length;
    }
}

TEST(ClipPolygonText, HostileTextIsRefusedAndLeavesAnEmptySet) {
    for (const char* text :
         {"", "x", "-1", "2147483647", "2147483648", "1", "1\n2147483647\n 0 0\n", "1\n1\n 0",
          "1\n1\n 0 1e999\n", "1\n1\n 0 z\n", "99999999999999999999", "1\n+-1\n"}) {
        Set set{Square(0, 0, 1)};
        EXPECT_FALSE(ReadClipPolygon(text, ClipHoleFlags::omitted, set.polygon)) << text;
        EXPECT_EQ(set.polygon.contours, nullptr);
    }
    Set set;
    EXPECT_TRUE(ReadClipPolygon("1 1\t+0.5 1e3 and more", ClipHoleFlags::omitted, set.polygon));
    EXPECT_EQ(set.polygon.contours[0].vertices[0].y, 1000);
}

}  // namespace
}  // namespace tarvex::test
