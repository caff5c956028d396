// Owners for the clipper's raw sets.
#pragma once

#include <span>
#include <utility>

#include "shaping/clip/boundary.h"
#include "tarvex/clipper.h"

namespace tarvex {

/// Frees a set when its scope is left, unless it was released before.
struct PolygonGuard {
    ClipPolygon polygon;

    PolygonGuard() = default;
    ~PolygonGuard() { FreeClipPolygon(polygon); }
    PolygonGuard(const PolygonGuard&) = delete;
    PolygonGuard& operator=(const PolygonGuard&) = delete;
    ClipPolygon Release() { return std::exchange(polygon, {}); }
};

/// A set with copies of the contours. Raises std::bad_alloc.
ClipPolygon MakePolygon(std::span<const clip::Contour> contours);

}  // namespace tarvex
