#include "tarvex/bend.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "tarvex/bezier.h"

namespace tarvex::app {

namespace {

constexpr int MAX_HALVINGS = 6;
constexpr double STRAIGHT_PART = 0.05;  ///< of the tolerance: what is nearer to a line is one
constexpr double FLAT_SIDE = 1e-3;

using Contour = std::vector<BPOINT>;

DPOINT Between(const DPOINT& a, const DPOINT& b, double t) {
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t};
}

double Distance(const DPOINT& a, const DPOINT& b) { return std::hypot(b.x - a.x, b.y - a.y); }

bool Same(const DPOINT& a, const DPOINT& b) { return a.x == b.x && a.y == b.y; }

DRECT WithSides(DRECT frame) {
    const double larger = std::max(frame.right - frame.left, frame.bottom - frame.top);
    const double least = larger > 0 ? larger * FLAT_SIDE : 1;
    const auto widen = [least](double& from, double& to) {
        if (to - from >= least) return;
        const double middle = (from + to) / 2;
        from = middle - least / 2;
        to = middle + least / 2;
    };
    widen(frame.left, frame.right);
    widen(frame.top, frame.bottom);
    return frame;
}

/// Bends one segment and appends the nodes of its image to a contour that ends with that of its start.
class SegmentBender {
  public:
    SegmentBender(Bender& bend, const CBezier& curve, bool isStraight, double tolerance, Contour& out)
        : m_bend(bend), m_curve(curve), m_isStraight(isStraight), m_tolerance(tolerance), m_out(out) {}

    void Append(double from, double to, int halvings) {
        const double third = (to - from) / 3;
        const DPOINT start = m_out.back().pt;
        const DPOINT q1 = Image(from + third);
        const DPOINT q2 = Image(to - third);
        const DPOINT end = Image(to);
        if (m_isStraight && IsLine(start, q1, q2, end, from, to)) {
            m_out.push_back({end, end, end});
            return;
        }
        const auto control = [](const DPOINT& near, const DPOINT& q, const DPOINT& r, const DPOINT& far) {
            return DPOINT{(-5 * near.x + 18 * q.x - 9 * r.x + 2 * far.x) / 6,
                          (-5 * near.y + 18 * q.y - 9 * r.y + 2 * far.y) / 6};
        };
        const CBezier piece(start, control(start, q1, q2, end), control(end, q2, q1, start), end);
        if (halvings < MAX_HALVINGS && !Follows(piece, from, to)) {
            const double middle = (from + to) / 2;
            Append(from, middle, halvings + 1);
            Append(middle, to, halvings + 1);
            return;
        }
        m_out.back().cp2 = piece.p1;
        m_out.push_back({piece.p2, end, end});
    }

  private:
    DPOINT Image(double t) { return m_bend(m_curve.GetCurvePoint(t)); }

    bool IsLine(const DPOINT& start, const DPOINT& q1, const DPOINT& q2, const DPOINT& end, double from,
                double to) {
        const double slack = m_tolerance * STRAIGHT_PART;
        const auto isOn = [&](const DPOINT& p, double t) {
            return Distance(p, Between(start, end, t)) <= slack;
        };
        return isOn(q1, 1.0 / 3) && isOn(q2, 2.0 / 3) && isOn(Image(from + (to - from) / 2), 0.5);
    }

    bool Follows(const CBezier& piece, double from, double to) {
        for (const double t : {1.0 / 6, 1.0 / 2, 5.0 / 6}) {
            if (!(Distance(piece.GetCurvePoint(t), Image(from + (to - from) * t)) <= m_tolerance))
                return false;
        }
        return true;
    }

    Bender& m_bend;
    const CBezier& m_curve;
    bool m_isStraight;
    double m_tolerance;
    Contour& m_out;
};

}  // namespace

Bender::Bender(const DRECT& frame, int type, double amount) {
    const DRECT whole = WithSides(frame);
    const double width = whole.right - whole.left;
    const double height = whole.bottom - whole.top;
    m_origin = {whole.left, whole.top};
    m_unit = std::max(width, height) / BEND_FRAME;
    m_tolerance = std::max(width, height) * BEND_TOLERANCE;
    ENVELOP fields;
    fields.right = width / m_unit;
    fields.bottom = height / m_unit;
    m_envelope.SetEnvelop(fields);
    m_envelope.SetType(type, amount / m_unit);
}

DPOINT Bender::operator()(const DPOINT& p) {
    const double x = (p.x - m_origin.x) / m_unit;
    const double y = (p.y - m_origin.y) / m_unit;
    return {p.x, m_origin.y + m_envelope.envelop(x, y) * m_unit};
}

std::size_t Bender::Bend(CPolyPolyBezier& shape) {
    std::size_t count = 0;
    Contour bent;
    for (int i = 0; i < shape.GetSize(); ++i) {
        CArray<BPOINT, BPOINT>& nodes = shape[i];
        if (nodes.IsEmpty()) continue;
        const bool isClosed = nodes.GetSize() > 1 && nodes[0].pt == nodes[nodes.GetUpperBound()].pt;
        const DPOINT start = (*this)(nodes[0].pt);
        bent.assign(1, {start, start, start});
        for (int k = 0; k + 1 < nodes.GetSize(); ++k) {
            CBezier curve(nodes[k], nodes[k + 1]);
            const bool isStraight = Same(curve.p0, curve.p1) && Same(curve.p2, curve.p3);
            if (isStraight) {  // at even speed
                curve.p1 = Between(curve.p0, curve.p3, 1.0 / 3);
                curve.p2 = Between(curve.p0, curve.p3, 2.0 / 3);
            }
            SegmentBender(*this, curve, isStraight, m_tolerance, bent).Append(0, 1, 0);
        }
        if (isClosed) bent.back().pt = start;
        nodes.SetSize(static_cast<int>(bent.size()));
        std::copy(bent.begin(), bent.end(), nodes.GetData());
        count += bent.size();
    }
    return count;
}

}  // namespace tarvex::app
