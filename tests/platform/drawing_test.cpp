// Lines, curves and filled paths against definitions evaluated pixel by pixel.
#include "support/precompiled.h"

#include "platform/pictures.h"
#include "support/ascii_raster.h"
#include "support/property.h"

namespace tarvex::test {
namespace {

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kWidth = 41;
constexpr int kHeight = 30;

__extension__ using Wide = __int128;

/// In sixteenths of a pixel.
struct Corner {
    std::int64_t x, y;
};
using Ring = std::vector<Corner>;

/// Draws white on black with the given pen and fill mode.
class Drawing {
  public:
    explicit Drawing(int depth, int penWidth = 1, int fillMode = ALTERNATE, int penStyle = PS_SOLID)
        : m_picture(kWidth, kHeight, depth),
          m_pen(CreatePen(penStyle, penWidth, RGB(255, 255, 255))),
          m_penSelected(Dc(), m_pen.Get()),
          m_brushSelected(Dc(), GetStockObject(WHITE_BRUSH)) {
        SetPolyFillMode(Dc(), fillMode);
    }
    HDC Dc() const { return m_picture.Dc(); }
    bool IsSet(int x, int y) const { return (m_picture.At(x, y) & kWhitePixel) != 0; }
    std::string Text() const { return m_picture.Text(); }

  private:
    Picture m_picture;
    UniquePen m_pen;
    SelectedObject m_penSelected;
    SelectedObject m_brushSelected;
};

/// The picture of a predicate on pixels, as Drawing::Text gives it.
template <class Predicate>
std::string PictureOf(Predicate isSet) {
    std::string text;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) text += isSet(x, y) ? '#' : '.';
        text += '\n';
    }
    return text;
}

/// Whether the edges that pass at or left of a pixel's centre enclose it.
bool Encloses(const std::vector<Ring>& rings, int mode, int px, int py) {
    const std::int64_t x = std::int64_t{px} * 16;
    const std::int64_t y = std::int64_t{py} * 16;
    int count = 0;
    int winding = 0;
    for (const Ring& ring : rings) {
        for (std::size_t i = 0; i < ring.size(); ++i) {
            Corner a = ring[i];
            Corner b = ring[(i + 1) % ring.size()];
            const int direction = a.y < b.y ? 1 : -1;
            if (direction < 0) std::swap(a, b);
            if (y < a.y || y >= b.y) continue;
            // The edge is at a.x + (b.x - a.x) (y - a.y) / (b.y - a.y).
            if (Wide{x - a.x} * (b.y - a.y) < Wide{b.x - a.x} * (y - a.y)) continue;
            ++count;
            winding += direction;
        }
    }
    return mode == ALTERNATE ? count % 2 != 0 : winding != 0;
}

Ring RingOf(const std::vector<POINT>& points) {
    Ring ring;
    for (const POINT& p : points) ring.push_back({std::int64_t{p.x} * 16, std::int64_t{p.y} * 16});
    return ring;
}

/// The stated rule for curves, followed everywhere.
void PlainFlatten(const std::array<double, 8>& c, Ring& ring) {
    const auto flat = [&c](int i) {
        return std::fabs(c[static_cast<std::size_t>(i)] - 2 * c[static_cast<std::size_t>(i + 2)] +
                         c[static_cast<std::size_t>(i + 4)]) <= 1.0 / 16;
    };
    if (flat(0) && flat(1) && flat(2) && flat(3)) {
        ring.push_back(
            {std::llround(std::floor(c[6] * 16 + 0.5)), std::llround(std::floor(c[7] * 16 + 0.5))});
        return;
    }
    std::array<double, 8> left{};
    std::array<double, 8> right{};
    for (std::size_t k = 0; k < 2; ++k) {
        double level[4] = {c[k], c[k + 2], c[k + 4], c[k + 6]};
        for (std::size_t n = 0; n < 4; ++n) {
            left[2 * n + k] = level[0];
            right[2 * (3 - n) + k] = level[3 - n];
            for (std::size_t i = 0; i + 1 < 4 - n; ++i) level[i] = (level[i] + level[i + 1]) / 2;
        }
    }
    PlainFlatten(left, ring);
    PlainFlatten(right, ring);
}

Ring CurveRing(const std::vector<POINT>& points) {
    Ring ring = RingOf({points.front()});
    for (std::size_t i = 0; i + 3 < points.size(); i += 3) {
        std::array<double, 8> c{};
        for (std::size_t k = 0; k < 4; ++k) {
            c[2 * k] = points[i + k].x;
            c[2 * k + 1] = points[i + k].y;
        }
        PlainFlatten(c, ring);
    }
    return ring;
}

/// Whether the thin line has a pixel: the step that leads beside it, and the rounded offset there.
bool IsOnThinLine(POINT from, POINT to, int x, int y) {
    std::int64_t length = std::int64_t{to.x} - from.x;
    std::int64_t rise = std::int64_t{to.y} - from.y;
    std::int64_t step = std::int64_t{x} - from.x;
    std::int64_t offset = std::int64_t{y} - from.y;
    if (std::abs(rise) > std::abs(length)) {
        std::swap(length, rise);
        std::swap(step, offset);
    }
    if (length < 0) {
        length = -length;
        step = -step;
    }
    if (rise < 0) {
        rise = -rise;
        offset = -offset;
    }
    if (step < 0 || step >= length) return false;
    return Wide{offset} == (Wide{2} * step * rise + length) / (Wide{2} * length);
}

/// The predicate of lines from point to point.
auto IsOnThinLines(const std::vector<POINT>& points) {
    return [&points](int x, int y) {
        bool found = false;
        for (std::size_t i = 0; i + 1 < points.size(); ++i)
            found = found || IsOnThinLine(points[i], points[i + 1], x, y);
        return found;
    };
}

double DistanceToSegment(POINT a, POINT b, double x, double y) {
    const double dx = static_cast<double>(b.x) - a.x;
    const double dy = static_cast<double>(b.y) - a.y;
    const double square = dx * dx + dy * dy;
    const double t = square == 0 ? 0 : std::clamp(((x - a.x) * dx + (y - a.y) * dy) / square, 0.0, 1.0);
    return std::hypot(x - (a.x + t * dx), y - (a.y + t * dy));
}

enum class Reach { Near, Anywhere };

POINT AnyPoint(Reach reach) {
    const auto coordinate = [reach](int limit) {
        const auto near = rc::gen::resize(100, rc::gen::inRange(-10, limit + 10));
        const auto around = rc::gen::resize(100, rc::gen::inRange(-5000, 5000));
        const auto far = rc::gen::element(kMin, kMin + 1, -70000, 70000, kMax - 1, kMax);
        return *rc::gen::weightedOneOf<int>(
            {{8, near}, {3, around}, {reach == Reach::Anywhere ? 2 : 0, far}});
    };
    return {coordinate(kWidth), coordinate(kHeight)};
}

std::vector<POINT> AnyPoints(std::size_t count, Reach reach) {
    std::vector<POINT> points(count);
    for (POINT& p : points) p = AnyPoint(reach);
    return points;
}

std::size_t AnyCount(std::size_t low, std::size_t high) {
    return *rc::gen::resize(100, rc::gen::inRange(low, high));
}

/// Records figures, each from points that `take` draws and gives back as a ring, and fills them.
template <class Take>
void ExpectFilledCentres(Take take) {
    ExpectLaw(
        [&] {
            const int mode = *rc::gen::element(ALTERNATE, WINDING);
            Drawing drawing(*rc::gen::element(1, 32), 1, mode);
            std::vector<Ring> rings;
            RC_ASSERT(BeginPath(drawing.Dc()));
            for (std::size_t n = AnyCount(1, 4); n > 0; --n) rings.push_back(take(drawing.Dc()));
            RC_ASSERT(EndPath(drawing.Dc()) && FillPath(drawing.Dc()));
            RC_ASSERT(drawing.Text() == PictureOf([&](int x, int y) { return Encloses(rings, mode, x, y); }));
        },
        300);
}

TEST(PathFill, HasThePixelsWhoseCentresPolygonsEnclose) {
    ExpectFilledCentres([](HDC dc) {
        const auto points = AnyPoints(AnyCount(2, 9), Reach::Anywhere);
        RC_ASSERT(Polyline(dc, points.data(), static_cast<int>(points.size())));
        return RingOf(points);
    });
}

TEST(PathFill, HasThePixelsWhoseCentresFlattenedCurvesEnclose) {
    ExpectFilledCentres([](HDC dc) {
        const auto points = AnyPoints(1 + 3 * AnyCount(1, 4), Reach::Near);
        RC_ASSERT(PolyBezier(dc, points.data(), static_cast<DWORD>(points.size())));
        return CurveRing(points);
    });
}

TEST(ThinLine, HasOneRoundedPixelPerStepAndNotItsLast) {
    ExpectLaw(
        [] {
            const auto points = AnyPoints(AnyCount(2, 8), Reach::Anywhere);
            const bool closed = *rc::gen::arbitrary<bool>();
            Drawing stroked(1);
            BeginPath(stroked.Dc());
            Drawing direct(*rc::gen::element(1, 32));
            for (const Drawing* drawing : {&stroked, &direct}) {
                MoveToEx(drawing->Dc(), points[0].x, points[0].y, nullptr);
                for (std::size_t i = 1; i < points.size(); ++i)
                    RC_ASSERT(LineTo(drawing->Dc(), points[i].x, points[i].y));
            }
            POINT reached{};
            RC_ASSERT(MoveToEx(direct.Dc(), 0, 0, &reached));
            RC_ASSERT(reached.x == points.back().x && reached.y == points.back().y);
            RC_ASSERT(direct.Text() == PictureOf(IsOnThinLines(points)));
            Drawing polyline(1);
            RC_ASSERT(Polyline(polyline.Dc(), points.data(), static_cast<int>(points.size())));
            RC_ASSERT(polyline.Text() == direct.Text());
            if (closed) RC_ASSERT(CloseFigure(stroked.Dc()));
            EndPath(stroked.Dc());
            RC_ASSERT(StrokePath(stroked.Dc()));
            auto walked = points;
            if (closed) walked.push_back(points[0]);
            RC_ASSERT(stroked.Text() == PictureOf(IsOnThinLines(walked)));
        },
        600);
}

TEST(ThinLine, AStrokedCurveJoinsItsFlattenedPoints) {
    ExpectLaw([] {
        const auto points = AnyPoints(4, Reach::Near);
        Drawing drawing(1);
        RC_ASSERT(PolyBezier(drawing.Dc(), points.data(), 4));
        std::vector<POINT> pixels;
        for (const Corner& c : CurveRing(points))
            pixels.push_back({static_cast<LONG>((c.x + 8) >> 4), static_cast<LONG>((c.y + 8) >> 4)});
        RC_ASSERT(drawing.Text() == PictureOf(IsOnThinLines(pixels)));
    });
}

TEST(WideLine, IsWhatADiscSweepsOver) {
    ExpectLaw(
        [] {
            const int width = *rc::gen::element(2, 3, 4, 7, 16, -5, 1000, kMax, kMin);
            const auto points = AnyPoints(AnyCount(2, 5), Reach::Anywhere);
            Drawing drawing(*rc::gen::element(1, 32), width);
            RC_ASSERT(Polyline(drawing.Dc(), points.data(), static_cast<int>(points.size())));
            const double radius = std::fabs(static_cast<double>(width)) / 2;
            // What flattening and rounding the outline may move it by; a large disc is no finer than
            // the curve it is made of.
            const double slack = 0.15 + 3e-4 * radius;
            for (int y = 0; y < kHeight; ++y) {
                for (int x = 0; x < kWidth; ++x) {
                    double distance = std::numeric_limits<double>::infinity();
                    for (std::size_t i = 0; i + 1 < points.size(); ++i)
                        distance = std::min(distance, DistanceToSegment(points[i], points[i + 1], x, y));
                    if (distance < radius - slack) RC_ASSERT(drawing.IsSet(x, y));
                    if (distance > radius + slack) RC_ASSERT(!drawing.IsSet(x, y));
                }
            }
        },
        300);
}

TEST(WideLine, IsAsManyPixelsThickAsItsPen) {
    for (const int width : {2, 3, 4, 5, 8}) {
        Drawing level(1, width);
        MoveToEx(level.Dc(), -50, 15, nullptr);
        LineTo(level.Dc(), 100, 15);
        Drawing upright(1, width);
        MoveToEx(upright.Dc(), 20, -50, nullptr);
        LineTo(upright.Dc(), 20, 100);
        const auto isWithin = [width](int v, int centre) {
            return v >= centre - width / 2 && v < centre - width / 2 + width;
        };
        EXPECT_EQ(level.Text(), PictureOf([&](int, int y) { return isWithin(y, 15); })) << width;
        EXPECT_EQ(upright.Text(), PictureOf([&](int x, int) { return isWithin(x, 20); })) << width;
    }
}

TEST(WideLine, TwoPixelsWideSeparatesWhatIsFilledOnEitherSide) {
    ExpectLaw(
        [] {
            Drawing drawing(1, 2);
            auto points = AnyPoints(AnyCount(2, 7), Reach::Near);
            points.insert(points.begin(), POINT{-20, *rc::gen::inRange(3, kHeight - 3)});
            points.push_back({kWidth + 20, *rc::gen::inRange(3, kHeight - 3)});
            for (POINT& p : points) p.y = std::clamp(p.y, 3, kHeight - 3);
            Polyline(drawing.Dc(), points.data(), static_cast<int>(points.size()));
            // From a row above the picture the ground is filled as far as it goes.
            const BitPicture reached = Region(
                kWidth, kHeight + 1, 0, 0, [&](int x, int y) { return y == 0 || !drawing.IsSet(x, y - 1); });
            for (int x = 0; x < kWidth; ++x) RC_ASSERT(!reached.Get(x, kHeight));
        },
        300);
}

TEST(Path, FillsInsideItsOutlineAndStrokesOnIt) {
    const POINT square[] = {{5, 5}, {15, 5}, {15, 15}, {5, 15}};
    const auto draw = [&square](BOOL (*paint)(HDC), int penStyle) {
        Drawing drawing(1, 1, ALTERNATE, penStyle);
        BeginPath(drawing.Dc());
        Polyline(drawing.Dc(), square, 4);
        EndPath(drawing.Dc());
        EXPECT_TRUE(paint(drawing.Dc()));
        return drawing.Text();
    };
    const auto within = [](int x, int y, int end) { return x >= 5 && y >= 5 && x < end && y < end; };
    const auto interior = PictureOf([&](int x, int y) { return within(x, y, 15); });
    EXPECT_EQ(draw(FillPath, PS_SOLID), interior);
    EXPECT_EQ(draw(StrokeAndFillPath, PS_NULL), interior);
    EXPECT_EQ(draw(StrokeAndFillPath, PS_SOLID), PictureOf([&](int x, int y) { return within(x, y, 16); }));
    EXPECT_EQ(draw(StrokePath, PS_SOLID), PictureOf([](int x, int y) {
                  const bool top = y == 5 && x >= 5 && x <= 15;
                  const bool right = x == 15 && y >= 5 && y <= 15;
                  const bool bottom = y == 15 && x > 5 && x <= 15;  // left open: the last pixel is missing
                  return top || right || bottom;
              }));
}

TEST(Path, IsUsedUpAndFailsWhenThereIsNone) {
    Drawing drawing(1);
    const HDC dc = drawing.Dc();
    EXPECT_FALSE(EndPath(dc));
    EXPECT_FALSE(CloseFigure(dc));
    EXPECT_FALSE(FillPath(dc));
    EXPECT_TRUE(BeginPath(dc));
    LineTo(dc, 9, 0);
    EXPECT_FALSE(StrokePath(dc)) << "still being recorded";
    EXPECT_TRUE(BeginPath(dc)) << "and this drops it";
    EXPECT_TRUE(EndPath(dc));
    EXPECT_TRUE(StrokeAndFillPath(dc));
    EXPECT_FALSE(StrokeAndFillPath(dc));
    EXPECT_FALSE(StrokePath(dc));
    EXPECT_EQ(drawing.Text(), PictureOf([](int, int) { return false; }));
}

TEST(Path, RefusesWhatIsNoCurveNoLineAndNoMode) {
    Drawing drawing(1);
    const HDC dc = drawing.Dc();
    const std::vector<POINT> points(8, POINT{3, 3});
    for (const DWORD count : {0u, 1u, 2u, 3u, 5u, 6u, 8u})
        EXPECT_FALSE(PolyBezier(dc, points.data(), count)) << count;
    for (const int count : {kMin, -1, 0, 1}) EXPECT_FALSE(Polyline(dc, points.data(), count)) << count;
    EXPECT_FALSE(PolyBezier(dc, nullptr, 4));
    EXPECT_FALSE(Polyline(dc, nullptr, 4));
    EXPECT_EQ(SetPolyFillMode(dc, 3), 0);
    EXPECT_EQ(SetPolyFillMode(dc, WINDING), ALTERNATE);
    EXPECT_EQ(SetPolyFillMode(dc, ALTERNATE), WINDING);
    EXPECT_EQ(SetBkMode(dc, 0), 0);
    EXPECT_EQ(SetBkMode(dc, TRANSPARENT), OPAQUE);
    EXPECT_EQ(SetBkMode(dc, OPAQUE), TRANSPARENT);
    EXPECT_EQ(CreatePen(1, 1, 0), nullptr);
    const UniqueDC gone(CreateCompatibleDC(nullptr));
    DeleteDC(gone.Get());
    for (const HDC bad : {HDC{nullptr}, gone.Get()}) {
        for (const auto operation :
             {BeginPath, EndPath, CloseFigure, FillPath, StrokePath, StrokeAndFillPath})
            EXPECT_FALSE(operation(bad));
        EXPECT_FALSE(MoveToEx(bad, 0, 0, nullptr));
        EXPECT_FALSE(LineTo(bad, 0, 0));
        EXPECT_FALSE(Polyline(bad, points.data(), 2));
        EXPECT_FALSE(PolyBezier(bad, points.data(), 4));
        EXPECT_EQ(SetPolyFillMode(bad, WINDING), 0);
        EXPECT_EQ(SetBkMode(bad, OPAQUE), 0);
    }
}

TEST(Curves, OfAnySizeAreDrawnInBoundedTime) {
    for (const POINT& far : {POINT{kMin, kMin}, POINT{kMax, kMin}, POINT{kMin, kMax}, POINT{kMax, kMax}}) {
        Drawing drawing(1, 3);
        std::vector<POINT> points = {{20, 15}};
        for (int i = 0; i < 3000; ++i) points.push_back(i % 2 == 0 ? far : POINT{-1 - far.x, -1 - far.y});
        BeginPath(drawing.Dc());
        EXPECT_TRUE(PolyBezier(drawing.Dc(), points.data(), static_cast<DWORD>(points.size())));
        EndPath(drawing.Dc());
        EXPECT_TRUE(StrokeAndFillPath(drawing.Dc()));
        EXPECT_TRUE(drawing.IsSet(20, 15));
    }
}

}  // namespace
}  // namespace tarvex::test
