// Which way round a contour runs, and turning it.
#include <algorithm>
#include <utility>

#include "tarvex/polygons.h"

namespace tarvex {

namespace {

const DPOINT& Anchor(const DPOINT& p) { return p; }
const DPOINT& Anchor(const BPOINT& node) { return node.pt; }

void SwapHandles(DPOINT& /*point*/) {}
void SwapHandles(BPOINT& node) { std::swap(node.cp1, node.cp2); }

template <class Element>
bool RunsClockwise(const CArray<Element, Element>& contour) {
    const int n = contour.GetSize();
    double sum = 0;
    for (int i = 0; i < n; ++i) {
        const DPOINT& p = Anchor(contour[i]);
        const DPOINT& next = Anchor(contour[i + 1 < n ? i + 1 : 0]);
        sum += (next.x - p.x) * (next.y + p.y);
    }
    return sum <= 0;
}

template <class Element>
void Orient(CArray<Element, Element>& contour, bool clockwise) {
    if (contour.GetSize() < 2 || RunsClockwise(contour) == clockwise) return;
    std::reverse(contour.begin(), contour.end());
    for (Element& element : contour) SwapHandles(element);
}

}  // namespace

bool IsClockwise(const CArray<BPOINT, BPOINT>& contour) { return RunsClockwise(contour); }
bool IsClockwise(const CArray<DPOINT, DPOINT>& contour) { return RunsClockwise(contour); }

void SetOrientation(CArray<BPOINT, BPOINT>& contour, bool clockwise) { Orient(contour, clockwise); }
void SetOrientation(CArray<DPOINT, DPOINT>& contour, bool clockwise) { Orient(contour, clockwise); }

}  // namespace tarvex
