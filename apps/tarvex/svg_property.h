// What an SVG element declares of a property.
#pragma once

#include <optional>
#include <string_view>

#include <pugixml.hpp>

#include "tarvex/svg_text.h"

namespace tarvex::app {

/// What the style attribute declares, or else the attribute of that name, unless it is empty.
inline std::optional<std::string_view> Property(const pugi::xml_node& node, const char* name) {
    if (const auto value = StyleValue(node.attribute("style").value(), name)) return value;
    const pugi::xml_attribute attribute = node.attribute(name);
    if (attribute && *attribute.value() != 0) return attribute.value();
    return std::nullopt;
}

}  // namespace tarvex::app
