// Combining any two shapes by either path, NaN and infinities included: it ends, failure changes nothing of
// the first shape and the raster path nothing of the second, and what comes out are closed contours of finite
// coordinates.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "checks.h"
#include "input.h"
#include "tarvex/shaping.h"

namespace tarvex::fuzz {
namespace {

/// Coordinates of one of three kinds: few places, hundredths, or any bits.
double TakeCoordinate(Input& input, int kind) {
    switch (kind) {
        case 0:
            return input.TakeBetween(0, 5) * 100.0;
        case 1:
            return input.Take<std::int16_t>() / 100.0;
        default:
            return input.Take<double>();
    }
}

DPOINT TakePoint(Input& input, int kind) {
    const double x = TakeCoordinate(input, kind);
    return {x, TakeCoordinate(input, kind)};
}

CPolyPolyBezier TakeShape(Input& input, int kind) {
    CPolyPolyBezier shape;
    for (int contours = input.TakeBetween(0, 3); contours > 0; --contours) {
        auto nodes = std::make_unique<CArray<BPOINT, BPOINT>>();
        for (int count = input.TakeBetween(0, 6); count > 0; --count) {
            const DPOINT p = TakePoint(input, kind);
            const bool hasHandles = input.TakeBetween(0, 1) == 1;
            nodes->Add({hasHandles ? TakePoint(input, kind) : p, p, hasHandles ? TakePoint(input, kind) : p});
        }
        shape.Add(std::move(nodes));
    }
    return shape;
}

void RequireResult(const CPolyPolyBezier& shape) {
    Require(!shape.IsEmpty(), "success means contours");
    RequireClosedContours(shape, 3);
}

}  // namespace

void TryInput(Input input) {
    const int op = input.TakeBetween(-1, 4);
    const int kind = input.TakeBetween(0, 2);
    CPolyPolyBezier a = TakeShape(input, kind);
    CPolyPolyBezier b = TakeShape(input, kind);
    CPolyPolyBezier before;
    before.Copy(a);
    if (input.TakeBetween(0, 7) == 7) {  // not for inputs that end before
        CPolyPolyBezier otherBefore;
        otherBefore.Copy(b);
        const int modeA = input.TakeBetween(0, 2);
        if (PolyPolyBezierBmpShaping(op, a, b, modeA, input.TakeBetween(0, 2))) {
            RequireResult(a);
        } else {
            Require(Same(a, before), "failure leaves the first shape as it was");
        }
        Require(Same(b, otherBefore), "the raster path leaves the second shape as it was");
    } else if (PolyPolyBezierShaping(op, a, b)) {
        RequireResult(a);
    } else {
        Require(Same(a, before), "failure leaves the first shape as it was");
    }
}

}  // namespace tarvex::fuzz
