// The pixels of a line.
#include <cstdint>
#include <cstdlib>

#include "tarvex/polygons.h"

namespace tarvex {

namespace {

struct Walk {
    std::int64_t x, y;
    std::int64_t stepX, stepY;
};

/// Walks `along + 1` pixels, one step each in the longer direction; `advance` takes a step, diagonal or not.
template <class Advance>
void Fill(CArray<tagPOINT, tagPOINT>& out, Walk at, std::int64_t along, std::int64_t across,
          Advance advance) {
    std::int64_t error = 2 * across - along;
    for (tagPOINT& p : out) {
        p = {static_cast<LONG>(at.x), static_cast<LONG>(at.y)};
        const bool diagonal = error >= 1;
        error += 2 * (diagonal ? across - along : across);
        advance(at, diagonal);
    }
}

}  // namespace

void GetBresenhamPoints(tagPOINT from, tagPOINT to, CArray<tagPOINT, tagPOINT>& out) {
    const std::int64_t dx = std::abs(std::int64_t{to.x} - from.x);
    const std::int64_t dy = std::abs(std::int64_t{to.y} - from.y);
    const bool steep = dx < dy;
    const std::int64_t count = (steep ? dy : dx) + 1;
    out.RemoveAll();
    if (count > INT32_MAX) AfxThrowMemoryException();
    out.SetSize(static_cast<int>(count));

    const Walk start{from.x, from.y, from.x > to.x ? -1 : 1, from.y > to.y ? -1 : 1};
    if (steep) {
        Fill(out, start, dy, dx, [](Walk& at, bool diagonal) {
            at.y += at.stepY;
            if (diagonal) at.x += at.stepX;
        });
    } else {
        Fill(out, start, dx, dy, [](Walk& at, bool diagonal) {
            at.x += at.stepX;
            if (diagonal) at.y += at.stepY;
        });
    }
}

}  // namespace tarvex
