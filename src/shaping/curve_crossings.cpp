// Crossings of two cubics.
//
// Cutting both curves into arcs that hardly turn leaves two kinds of pairs whose boxes meet. If the
// chords differ in direction by more than the arcs turn, the arcs cross at most once, and Newton's method
// for A(s) = B(t), started where the chords cross, finds the place to the last bits in a few steps. If
// not, the arcs run nearly side by side, where Newton's method has nothing to hold on to and halving would
// go on for ever: two outlines that are nearly the same consist of nothing else. There the distance of
// A(s) from curve B, with a sign that tells the side, is a smooth function of one variable. It is sampled;
// where the sign changes, the crossing is found by keeping it between two samples.
//
// Curves that coincide on a stretch are told before all that: two cubics with a stretch in common are one
// and the same curve, so the stretch ends at an end of one of them, and the pieces between such ends have
// equal control points.
#include "shaping/curve_crossings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "shaping/box_tree.h"
#include "tarvex/bezier.h"

namespace tarvex::shaping {

namespace {

constexpr double SMALL_TURN = 0.3;     // tangent of the angle between a leg and the chord
constexpr double TINY_TURN = 0.02;     // that of both arcs together where they are compared side by side
constexpr double NOT_TURNING = 1e300;  // stands for a turn by a right angle or more
constexpr int MAX_ARC_HALVINGS = 10;
constexpr int MAX_HALVINGS = 24;  // of a pair of arcs
constexpr int MAX_PAIRS = 4000;   // looked at for one pair of arcs
constexpr int SAMPLES = 9;
constexpr double ON_CURVE = POINT_EPSILON / 10;  // a sample nearer than this is on the other curve
constexpr double SAME_COURSE = 4 * POINT_EPSILON;
constexpr double PARAMETER_SLACK = 1e-6;  // of an arc's range, so that none is lost between two arcs

double Cross(DPOINT a, DPOINT b) { return a.x * b.y - a.y * b.x; }

double Extent(const Cubic& c) {
    const Box b = BoxOf(c);
    return std::max(b.right - b.left, b.bottom - b.top);
}

/// How far the legs of the control polygon, and with them all tangents, are turned from the chord.
double TurnOf(const Cubic& c) {
    const DPOINT chord = Minus(c.p3, c.p0);
    const double extent = Extent(c);
    if (extent < ON_CURVE) return 0;
    double turn = 0;
    for (const DPOINT leg : {Minus(c.p1, c.p0), Minus(c.p2, c.p1), Minus(c.p3, c.p2)}) {
        if (Length(leg) <= extent * 1e-12) continue;
        const double along = Dot(leg, chord);
        if (!(along > 0)) return NOT_TURNING;
        turn = std::max(turn, std::fabs(Cross(leg, chord)) / along);
    }
    return turn;
}

/// How far the curve can be from its chord, which has a length.
double BendOf(const Cubic& c) {
    const DPOINT chord = Minus(c.p3, c.p0);
    return std::max(std::fabs(Cross(chord, Minus(c.p1, c.p0))), std::fabs(Cross(chord, Minus(c.p2, c.p0)))) /
           Length(chord);
}

Arc HalfOf(const Arc& arc, bool second) {
    const double middle = (arc.from + arc.to) / 2;
    return second ? Arc{PartOf(arc.curve, 0.5, 1), middle, arc.to}
                  : Arc{PartOf(arc.curve, 0, 0.5), arc.from, middle};
}

/// Newton's method for the nearest point, from a parameter near it. Parameters beyond the ends stand for
/// the continued curve.
double ProjectNear(const Cubic& c, DPOINT p, double t) {
    for (int step = 0; step < 8; ++step) {
        const DPOINT speed = DerivativeAt(c, t);
        const double squared = SquaredLength(speed);
        if (!(squared > 0)) break;
        const double change = Dot(Minus(p, Blossom(c, t, t, t)), speed) / squared;
        t = std::clamp(t + change, -1.0, 2.0);
        if (std::fabs(change) < 1e-15) break;
    }
    return t;
}

enum class Answer { Found, None, Unsure };

bool IsInRange(double v, double from, double to) {
    const double slack = (to - from) * PARAMETER_SLACK;
    return v >= from - slack && v <= to + slack;
}

/// One pair of curves at work on one pair of arcs.
class ArcPair {
  public:
    ArcPair(const Cubic& a, const Cubic& b, std::vector<CurveHit>& hits) : m_a(a), m_b(b), m_hits(hits) {}

    void Run(const Arc& a, const Arc& b) {
        struct Open {
            Arc a, b;
            int halvings;
        };
        std::vector<Open> open{{a, b, 0}};
        for (int seen = 0; !open.empty() && seen < MAX_PAIRS; ++seen) {
            const Open pair = open.back();
            open.pop_back();
            if (!Meet(Grown(BoxOf(pair.a.curve), POINT_EPSILON), BoxOf(pair.b.curve))) continue;
            const double turnA = TurnOf(pair.a.curve);
            const double turnB = TurnOf(pair.b.curve);
            if (Decide(pair.a, turnA, pair.b, turnB) != Answer::Unsure) continue;
            if (pair.halvings == MAX_HALVINGS) continue;
            const int halvings = pair.halvings + 1;
            // What hardly turns can still run unevenly, and Newton's method start far off: the longer is
            // halved.
            const bool isTurning = std::max(turnA, turnB) > TINY_TURN;
            const bool halvesA =
                isTurning && turnA != turnB ? turnA > turnB : Extent(pair.a.curve) > Extent(pair.b.curve);
            for (const bool second : {true, false}) {
                if (halvesA) {
                    open.push_back({HalfOf(pair.a, second), pair.b, halvings});
                } else {
                    open.push_back({pair.a, HalfOf(pair.b, second), halvings});
                }
            }
        }
    }

  private:
    Answer Decide(const Arc& a, double turnA, const Arc& b, double turnB) {
        if (turnA > SMALL_TURN || turnB > SMALL_TURN) return Answer::Unsure;
        const DPOINT chordA = Minus(a.curve.p3, a.curve.p0);
        const DPOINT chordB = Minus(b.curve.p3, b.curve.p0);
        const double across = std::fabs(Cross(chordA, chordB));
        if (across > 2 * (turnA + turnB) * std::fabs(Dot(chordA, chordB)) && across > 0)
            return Transversal(a, chordA, b, chordB);
        if (turnA + turnB > TINY_TURN) return Answer::Unsure;
        SideBySide(a, b);
        return Answer::None;
    }

    Answer Transversal(const Arc& a, DPOINT chordA, const Arc& b, DPOINT chordB) {
        const double determinant = Cross(chordA, chordB);
        const DPOINT gap = Minus(b.curve.p0, a.curve.p0);
        const double u = Cross(gap, chordB) / determinant;
        const double v = Cross(gap, chordA) / determinant;
        // The arcs' bends shift the crossing from that of the chords by up to this much of either arc.
        const double bends = (BendOf(a.curve) + BendOf(b.curve)) / std::fabs(determinant);
        const double slackU = bends * Length(chordB) + PARAMETER_SLACK;
        const double slackV = bends * Length(chordA) + PARAMETER_SLACK;
        if (!(u > -slackU && u < 1 + slackU && v > -slackV && v < 1 + slackV)) return Answer::None;
        constexpr double tooVague = 0.5;
        if (slackU > tooVague || slackV > tooVague) return Answer::Unsure;
        double s = a.from + u * (a.to - a.from);
        double t = b.from + v * (b.to - b.from);
        // Next to a cusp the way there can lead to another crossing.
        if (!Refine(s, t) || !IsInRange(s, a.from, a.to) || !IsInRange(t, b.from, b.to))
            return Answer::Unsure;
        return Keep(s, t) ? Answer::Found : Answer::None;
    }

    /// Newton's method for A(s) = B(t).
    bool Refine(double& s, double& t) const {
        double last = std::numeric_limits<double>::infinity();
        for (int step = 0; step < 16; ++step) {
            const DPOINT gap = Minus(Blossom(m_b, t, t, t), Blossom(m_a, s, s, s));
            const DPOINT speedA = DerivativeAt(m_a, s);
            const DPOINT speedB = DerivativeAt(m_b, t);
            const double determinant = Cross(speedA, speedB);
            if (determinant == 0) return false;
            const double changeS = Cross(gap, speedB) / determinant;
            const double changeT = Cross(gap, speedA) / determinant;
            const double change = std::max(std::fabs(changeS), std::fabs(changeT));
            if (!(change < 1)) return false;
            s = std::clamp(s + changeS, -0.5, 1.5);
            t = std::clamp(t + changeT, -0.5, 1.5);
            if (change < 1e-15 || (change < 1e-12 && change >= last)) return true;
            last = change;
        }
        return last < 1e-9;
    }

    bool Keep(double s, double t) {
        s = std::clamp(s, 0.0, 1.0);
        t = std::clamp(t, 0.0, 1.0);
        const DPOINT p = PointAt(m_a, s);
        if (!(p == PointAt(m_b, t))) return false;
        m_hits.push_back({s, t, p});
        return true;
    }

    /// A sample of curve A against curve B.
    struct Sample {
        double s;
        double t;
        double side;  ///< distance from curve B; its sign tells on which side
    };

    Sample SampleAt(double s, double guess) const {
        const DPOINT p = Blossom(m_a, s, s, s);
        const double t = ProjectNear(m_b, p, guess);
        const DPOINT speed = DerivativeAt(m_b, t);
        const double length = Length(speed);
        const double side = length > 0 ? Cross(speed, Minus(p, Blossom(m_b, t, t, t))) / length : 0;
        return {s, t, std::fabs(side) < ON_CURVE ? 0 : side};
    }

    /// The part of arc A beside arc B is sampled from one end to the other.
    void SideBySide(const Arc& a, const Arc& b) {
        const double length = a.to - a.from;
        const double atStart = ProjectNear(m_a, b.curve.p0, a.from + length / 2);
        const double atEnd = ProjectNear(m_a, b.curve.p3, a.from + length / 2);
        const double from = std::max(a.from, std::min(atStart, atEnd));
        const double to = std::min(a.to, std::max(atStart, atEnd));
        if (!(from <= to)) return;
        std::array<Sample, SAMPLES> samples;
        for (std::size_t k = 0; k < samples.size(); ++k) {
            const double part = static_cast<double>(k) / (SAMPLES - 1);
            const double s = k + 1 == samples.size() ? to : from + (to - from) * part;
            const double along = atEnd == atStart ? 0.5 : (s - atStart) / (atEnd - atStart);
            samples[k] = SampleAt(s, b.from + (b.to - b.from) * along);
        }
        const auto isOn = [](const Sample& sample) { return sample.side == 0; };
        if (std::all_of(samples.begin(), samples.end(), isOn)) return;  // nothing crosses here
        for (std::size_t k = 0; k < samples.size(); ++k) {
            if (isOn(samples[k])) {
                std::size_t end = k;
                while (end + 1 < samples.size() && isOn(samples[end + 1])) ++end;
                KeepWithin(Sharpened(samples[(k + end) / 2]), b);
                k = end;
            } else if (k > 0 && samples[k - 1].side * samples[k].side < 0) {
                KeepWithin(Crossing(samples[k - 1], samples[k]), b);
            }
        }
    }

    void KeepWithin(const Sample& sample, const Arc& b) {
        if (IsInRange(sample.t, b.from, b.to)) Keep(sample.s, sample.t);
    }

    /// The place between two samples where the side changes: regula falsi, which the Illinois rule keeps from
    /// creeping up from one side.
    Sample Crossing(Sample low, Sample high) const {
        double weightLow = low.side;
        double weightHigh = high.side;
        Sample best = std::fabs(low.side) < std::fabs(high.side) ? low : high;
        for (int step = 0; step < 60 && high.s - low.s > 1e-16; ++step) {
            const double part = weightLow / (weightLow - weightHigh);
            const Sample middle = SampleAt(low.s + (high.s - low.s) * part, Between(low.t, high.t, part));
            best = middle;
            if (middle.side == 0) return Sharpened(middle);
            if (middle.side * low.side > 0) {
                low = middle;
                weightLow = middle.side;
                weightHigh /= 2;
            } else {
                high = middle;
                weightHigh = middle.side;
                weightLow /= 2;
            }
        }
        return best;
    }

    /// The last bits, where the curves' directions differ enough to tell.
    Sample Sharpened(const Sample& sample) const {
        double s = sample.s;
        double t = sample.t;
        if (!Refine(s, t) || std::fabs(s - sample.s) > 1e-3) return sample;
        return {s, t, 0};
    }

    static double Between(double low, double high, double part) { return low + (high - low) * part; }

    const Cubic& m_a;
    const Cubic& m_b;
    std::vector<CurveHit>& m_hits;
};

/// The parameter on the curve of the point of its arc that is nearest to `p`.
double NearestOnArc(const Cubic& curve, const Arc& arc, DPOINT p) {
    if (TurnOf(arc.curve) > SMALL_TURN) {
        return arc.from + (arc.to - arc.from) * NearestParameter(arc.curve, p);
    }
    const DPOINT chord = Minus(arc.curve.p3, arc.curve.p0);
    const double squared = SquaredLength(chord);
    const double along = squared > 0 ? Dot(Minus(p, arc.curve.p0), chord) / squared : 0;
    const double t = ProjectNear(curve, p, arc.from + (arc.to - arc.from) * std::clamp(along, 0.0, 1.0));
    return std::clamp(t, 0.0, 1.0);
}

struct End {
    double t;  // 0 or 1
    DPOINT point;
};

void AppendHitOfEnd(const End& end, const Cubic& other, const Arc& arc, bool isSwapped,
                    std::vector<CurveHit>& hits) {
    const DPOINT p = end.point;
    if (!Meet({p.x, p.x, p.y, p.y}, Grown(BoxOf(arc.curve), POINT_EPSILON))) return;
    double t = p == other.p0 && arc.from == 0 ? 0
               : p == other.p3 && arc.to == 1 ? 1
                                              : NearestOnArc(other, arc, p);
    const DPOINT q = PointAt(other, t);
    if (!(q == p)) return;
    if (t < 0.5 && q == other.p0 && arc.from == 0) t = 0;
    if (t > 0.5 && q == other.p3 && arc.to == 1) t = 1;
    hits.push_back(isSwapped ? CurveHit{t, end.t, p} : CurveHit{end.t, t, p});
}

}  // namespace

std::vector<Arc> ArcsOf(const Cubic& curve) {
    std::vector<Arc> arcs;
    struct Open {
        Arc arc;
        int halvings;
    };
    std::vector<Open> open{{{curve, 0, 1}, 0}};
    while (!open.empty()) {
        const Open piece = open.back();
        open.pop_back();
        if (piece.halvings == MAX_ARC_HALVINGS || TurnOf(piece.arc.curve) <= SMALL_TURN) {
            arcs.push_back(piece.arc);
            continue;
        }
        open.push_back({HalfOf(piece.arc, true), piece.halvings + 1});
        open.push_back({HalfOf(piece.arc, false), piece.halvings + 1});
    }
    return arcs;
}

bool IsLine(const Cubic& c) {
    const DPOINT chord = Minus(c.p3, c.p0);
    const double length = Length(chord);
    if (!(length > 0)) return false;
    const auto isBeside = [&](DPOINT p) {
        const double along = Dot(Minus(p, c.p0), chord) / length;
        return along > -POINT_EPSILON && along < length + POINT_EPSILON &&
               std::fabs(Cross(chord, Minus(p, c.p0))) < POINT_EPSILON * length;
    };
    if (!isBeside(c.p1) || !isBeside(c.p2)) return false;
    // Handles that overlap can make the point turn back.
    return Dot(Minus(c.p2, c.p1), chord) > -POINT_EPSILON * length;
}

bool SameCourse(const Cubic& a, const Cubic& b) {
    const auto isNear = [](DPOINT p, DPOINT q) {
        return std::fabs(p.x - q.x) < SAME_COURSE && std::fabs(p.y - q.y) < SAME_COURSE;
    };
    if (!isNear(a.p0, b.p0) || !isNear(a.p3, b.p3)) return false;
    return (isNear(a.p1, b.p1) && isNear(a.p2, b.p2)) || (IsLine(a) && IsLine(b));
}

double NearestParameter(const Cubic& c, DPOINT p) {
    const double t = CBezier(c.p0, c.p1, c.p2, c.p3).GetNearestCurvePointT(p);
    return std::clamp(ProjectNear(c, p, t), 0.0, 1.0);
}

void AppendEndHits(const Cubic& a, const Arc& arcA, const Cubic& b, const Arc& arcB,
                   std::vector<CurveHit>& hits) {
    if (arcA.from == 0) AppendHitOfEnd({0, a.p0}, b, arcB, false, hits);
    if (arcA.to == 1) AppendHitOfEnd({1, a.p3}, b, arcB, false, hits);
    if (arcB.from == 0) AppendHitOfEnd({0, b.p0}, a, arcA, true, hits);
    if (arcB.to == 1) AppendHitOfEnd({1, b.p3}, a, arcA, true, hits);
}

void AppendArcHits(const Cubic& a, const Arc& arcA, const Cubic& b, const Arc& arcB,
                   std::vector<CurveHit>& hits) {
    ArcPair(a, b, hits).Run(arcA, arcB);
}

}  // namespace tarvex::shaping
