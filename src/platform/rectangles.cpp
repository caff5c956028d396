// The rectangle helpers, with sides that stop at the ends of a coordinate's range.
#include <algorithm>
#include <cstdint>
#include <limits>

#include "tarvex/platform.h"

namespace tarvex {
namespace {

LONG SaturatingSum(LONG a, std::int64_t b) {
    return static_cast<LONG>(
        std::clamp<std::int64_t>(a + b, std::numeric_limits<LONG>::min(), std::numeric_limits<LONG>::max()));
}

/// Stores a rectangle that may be empty, and says whether it is not.
BOOL StoreUnlessEmpty(RECT* result, const RECT& rectangle) {
    const bool empty = IsRectEmpty(&rectangle) != FALSE;
    *result = empty ? RECT{} : rectangle;
    return empty ? FALSE : TRUE;
}

}  // namespace

BOOL SetRect(RECT* rectangle, int left, int top, int right, int bottom) {
    if (rectangle == nullptr) return FALSE;
    *rectangle = {left, top, right, bottom};
    return TRUE;
}

BOOL CopyRect(RECT* result, const RECT* rectangle) {
    if (result == nullptr || rectangle == nullptr) return FALSE;
    *result = *rectangle;
    return TRUE;
}

BOOL IsRectEmpty(const RECT* rectangle) {
    return rectangle == nullptr || rectangle->left >= rectangle->right || rectangle->top >= rectangle->bottom;
}

BOOL PtInRect(const RECT* rectangle, POINT point) {
    return rectangle != nullptr && point.x >= rectangle->left && point.x < rectangle->right &&
           point.y >= rectangle->top && point.y < rectangle->bottom;
}

BOOL InflateRect(RECT* rectangle, int dx, int dy) {
    if (rectangle == nullptr) return FALSE;
    rectangle->left = SaturatingSum(rectangle->left, -std::int64_t{dx});
    rectangle->top = SaturatingSum(rectangle->top, -std::int64_t{dy});
    rectangle->right = SaturatingSum(rectangle->right, dx);
    rectangle->bottom = SaturatingSum(rectangle->bottom, dy);
    return TRUE;
}

BOOL IntersectRect(RECT* result, const RECT* a, const RECT* b) {
    if (result == nullptr || a == nullptr || b == nullptr) return FALSE;
    return StoreUnlessEmpty(result, {std::max(a->left, b->left), std::max(a->top, b->top),
                                     std::min(a->right, b->right), std::min(a->bottom, b->bottom)});
}

BOOL UnionRect(RECT* result, const RECT* a, const RECT* b) {
    if (result == nullptr || a == nullptr || b == nullptr) return FALSE;
    if (IsRectEmpty(a) != FALSE) return StoreUnlessEmpty(result, *b);
    if (IsRectEmpty(b) != FALSE) return StoreUnlessEmpty(result, *a);
    return StoreUnlessEmpty(result, {std::min(a->left, b->left), std::min(a->top, b->top),
                                     std::max(a->right, b->right), std::max(a->bottom, b->bottom)});
}

}  // namespace tarvex
