// Cubic curves as quadratic ones, boxes, and the native form.
//
// A cubic with the points p0..p3 differs from the quadratic with the same ends and the control point
// (3 (p1 + p2) - p0 - p3) / 4 by at most sqrt(3)/36 |p3 - 3 p2 + 3 p1 - p0|. Each of n pieces of even length
// in the parameter has 1/n^3 of that, so n follows from the tolerance at once, without trials.
#include "platform/font_outline.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <span>
#include <utility>

namespace tarvex::platform {
namespace {

constexpr double kFixedOne = 65536;
constexpr std::size_t kPolygonHead = sizeof(TTPOLYGONHEADER);
constexpr std::size_t kCurveHead = sizeof(TTPOLYCURVE) - sizeof(POINTFX);
static_assert(kPolygonHead == 16 && kCurveHead == 4 && sizeof(POINTFX) == 8);

/// Points of one curve record; its count has 16 bits.
constexpr std::size_t kMostRecordPoints = 32768;

/// More pieces than any curve needs whose coordinates fit into the native form.
constexpr double kMostPieces = 128;

OutlinePoint Between(const OutlinePoint& a, const OutlinePoint& b, double t) {
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, PointKind::OnCurve};
}

struct Cubic {
    OutlinePoint p0, p1, p2, p3;
};

Cubic Part(const Cubic& whole, double from, double to) {
    const auto at = [&whole](double t) {
        const OutlinePoint ab = Between(whole.p0, whole.p1, t);
        const OutlinePoint bc = Between(whole.p1, whole.p2, t);
        const OutlinePoint cd = Between(whole.p2, whole.p3, t);
        return std::pair(Between(ab, bc, t), Between(bc, cd, t));
    };
    const auto [left, leftEnd] = at(from);
    const auto [right, rightEnd] = at(to);
    const OutlinePoint start = Between(left, leftEnd, from);
    const OutlinePoint end = Between(right, rightEnd, to);
    const double third = (to - from);  // a handle is a third of the derivative, which is 3 (b - a)
    return {start,
            {start.x + (leftEnd.x - left.x) * third, start.y + (leftEnd.y - left.y) * third},
            {end.x - (rightEnd.x - right.x) * third, end.y - (rightEnd.y - right.y) * third},
            end};
}

/// Calls `visit` with start, control point and end of each curve of a contour; a line's control point is its
/// start.
template <class Visit>
void ForEachCurve(const OutlineContour& contour, Visit visit) {
    const std::size_t n = contour.size();
    const auto wrapped = [n](std::size_t i) { return i < n ? i : i % n; };  // divisions are slow
    OutlinePoint from = contour.front();
    for (std::size_t i = 1; i <= n; ++i) {
        const OutlinePoint& point = contour[wrapped(i)];
        if (point.kind == PointKind::OnCurve) {
            visit(from, from, point);
            from = point;
            continue;
        }
        const OutlinePoint& next = contour[wrapped(i + 1)];
        const bool isListed = next.kind == PointKind::OnCurve;
        const OutlinePoint end = isListed ? next : Between(point, next, 0.5);
        visit(from, point, end);
        from = end;
        if (isListed) ++i;
    }
}

/// Takes in the curve from `a`, which another curve ends in.
void Widen(double& least, double& most, double a, double control, double b) {
    least = std::min(least, b);
    most = std::max(most, b);
    if ((control - a) * (b - control) >= 0) return;  // on the way from one end to the other
    const double t = (a - control) / (a - 2 * control + b);
    const double extreme = a + t * (2 * (control - a) + t * (a - 2 * control + b));
    least = std::min(least, extreme);
    most = std::max(most, extreme);
}

/// Collects the native form and remembers whether everything fitted.
class NativeWriter {
  public:
    explicit NativeWriter(const Outline& outline) : m_bytes(MostBytes(outline)) {}

    void Polygon(const OutlineContour& contour) {
        const std::size_t start = m_size;
        Add(TT_POLYGON_TYPE);  // its place is the size's, which is not known yet
        Add(TT_POLYGON_TYPE);
        Point(contour.front());
        const std::size_t n = contour.size();
        for (std::size_t i = 1; i < n;) {
            const std::size_t run = i;
            const PointKind kind = contour[i].kind;
            while (i < n && contour[i].kind == kind && i - run < kMostRecordPoints) ++i;
            const bool isCurve = kind == PointKind::Control;
            Add(isCurve ? TT_PRIM_QSPLINE : TT_PRIM_LINE);
            Add(static_cast<WORD>(i - run + (isCurve ? 1 : 0)));
            Points(std::span(contour).subspan(run, i - run));
            if (isCurve) Point(contour[i++ % n]);
        }
        const auto size = static_cast<DWORD>(m_size - start);
        std::memcpy(m_bytes.data() + start, &size, sizeof size);
    }

    std::optional<std::vector<std::byte>> Result() && {
        if (!m_fits) return std::nullopt;
        m_bytes.resize(m_size);
        return std::move(m_bytes);
    }

  private:
    /// As many as there are when each point begins a record.
    static std::size_t MostBytes(const Outline& outline) {
        std::size_t most = 0;
        for (const OutlineContour& contour : outline)
            most += kPolygonHead + contour.size() * (kCurveHead + sizeof(POINTFX)) + sizeof(POINTFX);
        return most;
    }

    template <class T>
    void Add(const T& value) {
        std::memcpy(m_bytes.data() + m_size, &value, sizeof value);
        m_size += sizeof value;
    }

    FIXED Fixed(double value) {
        const double raw = value * kFixedOne + 0.5;
        constexpr double end = std::numeric_limits<std::int32_t>::max() + 1.0;
        if (!(raw >= -end && raw < end)) {
            m_fits = false;
            return {};
        }
        const auto towardsZero = static_cast<std::int32_t>(raw);
        const std::int32_t bits = towardsZero - (raw < towardsZero ? 1 : 0);
        return {static_cast<WORD>(bits & 0xFFFF), static_cast<SHORT>(bits >> 16)};
    }

    void Points(std::span<const OutlinePoint> points) {
        std::byte* to = m_bytes.data() + m_size;  // out of reach of what is written
        for (const OutlinePoint& p : points) {
            const POINTFX point{Fixed(p.x), Fixed(p.y)};
            std::memcpy(to, &point, sizeof point);
            to += sizeof point;
        }
        m_size += points.size() * sizeof(POINTFX);
    }

    void Point(const OutlinePoint& p) { Points({&p, 1}); }

    std::vector<std::byte> m_bytes;
    std::size_t m_size = 0;
    bool m_fits = true;
};

}  // namespace

void AppendCubic(OutlineContour& contour, OutlinePoint a, OutlinePoint b, OutlinePoint end) {
    const Cubic whole = {contour.back(), a, b, end};
    const double bend =
        std::hypot(whole.p3.x - 3 * b.x + 3 * a.x - whole.p0.x, whole.p3.y - 3 * b.y + 3 * a.y - whole.p0.y);
    const double pieces = std::ceil(std::cbrt(std::numbers::sqrt3 / 36 * bend / kCubicTolerance));
    const int count = static_cast<int>(pieces >= 1 ? std::min(pieces, kMostPieces) : 1);
    for (int i = 0; i < count; ++i) {
        Cubic part = Part(whole, static_cast<double>(i) / count, static_cast<double>(i + 1) / count);
        if (i + 1 == count) part.p3 = end;
        part.p3.kind = PointKind::OnCurve;
        contour.push_back({(3 * (part.p1.x + part.p2.x) - part.p0.x - part.p3.x) / 4,
                           (3 * (part.p1.y + part.p2.y) - part.p0.y - part.p3.y) / 4, PointKind::Control});
        contour.push_back(part.p3);
    }
}

std::optional<OutlineBox> BoxOf(const Outline& outline) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    OutlineBox box = {infinity, infinity, -infinity, -infinity};
    for (const OutlineContour& contour : outline) {
        ForEachCurve(contour,
                     [&box](const OutlinePoint& a, const OutlinePoint& control, const OutlinePoint& b) {
                         Widen(box.left, box.right, a.x, control.x, b.x);
                         Widen(box.bottom, box.top, a.y, control.y, b.y);
                     });
    }
    if (!(box.left <= box.right)) return std::nullopt;
    return box;
}

Outline Turned(const Outline& outline, int tenths) {
    tenths %= 3600;
    if (tenths < 0) tenths += 3600;
    if (tenths == 0) return outline;
    constexpr int quarter = 900;
    const double angle = tenths % quarter * std::numbers::pi / 1800;
    double cosine = std::cos(angle);
    double sine = std::sin(angle);
    for (int turns = tenths / quarter; turns > 0; --turns) sine = std::exchange(cosine, -sine);
    Outline turned = outline;
    for (OutlineContour& contour : turned) {
        for (OutlinePoint& p : contour) p = {p.x * cosine - p.y * sine, p.x * sine + p.y * cosine, p.kind};
    }
    return turned;
}

std::optional<std::vector<std::byte>> NativeBytes(const Outline& outline) {
    NativeWriter writer(outline);
    for (const OutlineContour& contour : outline) writer.Polygon(contour);
    return std::move(writer).Result();
}

}  // namespace tarvex::platform
