// Bending outlines between the arcs of an envelope, smoothly.
//
// CPolyPolyBezier::ApplyEnvelop maps the nodes a shape has, so a long side stays straight however far
// its surroundings bend. Here each segment is halved until a cubic follows its image: through the
// images of both ends and of the points at one and two thirds, compared with it at three parameters in
// between, where it may be off by BEND_TOLERANCE of the frame's larger side. At most 64 pieces are made of
// one segment. Where a straight segment's image is straight within a twentieth of that, it stays a line.
//
// The envelope is given the drawing at a size of BEND_FRAME units, whatever its own: how finely an arc
// is divided depends on its radius in units, and this size brings out the finest division.
#pragma once

#include "tarvex/containers.h"
#include "tarvex/envelope.h"

namespace tarvex::app {

inline constexpr double BEND_TOLERANCE = 2e-4;
inline constexpr double BEND_FRAME = 2000;

class Bender {
  public:
    /// An envelope around the frame by one of CEnvelop's presets, 1 to 10. A side of the frame that is
    /// (nearly) without length is taken for a thousandth of the other one, or 1 if both are.
    Bender(const DRECT& frame, int type, double amount);

    DPOINT operator()(const DPOINT& p);

    /// Replaces a shape by its image and returns the number of its nodes.
    std::size_t Bend(CPolyPolyBezier& shape);

  private:
    CEnvelop m_envelope;
    DPOINT m_origin;
    double m_unit = 1;
    double m_tolerance = 0;
};

}  // namespace tarvex::app
