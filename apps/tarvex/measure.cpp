#include "tarvex/measure.h"

#include <algorithm>

#include "tarvex/nodes.h"

namespace tarvex::app {

DRECT United(const DRECT& a, const DRECT& b) {
    return {std::min(a.left, b.left), std::max(a.right, b.right), std::min(a.top, b.top),
            std::max(a.bottom, b.bottom)};
}

void Unite(std::optional<DRECT>& frame, const std::optional<DRECT>& other) {
    if (frame && other) {
        frame = United(*frame, *other);
    } else if (other) {
        frame = other;
    }
}

std::optional<DRECT> FrameOf(ContourView nodes) {
    DRECT frame;
    if (!GetBezierFrame(nodes, frame)) return std::nullopt;
    return frame;
}

std::optional<DRECT> FrameOf(const CPolyPolyBezier& shape) {
    std::optional<DRECT> frame;
    for (int i = 0; i < shape.GetSize(); ++i) Unite(frame, FrameOf(ContourView(shape[i])));
    return frame;
}

}  // namespace tarvex::app
