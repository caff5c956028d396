#include "tarvex/transform_command.h"

#include <cmath>

#include "tarvex/drawing_change.h"
#include "tarvex/view.h"

namespace tarvex::app {

int RunTransform(const TransformOptions& options) {
    const auto apply = [&options](SvgDocument& drawing, const DRECT& frame) {
        const double x = (frame.left + frame.right) / 2;
        const double y = (frame.top + frame.bottom) / 2;
        // A view's newest transform acts first, and its translations are negated.
        CView3D view;
        view.Translate(-(x + options.move.x), -(y + options.move.y), 0);
        view.Rotate(options.angleX, options.angleY, options.angleZ);
        view.Scale(options.scaleX, options.scaleY, 1);
        view.Translate(x, y, 0);
        for (SvgElement& element : drawing.elements) element.outline.ApplyTransformation(view);
        const auto& m = std::as_const(view).mat();
        return std::sqrt(std::fabs(m[0][0] * m[1][1] - m[0][1] * m[1][0]));
    };
    return ChangeDrawing({options.input, options.output, options.precision, apply});
}

}  // namespace tarvex::app
