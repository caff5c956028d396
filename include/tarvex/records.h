// The plain value records in which geometry is passed, and the containers of contours.
//
// Coordinates are 64-bit doubles in the caller's unit; for shapes that come from rasters x is the
// pixel column and y the pixel row, growing downwards. Angles are radians.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tarvex/framework.h"

namespace tarvex {

/// The library's one geometric tolerance, absolute and in the caller's unit: what is shorter, flatter or
/// nearer than this counts as nothing. Comparisons against it are strict unless a function says otherwise.
inline constexpr double GEOMETRY_EPSILON = 1e-8;

/// Points nearer to each other than this in both coordinates are one.
inline constexpr double POINT_EPSILON = GEOMETRY_EPSILON;

/// A point.
struct DPOINT {
    double x = 0;
    double y = 0;
};

/// Equal within POINT_EPSILON in each coordinate, so not transitive. A point with a NaN coordinate, or
/// an infinite one, equals nothing, itself included.
inline bool operator==(const DPOINT& a, const DPOINT& b) {
    return std::fabs(a.x - b.x) < POINT_EPSILON && std::fabs(a.y - b.y) < POINT_EPSILON;
}

/// A point in single precision.
struct FPOINT {
    float x = 0;
    float y = 0;
};

/// A node of a cubic Bezier contour.
///
/// The segment between nodes i and i+1 is the cubic (pt of i, cp2 of i, cp1 of i+1, pt of i+1). A
/// control point on its anchor means no handle on that side; a straight segment has none at either
/// end. A contour is closed when its last anchor equals its first.
struct BPOINT {
    DPOINT cp1;                     ///< incoming control point
    DPOINT pt;                      ///< anchor
    DPOINT cp2;                     ///< outgoing control point
    std::uint16_t flags = 0;        ///< the application's; the library sets 0 in new nodes and never reads it
    std::uint16_t padding[3] = {};  ///< without meaning; 0 in archives, where a node takes 56 bytes
};

inline void ClearUnarchived(BPOINT& node) {
    for (std::uint16_t& word : node.padding) word = 0;
}

struct DLINE {
    DPOINT p1;
    DPOINT p2;
};

struct FLINE {
    FPOINT p1;
    FPOINT p2;
};

/// A rectangle, in this order and not the usual one: smallest x, largest x, smallest y, largest y.
struct DRECT {
    double left = 0;
    double right = 0;
    double top = 0;
    double bottom = 0;
};

/// Three integers that the application gives meaning (corner indices into the points of a CTrigArray).
struct TRIG {
    std::int32_t a = 0;
    std::int32_t b = 0;
    std::int32_t c = 0;
};

/// A cubic segment: the output of curve fitting, and the unit of work of flattening. Its size is that
/// of its fields on the machine at hand, so an archive of them is read by the same kind of machine;
/// the target's address never enters one.
struct BEZIER {
    DPOINT p0;                                 ///< start
    DPOINT p1;                                 ///< first control point
    DPOINT p2;                                 ///< second control point
    DPOINT p3;                                 ///< end
    double flatness = 0;                       ///< legs up to this length count as flat
    CArray<DPOINT, DPOINT>* target = nullptr;  ///< receives the points; not owned
    std::int32_t startCount = 0;               ///< size of `target` when flattening began
};

inline void ClearUnarchived(BEZIER& segment) {
    const BEZIER kept = segment;
    std::memset(static_cast<void*>(&segment), 0, sizeof segment);  // padding at the end included
    segment.p0 = kept.p0;
    segment.p1 = kept.p1;
    segment.p2 = kept.p2;
    segment.p3 = kept.p3;
    segment.flatness = kept.flatness;
    segment.target = nullptr;
    segment.startCount = kept.startCount;
}

// These arrays, as those of the framework, exist once, in the library.
extern template class TARVEX_API CArray<DPOINT, DPOINT>;
extern template class TARVEX_API CArray<BPOINT, BPOINT>;
extern template class TARVEX_API CArray<DLINE, DLINE>;
extern template class TARVEX_API CArray<BEZIER, BEZIER>;
extern template class TARVEX_API CArray<TRIG, TRIG>;

static_assert(sizeof(DPOINT) == 16 && sizeof(FPOINT) == 8 && sizeof(DLINE) == 32 && sizeof(FLINE) == 16);
static_assert(sizeof(DRECT) == 32 && sizeof(TRIG) == 12);
static_assert(sizeof(BPOINT) == 56 && offsetof(BPOINT, pt) == 16 && offsetof(BPOINT, cp2) == 32 &&
              offsetof(BPOINT, flags) == 48);

}  // namespace tarvex
