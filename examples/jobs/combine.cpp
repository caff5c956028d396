// Two shapes are combined: a disc is cut out of a square's corner, and its arc becomes the square's.
#include <cmath>
#include <cstdio>
#include <memory>
#include <numbers>

#include "tarvex/ellipse.h"
#include "tarvex/nodes.h"
#include "tarvex/shaping.h"

using Nodes = tarvex::CArray<tarvex::BPOINT, tarvex::BPOINT>;

int main() {
    //! [combine]
    tarvex::CPolyPolyBezier square;  // outlines of some 10,000 units combine best
    auto side = std::make_unique<Nodes>();
    for (const tarvex::DPOINT p : {tarvex::DPOINT{0, 0}, {8000, 0}, {8000, 8000}, {0, 8000}, {0, 0}})
        side->Add({p, p, p});  // a corner: both handles on the anchor
    square.Add(std::move(side));

    tarvex::CPolyPolyBezier disc;
    auto circle = std::make_unique<Nodes>();
    tarvex::CEllipse({8000, 8000}, 4000).GetBeziers(*circle);
    disc.Add(std::move(circle));

    // square := square - disc; SHAPING_UNION, SHAPING_INTERSECTION and SHAPING_XOR go the same way
    if (!tarvex::PolyPolyBezierShaping(tarvex::SHAPING_DIFFERENCE, square, disc)) return 1;

    const double area =
        std::fabs(tarvex::GetBezierArea({square[0].GetData(), std::size_t(square[0].GetSize())}));
    std::printf("%d contour of %d nodes, area %.0f\n", square.GetSize(), square[0].GetSize(), area);
    //! [combine]
    const double quarter = std::numbers::pi / 4 * 4000 * 4000;
    return square.GetSize() == 1 && std::fabs(area - (64e6 - quarter)) < 1e-3 * quarter ? 0 : 1;
}
