// What SVG elements are painted with: colours, opacities and the fill rule.
//
// What refers to a gradient is painted in the gradient's mean colour. Patterns are not followed: what refers
// to one is painted with the colour it gives for the case that the reference fails, or else in a middle grey,
// so that it is seen.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "tarvex/picture.h"

namespace tarvex::app {

/// A colour as CSS writes it: one of the 148 names, "transparent", #rgb, #rgba, #rrggbb, #rrggbbaa, rgb()
/// or rgba(). The functions take numbers or percentages, between commas, spaces or before a slash.
std::optional<Rgba> ParseColour(std::string_view text);

class GradientColours;

/// The properties in force at an element.
class SvgPaint {
  public:
    /// What to look up in an element, in this order: `fill` and `stroke` may mean the current colour.
    static constexpr std::array<const char*, 7> PROPERTIES = {
        "color", "fill", "stroke", "fill-opacity", "stroke-opacity", "opacity", "fill-rule"};

    /// Sets the property of that place in PROPERTIES, as declared by an element, over what it inherits. What
    /// CSS does not know leaves it as it is.
    void Set(std::size_t property, std::string_view value, const GradientColours& gradients);

    /// With the opacity in its alpha; none when nothing is painted. Opacities of groups are multiplied in, so
    /// parts of a translucent group show through one another.
    std::optional<Rgba> Fill() const { return Painted(m_fill, m_fillOpacity); }
    std::optional<Rgba> Stroke() const { return Painted(m_stroke, m_strokeOpacity); }
    bool IsEvenOdd() const { return m_isEvenOdd; }

  private:
    void SetColour(std::optional<Rgba>& colour, std::string_view value,
                   const GradientColours& gradients) const;
    std::optional<Rgba> Painted(const std::optional<Rgba>& colour, double opacity) const;

    Rgba m_current = {0, 0, 0, 255};
    std::optional<Rgba> m_fill = m_current;
    std::optional<Rgba> m_stroke;
    double m_fillOpacity = 1;
    double m_strokeOpacity = 1;
    double m_opacity = 1;
    bool m_isEvenOdd = false;
};

}  // namespace tarvex::app
