// Bending and turning any shape by any numbers: nothing but coordinates changes, x stays under an envelope,
// and what an ordinary envelope bends it bends back.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "checks.h"
#include "coordinates.h"
#include "input.h"
#include "tarvex/envelope.h"
#include "tarvex/view.h"

namespace tarvex::fuzz {
namespace {

double TakeNumber(Input& input) { return TakeCoordinate(input, input.TakeBetween(0, COORDINATE_KINDS - 1)); }

/// A frame of ordinary size whose arcs stay well apart.
void BendThereAndBack(Input& input) {
    CEnvelop envelope;
    const double width = input.TakeBetween(1, 200), height = input.TakeBetween(20, 200);
    envelope.env() = {0, 0, width, height, 0, 0, 0, 0, 0, 0};
    for (double* offset : {&envelope.topLeft, &envelope.topMiddle, &envelope.topRight, &envelope.bottomLeft,
                           &envelope.bottomMiddle, &envelope.bottomRight})
        *offset = input.TakeBetween(-8, 8) / 16.0 * std::min(height, width) / 4;
    envelope.CalcEnvelop();
    for (int i = 0; i < 20; ++i) {
        const double x = input.TakeBetween(0, 100) / 100.0 * envelope.right;
        const double y = input.Take<std::int8_t>();
        const double bent = envelope.envelop(x, y);
        Require(std::isfinite(bent), "bent points are finite");
        Require(std::fabs(envelope.envelop_return(x, bent) - y) < 1e-6, "and go back where they were");
    }
}

void BendAnything(Input& input, const CPolyPolyBezier& given) {
    CEnvelop envelope;
    ENVELOP fields;
    for (double* field :
         {&fields.left, &fields.top, &fields.right, &fields.bottom, &fields.topLeft, &fields.topMiddle,
          &fields.topRight, &fields.bottomLeft, &fields.bottomMiddle, &fields.bottomRight})
        *field = TakeNumber(input);
    envelope.SetEnvelop(fields);
    envelope.SetType(input.TakeBetween(-1, 12), TakeNumber(input));
    for (CArray<DPOINT, DPOINT>* arc : {&envelope.arcTop(), &envelope.arcBot()})
        Require(arc->GetSize() <= 1000, "arcs have few points");
    CPolyPolyBezier shape;
    shape.Copy(given);
    shape.ApplyEnvelop(envelope);
    Require(shape.GetSize() == given.GetSize(), "contours stay");
    for (int i = 0; i < shape.GetSize(); ++i) {
        Require(shape[i].GetSize() == given[i].GetSize(), "nodes stay");
        for (int k = 0; k < shape[i].GetSize(); ++k) {
            const BPOINT &bent = shape[i][k], &node = given[i][k];
            Require(Same(bent.pt.x, node.pt.x) && Same(bent.cp1.x, node.cp1.x) &&
                        Same(bent.cp2.x, node.cp2.x) && bent.flags == node.flags,
                    "nothing but y changes");
        }
    }
    (void)envelope.envelop_return(TakeNumber(input), TakeNumber(input));
}

void TurnAnything(Input& input, const CPolyPolyBezier& given) {
    CView3D view;
    for (int steps = input.TakeBetween(0, 6); steps > 0; --steps) {
        const double a = TakeNumber(input), b = TakeNumber(input), c = TakeNumber(input);
        const int step = input.TakeBetween(0, 3);
        if (step == 0) view.Translate(a, b, c);
        if (step == 1) view.Scale(a, b, c);
        if (step == 2) view.Rotate(a, b, c);
        if (step == 3) view.Return(a, b, c);
        (void)view.point();
    }
    CPolyPolyBezier shape;
    shape.Copy(given);
    shape.ApplyTransformation(view);
    Require(shape.GetSize() == given.GetSize(), "contours stay");
    for (int i = 0; i < shape.GetSize(); ++i) Require(shape[i].GetSize() == given[i].GetSize(), "nodes stay");
}

}  // namespace

void TryInput(Input input) {
    const int what = input.TakeBetween(0, 2);
    if (what == 0) {
        BendThereAndBack(input);
        return;
    }
    CPolyPolyBezier shape;
    const int kind = input.TakeBetween(0, COORDINATE_KINDS);
    for (int count = input.TakeBetween(0, 3); count > 0; --count) {
        auto contour = std::make_unique<CArray<BPOINT, BPOINT>>();
        TakeContour(input, kind, 8, *contour);
        shape.Add(std::move(contour));
    }
    if (what == 1) {
        BendAnything(input, shape);
    } else {
        TurnAnything(input, shape);
    }
}

}  // namespace tarvex::fuzz
