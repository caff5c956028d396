// Colours by name and by number. The names are those of CSS Color Module Level 4, section 6.1.
#include "tarvex/svg_paint.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tarvex/svg_gradient.h"
#include "tarvex/svg_text.h"

namespace tarvex::app {

namespace {

using NamedColour = std::pair<std::string_view, std::uint32_t>;

/// In the order of their names.
constexpr NamedColour NAMED_COLOURS[] = {
    {"aliceblue", 0xF0F8FF},
    {"antiquewhite", 0xFAEBD7},
    {"aqua", 0x00FFFF},
    {"aquamarine", 0x7FFFD4},
    {"azure", 0xF0FFFF},
    {"beige", 0xF5F5DC},
    {"bisque", 0xFFE4C4},
    {"black", 0x000000},
    {"blanchedalmond", 0xFFEBCD},
    {"blue", 0x0000FF},
    {"blueviolet", 0x8A2BE2},
    {"brown", 0xA52A2A},
    {"burlywood", 0xDEB887},
    {"cadetblue", 0x5F9EA0},
    {"chartreuse", 0x7FFF00},
    {"chocolate", 0xD2691E},
    {"coral", 0xFF7F50},
    {"cornflowerblue", 0x6495ED},
    {"cornsilk", 0xFFF8DC},
    {"crimson", 0xDC143C},
    {"cyan", 0x00FFFF},
    {"darkblue", 0x00008B},
    {"darkcyan", 0x008B8B},
    {"darkgoldenrod", 0xB8860B},
    {"darkgray", 0xA9A9A9},
    {"darkgreen", 0x006400},
    {"darkgrey", 0xA9A9A9},
    {"darkkhaki", 0xBDB76B},
    {"darkmagenta", 0x8B008B},
    {"darkolivegreen", 0x556B2F},
    {"darkorange", 0xFF8C00},
    {"darkorchid", 0x9932CC},
    {"darkred", 0x8B0000},
    {"darksalmon", 0xE9967A},
    {"darkseagreen", 0x8FBC8F},
    {"darkslateblue", 0x483D8B},
    {"darkslategray", 0x2F4F4F},
    {"darkslategrey", 0x2F4F4F},
    {"darkturquoise", 0x00CED1},
    {"darkviolet", 0x9400D3},
    {"deeppink", 0xFF1493},
    {"deepskyblue", 0x00BFFF},
    {"dimgray", 0x696969},
    {"dimgrey", 0x696969},
    {"dodgerblue", 0x1E90FF},
    {"firebrick", 0xB22222},
    {"floralwhite", 0xFFFAF0},
    {"forestgreen", 0x228B22},
    {"fuchsia", 0xFF00FF},
    {"gainsboro", 0xDCDCDC},
    {"ghostwhite", 0xF8F8FF},
    {"gold", 0xFFD700},
    {"goldenrod", 0xDAA520},
    {"gray", 0x808080},
    {"green", 0x008000},
    {"greenyellow", 0xADFF2F},
    {"grey", 0x808080},
    {"honeydew", 0xF0FFF0},
    {"hotpink", 0xFF69B4},
    {"indianred", 0xCD5C5C},
    {"indigo", 0x4B0082},
    {"ivory", 0xFFFFF0},
    {"khaki", 0xF0E68C},
    {"lavender", 0xE6E6FA},
    {"lavenderblush", 0xFFF0F5},
    {"lawngreen", 0x7CFC00},
    {"lemonchiffon", 0xFFFACD},
    {"lightblue", 0xADD8E6},
    {"lightcoral", 0xF08080},
    {"lightcyan", 0xE0FFFF},
    {"lightgoldenrodyellow", 0xFAFAD2},
    {"lightgray", 0xD3D3D3},
    {"lightgreen", 0x90EE90},
    {"lightgrey", 0xD3D3D3},
    {"lightpink", 0xFFB6C1},
    {"lightsalmon", 0xFFA07A},
    {"lightseagreen", 0x20B2AA},
    {"lightskyblue", 0x87CEFA},
    {"lightslategray", 0x778899},
    {"lightslategrey", 0x778899},
    {"lightsteelblue", 0xB0C4DE},
    {"lightyellow", 0xFFFFE0},
    {"lime", 0x00FF00},
    {"limegreen", 0x32CD32},
    {"linen", 0xFAF0E6},
    {"magenta", 0xFF00FF},
    {"maroon", 0x800000},
    {"mediumaquamarine", 0x66CDAA},
    {"mediumblue", 0x0000CD},
    {"mediumorchid", 0xBA55D3},
    {"mediumpurple", 0x9370DB},
    {"mediumseagreen", 0x3CB371},
    {"mediumslateblue", 0x7B68EE},
    {"mediumspringgreen", 0x00FA9A},
    {"mediumturquoise", 0x48D1CC},
    {"mediumvioletred", 0xC71585},
    {"midnightblue", 0x191970},
    {"mintcream", 0xF5FFFA},
    {"mistyrose", 0xFFE4E1},
    {"moccasin", 0xFFE4B5},
    {"navajowhite", 0xFFDEAD},
    {"navy", 0x000080},
    {"oldlace", 0xFDF5E6},
    {"olive", 0x808000},
    {"olivedrab", 0x6B8E23},
    {"orange", 0xFFA500},
    {"orangered", 0xFF4500},
    {"orchid", 0xDA70D6},
    {"palegoldenrod", 0xEEE8AA},
    {"palegreen", 0x98FB98},
    {"paleturquoise", 0xAFEEEE},
    {"palevioletred", 0xDB7093},
    {"papayawhip", 0xFFEFD5},
    {"peachpuff", 0xFFDAB9},
    {"peru", 0xCD853F},
    {"pink", 0xFFC0CB},
    {"plum", 0xDDA0DD},
    {"powderblue", 0xB0E0E6},
    {"purple", 0x800080},
    {"rebeccapurple", 0x663399},
    {"red", 0xFF0000},
    {"rosybrown", 0xBC8F8F},
    {"royalblue", 0x4169E1},
    {"saddlebrown", 0x8B4513},
    {"salmon", 0xFA8072},
    {"sandybrown", 0xF4A460},
    {"seagreen", 0x2E8B57},
    {"seashell", 0xFFF5EE},
    {"sienna", 0xA0522D},
    {"silver", 0xC0C0C0},
    {"skyblue", 0x87CEEB},
    {"slateblue", 0x6A5ACD},
    {"slategray", 0x708090},
    {"slategrey", 0x708090},
    {"snow", 0xFFFAFA},
    {"springgreen", 0x00FF7F},
    {"steelblue", 0x4682B4},
    {"tan", 0xD2B48C},
    {"teal", 0x008080},
    {"thistle", 0xD8BFD8},
    {"tomato", 0xFF6347},
    {"turquoise", 0x40E0D0},
    {"violet", 0xEE82EE},
    {"wheat", 0xF5DEB3},
    {"white", 0xFFFFFF},
    {"whitesmoke", 0xF5F5F5},
    {"yellow", 0xFFFF00},
    {"yellowgreen", 0x9ACD32},
};

constexpr Rgba REFERENCE_COLOUR = {128, 128, 128, 255};

Rgba FromNumber(std::uint32_t rgb) {
    return {static_cast<std::uint8_t>(rgb >> 16 & 0xFF), static_cast<std::uint8_t>(rgb >> 8 & 0xFF),
            static_cast<std::uint8_t>(rgb & 0xFF), 255};
}

std::uint8_t Level(double v) { return static_cast<std::uint8_t>(std::lround(std::clamp(v, 0.0, 255.0))); }

std::optional<Rgba> HexColour(std::string_view digits) {
    const bool isShort = digits.size() == 3 || digits.size() == 4;
    if (!isShort && digits.size() != 6 && digits.size() != 8) return std::nullopt;
    std::array<std::uint8_t, 4> channels = {0, 0, 0, 255};
    const std::size_t width = isShort ? 1 : 2;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        const auto c = static_cast<unsigned char>(digits[i]);
        if (std::isxdigit(c) == 0) return std::nullopt;
        const int value = std::isdigit(c) != 0 ? c - '0' : std::tolower(c) - 'a' + 10;
        std::uint8_t& channel = channels[i / width];
        channel = static_cast<std::uint8_t>(isShort ? 17 * value : (i % 2 == 0 ? 0 : channel * 16) + value);
    }
    return Rgba{channels[0], channels[1], channels[2], channels[3]};
}

/// What stands in the parentheses of rgb() or rgba().
std::optional<Rgba> RgbColour(std::string_view arguments) {
    std::vector<double> channels;
    SvgScanner scanner(arguments);
    scanner.SkipSpaces();
    while (!scanner.IsAtEnd()) {
        const bool isAlpha = channels.size() == 3;
        const auto number = scanner.Number();
        if (!number || !std::isfinite(*number) || channels.size() == 4) return std::nullopt;
        const bool isPercent = scanner.Peek() == '%';
        if (isPercent) scanner.Take();
        channels.push_back(isPercent ? *number * 255 / 100 : *number * (isAlpha ? 255 : 1));
        scanner.SkipSeparator();
        if (channels.size() != 3 || scanner.Peek() != '/') continue;
        scanner.Take();
        scanner.SkipSpaces();
    }
    if (channels.size() < 3) return std::nullopt;
    if (channels.size() == 3) channels.push_back(255);
    return Rgba{Level(channels[0]), Level(channels[1]), Level(channels[2]), Level(channels[3])};
}

std::optional<double> ParseOpacity(std::string_view text) {
    const auto number = ParseLength(text, 1);
    if (!number || std::isnan(*number)) return std::nullopt;
    return std::clamp(*number, 0.0, 1.0);
}

/// The id in a value that begins with url(#id), with or without quotes; empty for other references.
std::string_view ReferredId(std::string_view value) {
    std::string_view inside = value.substr(4, std::min(value.find(')'), value.size()) - 4);
    const auto isAround = [](char c) { return c == ' ' || c == '\t' || c == '\'' || c == '"'; };
    while (!inside.empty() && isAround(inside.front())) inside.remove_prefix(1);
    while (!inside.empty() && isAround(inside.back())) inside.remove_suffix(1);
    return inside.starts_with('#') ? inside.substr(1) : std::string_view();
}

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

}  // namespace

std::optional<Rgba> ParseColour(std::string_view text) {
    const std::string colour = Lower(text);
    const std::string_view view = colour;
    if (view.substr(0, 1) == "#") return HexColour(view.substr(1));
    if (view.substr(0, 3) == "rgb" && view.back() == ')') {
        const std::size_t open = view.find('(');
        if (open != 3 && !(open == 4 && view[3] == 'a')) return std::nullopt;
        return RgbColour(view.substr(open + 1, view.size() - open - 2));
    }
    if (view == "transparent") return Rgba{0, 0, 0, 0};
    const auto* found =
        std::lower_bound(std::begin(NAMED_COLOURS), std::end(NAMED_COLOURS), view,
                         [](const NamedColour& a, std::string_view b) { return a.first < b; });
    if (found == std::end(NAMED_COLOURS) || found->first != view) return std::nullopt;
    return FromNumber(found->second);
}

void SvgPaint::SetColour(std::optional<Rgba>& colour, std::string_view value,
                         const GradientColours& gradients) const {
    if (value.substr(0, 4) == "url(") {
        if (const auto gradient = gradients.Find(ReferredId(value))) {
            colour = gradient;
            return;
        }
        colour = REFERENCE_COLOUR;
        const std::size_t end = std::min(value.find(')'), value.size() - 1);
        value.remove_prefix(std::min(value.find_first_not_of(" \t\r\n", end + 1), value.size()));
    }
    if (value == "none") {
        colour.reset();
    } else if (Lower(value) == "currentcolor") {
        colour = m_current;
    } else if (const auto parsed = ParseColour(value)) {
        colour = parsed;
    }
}

void SvgPaint::Set(std::size_t property, std::string_view value, const GradientColours& gradients) {
    if (value == "inherit") return;
    switch (property) {
        case 0:
            if (const auto colour = ParseColour(value)) m_current = *colour;
            break;
        case 1:
            SetColour(m_fill, value, gradients);
            break;
        case 2:
            SetColour(m_stroke, value, gradients);
            break;
        case 3:
            m_fillOpacity = ParseOpacity(value).value_or(m_fillOpacity);
            break;
        case 4:
            m_strokeOpacity = ParseOpacity(value).value_or(m_strokeOpacity);
            break;
        case 5:
            m_opacity *= ParseOpacity(value).value_or(1);
            break;
        case 6:
            if (value == "evenodd" || value == "nonzero") m_isEvenOdd = value == "evenodd";
            break;
        default:
            break;
    }
}

std::optional<Rgba> SvgPaint::Painted(const std::optional<Rgba>& colour, double opacity) const {
    if (!colour) return std::nullopt;
    Rgba painted = *colour;
    painted.alpha = Level(painted.alpha * opacity * m_opacity);
    if (painted.alpha == 0) return std::nullopt;
    return painted;
}

}  // namespace tarvex::app
