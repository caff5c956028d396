// Setting text: characters to outlines in their places along straight lines.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tarvex/containers.h"
#include "tarvex/platform.h"

namespace tarvex::app {

enum class TextAlign { Left, Centre, Right };
enum class Kerning { Off, On };

struct TextStyle {
    std::string family = "sans-serif";
    bool isBold = false;
    bool isItalic = false;
    double size = 72;  ///< the em's height
    double letterSpacing = 0;
    double lineHeight = 1;  ///< distance of baselines, as a multiple of the font's own
    Kerning kerning = Kerning::On;
};

/// A character with an outline; the outline's own origin is where the pen was, on the baseline.
struct SetGlyph {
    CPolyPolyBezier outline;
    double pen = 0;      ///< from the line's beginning
    double advance = 0;  ///< without spacing and kerning
};

struct SetLine {
    std::vector<SetGlyph> glyphs;
    double width = 0;
};

struct SetText {
    std::vector<SetLine> lines;
    double ascent = 0;       ///< of the first line above its baseline
    double descent = 0;      ///< of the last line below its baseline, positive
    double lineAdvance = 0;  ///< from a baseline to the next
    std::string family;      ///< of the font that was found
};

/// The font of a style, ready to set text with it.
///
/// Outlines come on a grid of whole numbers, so the font is asked for at a height of TEXT_EM units and what
/// it gives is scaled down. Lengths are multiplied by the same factor.
class TextSetter {
  public:
    /// Raises ProgramError when there is no font at all.
    explicit TextSetter(const TextStyle& style);
    ~TextSetter();
    TextSetter(const TextSetter&) = delete;
    TextSetter& operator=(const TextSetter&) = delete;

    /// Raises ProgramError when characters are in no installed font, or only as bitmaps.
    SetText Set(const std::vector<std::wstring>& lines);

  private:
    struct Resources;

    /// The outline at the pen 0, 0.
    const CPolyPolyBezier& OutlineOf(wchar_t character);
    SetLine Line(const std::wstring& text);
    void RequireGlyphs(const std::vector<std::wstring>& lines) const;

    TextStyle m_style;
    LOGFONTW m_font{};
    double m_scale = 1;
    std::unique_ptr<Resources> m_resources;
    std::map<wchar_t, CPolyPolyBezier> m_outlines;
};

inline constexpr int TEXT_EM = 4096;

/// The lines of a text in UTF-8, which end at line feeds; a carriage return before one is dropped. Raises
/// std::invalid_argument for what is not UTF-8.
std::vector<std::wstring> TextLines(std::string_view text);

/// In the form "U+0041".
std::string CodePointName(wchar_t character);

/// A wide text in UTF-8.
std::string Narrow(const std::wstring& text);

}  // namespace tarvex::app
