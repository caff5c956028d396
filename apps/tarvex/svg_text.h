// The small languages inside SVG's attributes: numbers, lengths, lists, transforms, style declarations.
//
// The grammars are those of SVG 1.1 (sections 4.2, 7.6 and 8.3.9) and are followed strictly: what does
// not match is no value, and never a guess. Numbers beyond the doubles' range come out as infinities,
// which the reader refuses with the coordinates they lead to.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarvex/affine.h"

namespace tarvex::app {

/// Reads along a text. What cannot be read leaves the position where it was.
class SvgScanner {
  public:
    explicit SvgScanner(std::string_view text) : m_text(text) {}

    bool IsAtEnd() const { return m_at == m_text.size(); }
    std::string_view Rest() const { return m_text.substr(m_at); }
    /// The character here, 0 at the end.
    char Peek() const { return IsAtEnd() ? '\0' : m_text[m_at]; }
    char Take() { return m_text[m_at++]; }

    void SkipSpaces();
    enum class Separator { None, Spaces, Comma };
    /// Skips spaces around at most one comma.
    Separator SkipSeparator();

    std::optional<double> Number();
    /// "0" or "1", which need no separator after them.
    std::optional<bool> Flag();
    /// Letters.
    std::string_view Word();

  private:
    std::string_view m_text;
    std::size_t m_at = 0;
};

/// Numbers with separators between them, and nothing else.
std::optional<std::vector<double>> ParseNumbers(std::string_view text);

/// A length in user units, 96 to the inch, 16 to the em and 8 to the ex; percentages are of `whole`.
std::optional<double> ParseLength(std::string_view text, double whole);

/// A list of transforms; the empty one is the identity.
std::optional<Affine> ParseTransform(std::string_view text);

/// The value of a declaration in a style attribute, without spaces around it; the last one counts.
std::optional<std::string_view> StyleValue(std::string_view style, std::string_view property);

/// The style with all of a property's declarations replaced by one.
std::string WithStyleValue(std::string_view style, std::string_view property, std::string_view value);

}  // namespace tarvex::app
