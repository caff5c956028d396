// Gradients of an SVG drawing as the colours they have in the mean, for those who paint with one colour.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include <pugixml.hpp>

#include "tarvex/picture.h"

namespace tarvex::app {

class GradientColours {
  public:
    GradientColours() = default;
    /// Those of all linear and radial gradients under `root`, in O(n log n) for its n elements.
    explicit GradientColours(const pugi::xml_node& root);

    /// The mean of the gradient of that id, with its opacity; of stops alone: along the whole of a linear
    /// one, over the disc of a radial one, wherever a shape may lie on it. Stops may be another gradient's
    /// that it names. Transparent without stops, as nothing is painted then; none when there is no such
    /// gradient.
    std::optional<Rgba> Find(std::string_view id) const;

  private:
    std::map<std::string, Rgba, std::less<>> m_colours;
};

}  // namespace tarvex::app
