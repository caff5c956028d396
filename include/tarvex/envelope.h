// Envelope distortion: a design bent vertically between two arcs.
#pragma once

#include "tarvex/records.h"

namespace tarvex {

/// A frame, and how far the arcs that bend it pass from its top and bottom edges at the left, in the
/// middle and at the right. The unit is the design's.
struct ENVELOP {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
    double topLeft = 0;
    double topMiddle = 0;
    double topRight = 0;
    double bottomLeft = 0;
    double bottomMiddle = 0;
    double bottomRight = 0;
};

/// Bends a design between a top and a bottom arc, each the circular arc, or the straight line, through
/// three points over the frame's left edge, middle and right edge. A point keeps its x; its y is mapped
/// linearly from the frame's height onto the interval between the two arcs at that x. y may grow either
/// way, and `top` need not be the smaller.
///
/// The arcs are polylines (`CalcArc`: 36 to 360 steps of a full circle), so a curved edge is exact only at
/// their vertices. They are rebuilt when first needed after `SetEnvelop`, at once by `SetType`; after
/// writing through `env` the caller calls `CalcEnvelop`. One thread at a time may use an envelope whose
/// arcs are due.
///
/// Nothing here raises but for lack of memory. A frame of nearly no height, or arcs that nearly meet,
/// give huge values; no height at all, or arcs that meet exactly, infinities or NaN.
///
///     CEnvelop envelope;
///     envelope.env() = {0, 0, 100, 100};
///     envelope.SetType(3, 10);     // waist: the middle of both edges moves inwards by 10
///     envelope.envelop(50, 0);     // about 10
class TARVEX_API CEnvelop : public ENVELOP {
  public:
    /// All fields 0, arcs due.
    CEnvelop() = default;
    virtual ~CEnvelop();

    void GetEnvelop(ENVELOP& fields) const { fields = *this; }
    void SetEnvelop(const ENVELOP& fields);
    /// The fields, for writing without the arcs becoming due.
    ENVELOP& env() { return *this; }
    const ENVELOP& env() const { return *this; }
    /// The arcs, from left to right; as last built.
    CArray<DPOINT, DPOINT>& arcTop() { return m_arcTop; }
    CArray<DPOINT, DPOINT>& arcBot() { return m_arcBot; }

    /// Sets offsets by a preset, on top of those that are there: an offset that the preset does not name
    /// keeps its value. Then builds the arcs.
    ///
    ///  type | sets
    ///  -----|-----
    ///   1   | topMiddle = d
    ///   2   | bottomMiddle = -d
    ///   3   | topMiddle = d, bottomMiddle = -d
    ///   4   | topMiddle = -d
    ///   5   | bottomMiddle = d
    ///   6   | topMiddle = -d, bottomMiddle = d
    ///   7   | topMiddle = d, bottomMiddle = d
    ///   8   | topMiddle = -d, bottomMiddle = -d
    ///   9   | topLeft = d, topMiddle = d/2, bottomLeft = -d, bottomMiddle = -d/2
    ///  10   | topRight = d, topMiddle = d/2, bottomRight = -d, bottomMiddle = -d/2
    ///
    /// Any other type changes nothing, and arcs that are not due are not built anew.
    void SetType(int type, double d);

    /// Builds both arcs from the fields.
    void CalcEnvelop();

    /// The distorted y of (x, y): the frame's middle goes to the middle between the arcs, its height to
    /// their distance. Left and right of the frame the arcs' ends go on level. Linear in the number of
    /// vertices of the arcs.
    double envelop(double x, double y);
    /// The y that `envelop` maps to `y`. Left and right of the frame `y` itself: deliberately not what
    /// `envelop` does there, so that what lies outside is taken for never having been bent.
    double envelop_return(double x, double y);

    /// The y of `arc` at x: that of its first point left of the frame, of its last one right of it, and
    /// in between where the first of its segments passes x. `y` where none does and for an arc without
    /// points. An arc of a single point gives that point's x, not its y; callers that know this exist, and
    /// `CalcEnvelop` makes no such arc.
    double CalcArcPoint(const CArray<DPOINT, DPOINT>& arc, double x, double y) const;

  private:
    struct Bend;
    Bend BendAt(double x, double y) const;

    bool m_dirty = true;
    CArray<DPOINT, DPOINT> m_arcTop;
    CArray<DPOINT, DPOINT> m_arcBot;
};

}  // namespace tarvex
