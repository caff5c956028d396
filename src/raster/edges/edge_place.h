// Where an edge runs between the middles of pixels.
#pragma once

#include <vector>

#include "tarvex/contours.h"
#include "tarvex/records.h"

namespace tarvex {

/// Moves points near an edge of a picture, which must stay, onto it.
class EdgePlacer {
  public:
    EdgePlacer(const GreyView& picture, double sigma);

    /// The place on the line through `p` along the gradient, within a pixel or so, where the picture is
    /// steepest; `p` itself, in columns and rows, where there is none.
    DPOINT Place(DPOINT p) const;

  private:
    /// Gradients around a pixel, and how steep it is there.
    struct Patch;

    Patch Around(int x, int y) const;

    GreyView m_picture;
    std::vector<double> m_weights;  // of a Gaussian, from one side to the other
};

}  // namespace tarvex
