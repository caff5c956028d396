// An outline is moved inwards and outwards: seam allowances, borders, insets.
#include <cmath>
#include <cstdio>
#include <numbers>

#include "tarvex/ellipse.h"
#include "tarvex/nodes.h"
#include "tarvex/offset.h"
#include "tarvex/polygons.h"

int main() {
    //! [offset]
    tarvex::CArray<tarvex::BPOINT, tarvex::BPOINT> outline;
    tarvex::CEllipse({0, 0}, 100).GetBeziers(outline);
    if (!tarvex::IsClockwise(outline)) tarvex::SwapPoints(outline);  // now a positive distance goes inwards

    // Both come as lists of contours: a narrow shape can fall into several parts, or vanish.
    tarvex::OffsetOptions options;
    options.corner = tarvex::OffsetCorner::round;
    const tarvex::CPolyPolyBezier inset = tarvex::ShrinkBezier(outline, 10, options);
    const tarvex::CPolyPolyBezier border = tarvex::ShrinkBezier(outline, -10, options);
    const tarvex::CPolyPolyBezier nothing = tarvex::ShrinkBezier(outline, 101, options);
    std::printf("%d, %d and %d contours\n", inset.GetSize(), border.GetSize(), nothing.GetSize());
    //! [offset]
    if (inset.GetSize() != 1 || border.GetSize() != 1 || nothing.GetSize() != 0) return 1;
    const auto length = [](const tarvex::CPolyPolyBezier& shape) {
        return tarvex::GetBezierLength({shape[0].GetData(), static_cast<std::size_t>(shape[0].GetSize())});
    };
    return std::fabs(length(inset) - 180 * std::numbers::pi) < 0.2 &&
                   std::fabs(length(border) - 220 * std::numbers::pi) < 0.2
               ? 0
               : 1;
}
