// A font as a device context holds it: where its glyphs come from, behind an interface that a build without
// font libraries can do without.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/font_outline.h"
#include "platform/registry.h"

namespace tarvex::platform {

/// Lengths in pixels.
struct FontMetrics {
    double em = 0;
    double ascent = 0;
    double descent = 0;  ///< below the baseline, positive
    double externalLeading = 0;
    double averageWidth = 0;
    double mostWidth = 0;
    int weight = 0;
    bool isItalic = false;
    bool isFixedPitch = false;
};

struct GlyphShape {
    Outline outline;
    std::optional<OutlineBox> box;  ///< around the outline
    double advance = 0;
    bool isBitmap = false;  ///< there is a picture of it, but no outline
};

/// The glyphs of a font at its size, and of those fonts that help it out. One thread at a time.
class FontSource {
  public:
    FontSource() = default;
    FontSource(const FontSource&) = delete;
    FontSource& operator=(const FontSource&) = delete;
    virtual ~FontSource() = default;

    /// The character's glyph, or the one for missing characters. It holds until the next call.
    virtual const GlyphShape& Glyph(char32_t character) = 0;
    /// The glyph's number; none when no font has it.
    virtual std::optional<unsigned> GlyphIndex(char32_t character) = 0;
    /// By how much the second of two characters in a row moves away from the first.
    virtual double Kerning(char32_t first, char32_t second) = 0;
    virtual const FontMetrics& Metrics() const = 0;
    virtual const std::wstring& Family() const = 0;
    /// Forgets what it was asked, because the fonts that help out for one character are asked first for the
    /// next: it answers as a new one again.
    virtual void Renew() = 0;
};

class FontShelf;

/// A character's outline as the font's context sees it.
struct NativeGlyph {
    std::optional<UINT> character;
    std::vector<std::byte> bytes;
    GLYPHMETRICS metrics{};
    bool isDrawn = false;  ///< it has an outline, and all of that fits
};

struct Font : Object {
    static constexpr Kind kKind = Kind::Font;
    explicit Font(std::unique_ptr<FontSource> from) : Object(kKind), source(std::move(from)) {}
    ~Font() override;

    std::unique_ptr<FontSource> source;  ///< null for the stand-in of no font
    int escapement = 0;
    std::mutex mutex;                  ///< for the source: two contexts of two threads may hold one font
    NativeGlyph lastGlyph;             ///< asked for twice as a rule: for its size, and for itself
    LOGFONTW words{};                  ///< what it was asked for by, when it has a shelf
    std::shared_ptr<FontShelf> shelf;  ///< where the source goes afterwards; null for the font of a file
};

/// An em beyond these is refused.
inline constexpr double kLeastEm = 1.0 / 64;
inline constexpr double kMostEm = 16384;

/// The installed font nearest to the one asked for. Null when there is none, or the size is refused.
std::unique_ptr<FontSource> FindFont(const LOGFONTW& font);
/// The font in a file's bytes, whatever its name; missing characters are not taken from others.
std::unique_ptr<FontSource> OpenFont(std::span<const std::byte> file, const LOGFONTW& font);

/// Makes a handle of a font that came from a file; null for null.
HFONT RegisterFont(std::unique_ptr<FontSource> source, const LOGFONTW& font);

}  // namespace tarvex::platform
