// Native outlines, as the platform's font engine delivers them, into contours.
#pragma once

#include <cstddef>
#include <span>

#include "tarvex/containers.h"

namespace tarvex {

/// Appends a contour per polygon: whole numbers, y downwards, closed.
///
/// The bytes may be anything. A head that is not a polygon's, that says less than its own size, or that does
/// not fit ends the parsing; a polygon that says more than there is ends with the bytes, and a record ends
/// with its polygon, both with the last point that is there whole.
void AppendNativeOutline(std::span<const std::byte> bytes, CPolyPolyBezier& out);

}  // namespace tarvex
