// Where set text goes on the page: along straight lines, or along an ellipse.
#pragma once

#include <vector>

#include "tarvex/ellipse.h"
#include "tarvex/text_layout.h"

namespace tarvex::app {

enum class TextSide { Outside, Inside };

/// The baseline of the innermost line of text: outside the letters stand on it and run clockwise; inside
/// their feet are turned outwards and they run counter-clockwise, so that text at the bottom can be read.
struct EllipseBaseline {
    double radiusX = 0;
    double radiusY = 0;
    double angle = 0;  ///< where the text is anchored, in radians from the top, clockwise
    TextSide side = TextSide::Outside;
};

/// The outlines below one another, y downwards, in a box that begins at 0, 0 and is as wide as the widest
/// line.
std::vector<CPolyPolyBezier> PlaceOnLines(SetText text, TextAlign align);

/// The outlines along ellipses around 0, 0: each glyph is turned as one, so that the middle of its advance
/// stands upright on the curve. A line begins, is centred, or ends at the anchor, by `align`. Raises
/// ProgramError when a line is longer than its ellipse.
std::vector<CPolyPolyBezier> PlaceOnEllipse(SetText text, TextAlign align, const EllipseBaseline& baseline);

/// Lengths along an ellipse, clockwise as seen (y down), from the angle 0.
class EllipseLength {
  public:
    explicit EllipseLength(const CEllipse& ellipse);

    double Whole() const { return m_lengths.back(); }
    /// The length at an angle (eccentric parameter), within a turn.
    double At(double angle) const;
    /// The angle at a length, which may lie any number of turns away.
    double AngleAt(double length) const;

  private:
    std::vector<double> m_lengths;
};

}  // namespace tarvex::app
