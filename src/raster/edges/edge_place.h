// Where an edge runs between the middles of pixels.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include "tarvex/contours.h"
#include "tarvex/records.h"

namespace tarvex {

/// Moves points near an edge of a picture, which must stay, onto it. Keeps the picture smoothed in tiles,
/// those around points asked for: 8 bytes a pixel there.
class EdgePlacer {
  public:
    EdgePlacer(const GreyView& picture, double sigma);

    /// The place on the line through `p` along the gradient, within a pixel or so, where the picture is
    /// steepest; `p` itself where there is none. In columns and rows, of the picture.
    DPOINT Place(DPOINT p);

  private:
    /// Gradients around a pixel.
    struct Patch;

    static constexpr int kTile = 32;
    static constexpr int kBorder = 4;  // of a patch, and of what gradients need around it
    using TileRows = std::array<std::array<double, kTile>, kTile>;
    using Tile = std::unique_ptr<TileRows>;

    Patch Around(int x, int y);
    double LevelAt(int x, int y);
    Tile Smoothed(int left, int top) const;

    GreyView m_picture;
    std::vector<double> m_weights;  // of a Gaussian, from one side to the other
    std::size_t m_tilesInRow;
    std::vector<Tile> m_tiles;  // of the picture with its border; null until asked for
};

}  // namespace tarvex
