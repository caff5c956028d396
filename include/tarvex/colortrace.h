// From a picture of few colours to painted regions whose borders fit together.
//
// Tracing every colour by itself, as is usual, fits the border between two regions twice, once from either
// side; the two curves differ, and gaps and overlaps show between the regions. Here a border is found once
// and fitted once, and both regions use that very curve.
//
// Model: pixel (x, y) covers the square from (x, y) to (x + 1, y + 1); x to the right, y down. Regions are
// what hangs together of pixels with the same label, side by side, or corner to corner where the two pixels
// across have different labels, or one label that is the more frequent in the 4 x 4 pixels around.
// Borders meet at junctions, where more than two regions touch, and are closed along the picture's edges.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "tarvex/containers.h"
#include "tarvex/export.h"
#include "tarvex/platform.h"

namespace tarvex {

/// The label of pixels that belong to no region: transparent ones.
inline constexpr std::uint16_t NO_LABEL = 0xFFFF;

/// A picture of labels that stays the caller's; rows from the top down, `stride` labels apart.
struct LabelView {
    const std::uint16_t* labels = nullptr;
    int width = 0;
    int height = 0;
    std::ptrdiff_t stride = 0;

    const std::uint16_t* Row(int y) const { return labels + y * stride; }
};

enum class RegionStyle {
    /// Regions run on beneath the ones painted after them, so that smoothed edges blend the two colours and
    /// nothing else. Contours are to be filled by the nonzero rule. Whatever the renderer, no pixel with
    /// regions all around it shows the background: some layer covers it as a whole, if need be the first one,
    /// to which polygons along the pixels are then added.
    stacked,
    /// Regions end at their borders: they neither overlap nor leave gaps, to the last bit of their
    /// coordinates. Either fill rule will do.
    cutout,
};

struct RegionOptions {
    RegionStyle style = RegionStyle::stacked;
    /// Regions with a border of this many sides of pixels or fewer are given to the neighbour with the
    /// longest common border; a lone pixel has 4, a pair 6. Those without a neighbour are left out.
    int minPoints = 6;
    /// The farthest a border may run from the pixels' sides, in pixels; 0 chooses it. Where all borders of a
    /// region would run into one line, the longest keeps to its points, so that the region keeps an area.
    double tolerance = 0;
    /// The picture that the labels come from (as many pixels, rows from the top down without gaps, reserved
    /// bytes not read) and the colours of the labels, by which borders are placed to a fraction of a pixel:
    /// where an edge is smoothed, a pixel's colour tells how much of it is on either side. Both or neither.
    std::span<const RGBQUAD> source;
    std::span<const RGBQUAD> colors;
    /// How opaque the picture's pixels are, as many as of `source`, 0 to 255, by which borders to pixels
    /// without a label are placed in the same way. May be empty.
    std::span<const std::uint8_t> opacity;
    /// Called now and then with the part done, 0 to 1; tracing stops when it returns false.
    std::function<bool(double)> progress;
};

/// Regions of one label that are painted together.
struct PaintedRegions {
    std::uint16_t label = 0;
    /// Closed contours as of TraceOutlines: clockwise around regions, counter-clockwise around holes.
    CPolyPolyBezier outlines;
};

/// Labels for tracing a picture that CColorReduction has reduced.
///
/// The reduction's filter takes away lines of one or two pixels. Here they come back: where a pixel of the
/// source, freed from the blending along smoothed edges, is clearly nearer to another colour than to the one
/// that it was reduced to, it gets that one's label. When lines have colours that none of `colors` is near
/// to (they are never sampled), the most frequent ones of those are added to `colors`, up to `mostColors`.
///
/// `source` has a pixel and `reduced` a label for each of the `width` columns of each row, rows from the top
/// down; a label is an index of `colors` or NO_LABEL, which stays. `reduced` as it is when the sizes do not
/// fit or a label is neither. The cost is proportional to the number of pixels.
TARVEX_API std::vector<std::uint16_t> RestoreThinFeatures(int width, std::span<const RGBQUAD> source,
                                                          std::span<const std::uint16_t> reduced,
                                                          std::vector<RGBQUAD>& colors,
                                                          std::size_t mostColors);

/// Traces all regions. In the order of the result they can be painted one over the other: large ones come
/// before smaller ones that they touch or surround. With cut-outs there is one entry for each label.
///
/// Nothing for a picture without pixels or of more than 2^29 corners of pixels, for a source or colours that
/// do not fit the labels, and when `progress` asked to stop. The cost is proportional to the pixels and the
/// borders.
TARVEX_API std::vector<PaintedRegions> TraceRegions(const LabelView& picture, const RegionOptions& options);

}  // namespace tarvex
