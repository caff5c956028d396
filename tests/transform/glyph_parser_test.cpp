// Native outlines, well formed and not, into contours.
#include "support/precompiled.h"

#include "support/contours.h"
#include "support/records.h"
#include "transform/glyph_parser.h"

namespace tarvex::test {
namespace {

/// Writes native outlines by hand. Coordinates are given with their 16 bits after the point.
class NativeText {
  public:
    NativeText& Head(double x, double y, DWORD type = TT_POLYGON_TYPE) {
        EndPolygon();
        m_head = m_bytes.size();
        Add(DWORD{0});
        Add(type);
        return Point(x, y);
    }
    NativeText& Record(WORD type, const std::vector<std::pair<double, double>>& points) {
        Add(type);
        Add(static_cast<WORD>(points.size()));
        for (const auto& [x, y] : points) Point(x, y);
        return *this;
    }
    /// Says another size than the last polygon's own.
    NativeText& Claim(DWORD size) {
        std::memcpy(m_bytes.data() + m_head, &size, sizeof size);
        m_head = std::string::npos;
        return *this;
    }
    std::vector<std::byte> Bytes() {
        EndPolygon();
        return m_bytes;
    }

  private:
    template <class T>
    void Add(T value) {
        const auto* const bytes = reinterpret_cast<const std::byte*>(&value);
        m_bytes.insert(m_bytes.end(), bytes, bytes + sizeof value);
    }
    NativeText& Point(double x, double y) {
        for (const double v : {x, y}) Add(static_cast<std::int32_t>(std::floor(v * 65536)));  // as FIXED lies
        return *this;
    }
    void EndPolygon() {
        if (m_head != std::string::npos) Claim(static_cast<DWORD>(m_bytes.size() - m_head));
    }

    std::vector<std::byte> m_bytes;
    std::size_t m_head = std::string::npos;
};

using Contour = std::vector<BPOINT>;
using Contours = std::vector<Contour>;

Contours Parsed(const std::vector<std::byte>& bytes) {
    CPolyPolyBezier out;
    AppendNativeOutline(bytes, out);
    Contours contours;
    for (int i = 0; i < out.GetSize(); ++i) contours.push_back(ListOf(out[i]));
    return contours;
}

TEST(NativeOutline, StraightPolygonsAreClosedWithHandlesOnAnchorsAndYDown) {
    const auto open = NativeText().Head(0, 0).Record(TT_PRIM_LINE, {{10, 0}, {10, 20}}).Bytes();
    const Contour triangle = {Corner(0, 0), Corner(10, 0), Corner(10, -20), Corner(0, 0)};
    EXPECT_EQ(Parsed(open), Contours{triangle});
    const auto closed = NativeText().Head(0, 0).Record(TT_PRIM_LINE, {{10, 0}, {10, 20}, {0, 0}}).Bytes();
    EXPECT_EQ(Parsed(closed), Contours{triangle}) << "what is closed is not closed again";
    EXPECT_EQ(Parsed(NativeText().Head(3, 4).Bytes()), Contours{Contour{Corner(3, -4)}});
}

TEST(NativeOutline, CoordinatesAreRoundedHalvesUpwards) {
    const std::pair<double, double> cases[] = {{2.5, 3},       {-2.5, -2},       {2.4999, 2},
                                               {-2.50001, -3}, {-0.5, 0},        {0.49999, 0},
                                               {-1, -1},       {32767.5, 32768}, {-32768, -32768}};
    for (const auto& [given, rounded] : cases)
        EXPECT_EQ(Parsed(NativeText().Head(given, -1).Bytes())[0][0].pt, (DPOINT{rounded, 1})) << given;
}

TEST(NativeOutline, CurvesAreRaisedInWholeNumbersTruncatedTowardsZero) {
    // 0,0 with control 10,-10 to 5,7: 2 * 10 / 3 = 6 and 10 + (5 - 10) / 3 = 9; -10 + 17 / 3 = -5.
    const auto one = Parsed(NativeText().Head(0, 0).Record(TT_PRIM_QSPLINE, {{10, -10}, {5, 7}}).Bytes());
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one[0], (Contour{{{0, 0}, {0, 0}, {6, 6}}, {{9, 5}, {5, -7}, {5, -7}}, Corner(0, 0)}));
}

TEST(NativeOutline, ImpliedEndsLieMidwayBetweenUnroundedControls) {
    // Midway between 0.4 and 1.4 is 0.9, which rounds to 1; between the rounded 0 and 1 it would be 0.
    // Between -3 and -4 of the last bits, -7 / 2 is cut to -3 of them.
    const auto two =
        Parsed(NativeText().Head(0, 0).Record(TT_PRIM_QSPLINE, {{0.4, 3}, {1.4, 3}, {9, 9}}).Bytes());
    ASSERT_EQ(two[0].size(), 4u);
    EXPECT_EQ(two[0][1].pt, (DPOINT{1, -3}));
    EXPECT_EQ(two[0][2].pt, (DPOINT{9, -9}));
    const double half = -0.5 - 3.0 / 65536;
    const auto cut = Parsed(NativeText()
                                .Head(0, 0)
                                .Record(TT_PRIM_QSPLINE, {{-0.5, 0}, {-0.5 - 1.0 / 65536, 9}, {half, 0}})
                                .Bytes());
    EXPECT_EQ(cut[0][1].pt.x, 0) << "-0.5 and one bit less meet at -0.5, which rounds up";
}

TEST(NativeOutline, UnknownRecordsAreSteppedOverByTheirHeads) {
    // The head of the unknown record says two points; its body, taken for records, is a line to 7,7.
    auto text = NativeText().Head(0, 0).Record(9, {}).Record(TT_PRIM_LINE, {{7, 7}});
    EXPECT_EQ(Parsed(text.Bytes()), Contours{(Contour{Corner(0, 0), Corner(7, -7), Corner(0, 0)})});
}

TEST(NativeOutline, ParsingEndsWhereTheBytesStopMakingSense) {
    const auto good = [] { return NativeText().Head(0, 0).Record(TT_PRIM_LINE, {{5, 0}, {5, 5}}); };
    const Contours one = Parsed(good().Bytes());
    EXPECT_EQ(Parsed(good().Head(1, 1, 23).Bytes()), one) << "another type of polygon";
    for (const DWORD size : {0u, 1u, 15u})
        EXPECT_EQ(Parsed(good().Head(1, 1).Claim(size).Bytes()), one)
            << "a head smaller than itself: " << size;
    EXPECT_EQ(Parsed(good().Claim(0xFFFFFFFF).Bytes()), one) << "a polygon that says more than there is";
    auto cut = good().Bytes();
    cut.resize(cut.size() - 1);
    EXPECT_EQ(Parsed(cut), (Contours{Contour{Corner(0, 0), Corner(5, 0), Corner(0, 0)}}));
    cut.resize(15);
    EXPECT_TRUE(Parsed(cut).empty());
    EXPECT_TRUE(Parsed({}).empty());
    // A record's points end with their polygon, though more bytes follow.
    auto short1 = good().Claim(16 + 4 + 8).Head(8, 8);
    EXPECT_EQ(Parsed(short1.Bytes())[0], (Contour{Corner(0, 0), Corner(5, 0), Corner(0, 0)}));
}

}  // namespace
}  // namespace tarvex::test
