// Coordinates, points and contours of many kinds from a fuzz input.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "input.h"
#include "tarvex/records.h"

namespace tarvex::fuzz {

/// The kinds of coordinates that TakeCoordinate knows: whole and small, of a hundredth, special, any bits.
inline constexpr int COORDINATE_KINDS = 4;

inline double TakeCoordinate(Input& input, int kind) {
    static constexpr double specials[] = {
        0.0,    -0.0,     1e-8,      1e-300, 1e154, -1e154, 1e300, -1.7976931348623157e308,
        5e-324, INFINITY, -INFINITY, NAN,    1,     2};
    switch (kind) {
        case 0:
            return input.Take<std::int8_t>();
        case 1:
            return input.Take<std::int16_t>() / 100.0;
        case 2:
            return specials[static_cast<std::size_t>(
                input.TakeBetween(0, static_cast<int>(std::size(specials)) - 1))];
        default:
            return input.Take<double>();
    }
}

/// A point of one kind, or for the kind beyond the last of any, so that fellows are of different ones.
inline DPOINT TakePoint(Input& input, int kind) {
    if (kind >= COORDINATE_KINDS) kind = input.TakeBetween(0, COORDINATE_KINDS - 1);
    const double x = TakeCoordinate(input, kind);
    return {x, TakeCoordinate(input, kind)};
}

/// A contour of up to `most` nodes, about half of the nodes with handles, perhaps closed.
inline void TakeContour(Input& input, int kind, int most, CArray<BPOINT, BPOINT>& nodes) {
    const bool isClosed = input.TakeBetween(0, 1) == 1;
    for (int count = input.TakeBetween(0, most); count > 0; --count) {
        const DPOINT p = TakePoint(input, kind);
        const bool hasHandles = input.TakeBetween(0, 1) == 1;
        nodes.Add({hasHandles ? TakePoint(input, kind) : p, p, hasHandles ? TakePoint(input, kind) : p});
    }
    if (!isClosed || nodes.IsEmpty()) return;
    const BPOINT& first = nodes[0];
    nodes.Add({input.TakeBetween(0, 1) == 1 ? TakePoint(input, kind) : first.pt, first.pt, first.pt});
}

}  // namespace tarvex::fuzz
