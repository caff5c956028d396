// The font operations, on whatever delivers the glyphs.
#include "platform/font.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/rounding.h"
#include "platform/font_shelf.h"
#include "platform/objects.h"

namespace tarvex {
namespace platform {
namespace {

constexpr UINT kLastCharacter = 0x10FFFF;
constexpr WORD kNoGlyph = 0xFFFF;

/// The font of a context, held and locked for as long as a question about it takes.
class FontInUse {
  public:
    explicit FontInUse(HDC dc) {
        {
            Registry& registry = Registry::Instance();
            const auto lock = registry.Lock();
            const auto context = registry.FindLocked<Context>(dc);
            if (context != nullptr) m_font = context->font.object;
        }
        if (m_font != nullptr) m_lock = std::unique_lock(m_font->mutex);
    }
    explicit operator bool() const { return m_font != nullptr; }
    FontSource* operator->() const { return m_font->source.get(); }
    const NativeGlyph& Native(UINT character) const;

  private:
    std::shared_ptr<Font> m_font;
    std::unique_lock<std::mutex> m_lock;
};

SHORT ToShort(double value) { return static_cast<SHORT>(std::clamp(RoundToInt(value), -32768, 32767)); }

bool IsIdentity(const MAT2& m) {
    const auto is = [](const FIXED& f, SHORT value) { return f.value == value && f.fract == 0; };
    return is(m.eM11, 1) && is(m.eM12, 0) && is(m.eM21, 0) && is(m.eM22, 1);
}

/// `end` is where the pen goes from the origin.
GLYPHMETRICS MetricsOf(const std::optional<OutlineBox>& box, const OutlinePoint& end) {
    GLYPHMETRICS metrics{};
    if (box) {
        metrics.gmptGlyphOrigin = {SaturatingInt(std::floor(box->left)), SaturatingInt(std::ceil(box->top))};
        metrics.gmBlackBoxX = static_cast<UINT>(SaturatingInt(std::ceil(box->right) - std::floor(box->left)));
        metrics.gmBlackBoxY = static_cast<UINT>(SaturatingInt(std::ceil(box->top) - std::floor(box->bottom)));
    }
    metrics.gmCellIncX = ToShort(end.x);
    metrics.gmCellIncY = ToShort(end.y);
    return metrics;
}

void Draw(const Outline& outline, const std::optional<OutlineBox>& box, const OutlinePoint& end,
          NativeGlyph& native) {
    auto bytes = NativeBytes(outline);
    if (!bytes) return;
    native.bytes = std::move(*bytes);
    native.metrics = MetricsOf(box, end);
    native.isDrawn = true;
}

const NativeGlyph& FontInUse::Native(UINT character) const {
    NativeGlyph& native = m_font->lastGlyph;
    if (native.character == character) return native;
    native.character.reset();
    native.isDrawn = false;
    const GlyphShape& glyph = m_font->source->Glyph(character);
    const OutlinePoint end{glyph.advance, 0};
    const int escapement = m_font->escapement;
    if (glyph.isBitmap) {
        // there is nothing to draw
    } else if (escapement % 3600 == 0) {
        Draw(glyph.outline, glyph.box, end, native);
    } else {
        const Outline turned = Turned(glyph.outline, escapement);
        Draw(turned, BoxOf(turned), Turned({OutlineContour{end}}, escapement)[0][0], native);
    }
    native.character = character;
    return native;
}

DWORD GlyphOutline(HDC dc, UINT character, UINT format, GLYPHMETRICS& metrics, std::span<std::byte> buffer) {
    const FontInUse font(dc);
    if (!font) return GDI_ERROR;
    const NativeGlyph& glyph = font.Native(character);
    if (!glyph.isDrawn) return GDI_ERROR;
    const bool isWanted = format == GGO_NATIVE && !buffer.empty();
    if (isWanted && buffer.size() < glyph.bytes.size()) return GDI_ERROR;
    metrics = glyph.metrics;
    if (isWanted) std::copy(glyph.bytes.begin(), glyph.bytes.end(), buffer.begin());
    return format == GGO_NATIVE ? static_cast<DWORD>(glyph.bytes.size()) : 0;
}

ABCFLOAT WidthsOf(const GlyphShape& glyph) {
    const auto& box = glyph.box;
    if (!box) return {0, static_cast<float>(glyph.advance), 0};
    return {static_cast<float>(box->left), static_cast<float>(box->right - box->left),
            static_cast<float>(glyph.advance - box->right)};
}

/// Calls `ask`, and takes a lack of memory, or an exception of the font reader, for `refusal`.
template <class Result, class Ask>
Result Guarded(Result refusal, Ask ask) {
    try {
        return ask();
    } catch (const std::exception&) {
        return refusal;
    }
}

}  // namespace

Font::~Font() {
    if (source == nullptr || shelf == nullptr) return;
    source->Renew();
    shelf->Put(words, std::move(source));
}

HFONT RegisterFont(std::unique_ptr<FontSource> source, const LOGFONTW& font) {
    if (source == nullptr) return nullptr;
    return static_cast<HFONT>(Register([&source, &font] {
        auto object = std::make_shared<Font>(std::move(source));
        object->escapement = font.lfEscapement;
        return object;
    }));
}

/// The installed font: from the shelf when it is there, and to the shelf when it is let go of.
HFONT RegisterInstalled(const LOGFONTW& font) {
    const std::shared_ptr<FontShelf>& shelf = FontShelf::Instance();
    auto source = shelf->Take(font);
    if (source == nullptr) source = FindFont(font);
    if (source == nullptr) return nullptr;
    return static_cast<HFONT>(Register([&] {
        auto object = std::make_shared<Font>(std::move(source));
        object->escapement = font.lfEscapement;
        object->words = font;
        object->shelf = shelf;
        return object;
    }));
}

}  // namespace platform

using platform::FontInUse;
using platform::Guarded;

HFONT CreateFontIndirectW(const LOGFONTW* font) {
    if (font == nullptr) return nullptr;
    return Guarded<HFONT>(nullptr, [font] { return platform::RegisterInstalled(*font); });
}

DWORD GetGlyphOutlineW(HDC dc, UINT character, UINT format, GLYPHMETRICS* metrics, DWORD size, void* buffer,
                       const MAT2* transform) {
    if (metrics == nullptr || transform == nullptr || !platform::IsIdentity(*transform)) return GDI_ERROR;
    if (format != GGO_NATIVE && format != GGO_METRICS) return GDI_ERROR;
    const std::size_t room = buffer == nullptr ? 0 : size;
    return Guarded(GDI_ERROR, [&] {
        return platform::GlyphOutline(dc, character, format, *metrics,
                                      {static_cast<std::byte*>(buffer), room});
    });
}

BOOL GetCharABCWidthsFloatW(HDC dc, UINT first, UINT last, ABCFLOAT* widths) {
    if (widths == nullptr || first > last || last > platform::kLastCharacter) return FALSE;
    return Guarded(FALSE, [=] {
        const FontInUse font(dc);
        if (!font) return FALSE;
        for (UINT c = first; c <= last; ++c) widths[c - first] = platform::WidthsOf(font->Glyph(c));
        return TRUE;
    });
}

BOOL GetTextMetricsW(HDC dc, TEXTMETRICW* metrics) {
    if (metrics == nullptr) return FALSE;
    const FontInUse font(dc);
    if (!font) return FALSE;
    const platform::FontMetrics& m = font->Metrics();
    *metrics = {};
    metrics->tmAscent = RoundToInt(m.ascent);
    metrics->tmDescent = RoundToInt(m.descent);
    metrics->tmHeight = metrics->tmAscent + metrics->tmDescent;
    metrics->tmInternalLeading = metrics->tmHeight - RoundToInt(m.em);
    metrics->tmExternalLeading = RoundToInt(m.externalLeading);
    metrics->tmAveCharWidth = RoundToInt(m.averageWidth);
    metrics->tmMaxCharWidth = RoundToInt(m.mostWidth);
    metrics->tmWeight = m.weight;
    metrics->tmDigitizedAspectX = metrics->tmDigitizedAspectY = GetDeviceCaps(dc, LOGPIXELSY);
    metrics->tmFirstChar = metrics->tmBreakChar = L' ';
    metrics->tmLastChar = 0xFFFD;
    metrics->tmItalic = m.isItalic ? 1 : 0;
    metrics->tmPitchAndFamily =
        static_cast<BYTE>(m.isFixedPitch ? 6 : 7);  // scalable; bit 0 clear when fixed
    return TRUE;
}

int GetTextFaceW(HDC dc, int size, WCHAR* name) {
    const FontInUse font(dc);
    if (!font || (name != nullptr && size <= 0)) return 0;
    const std::wstring& family = font->Family();
    const int needed = static_cast<int>(family.size()) + 1;
    if (name == nullptr) return needed;
    const int written = std::min(size, needed);
    std::copy_n(family.begin(), written - 1, name);
    name[written - 1] = 0;
    return written;
}

DWORD GetGlyphIndicesW(HDC dc, const WCHAR* text, int count, WORD* indices, DWORD flags) {
    if (text == nullptr || indices == nullptr || count < 0) return GDI_ERROR;
    return Guarded(GDI_ERROR, [=] {
        const FontInUse font(dc);
        if (!font) return GDI_ERROR;
        const WORD missing = (flags & GGI_MARK_NONEXISTING_GLYPHS) != 0 ? platform::kNoGlyph : WORD{0};
        for (int i = 0; i < count; ++i) {
            const auto index = font->GlyphIndex(static_cast<char32_t>(text[i]));
            indices[i] = index ? static_cast<WORD>(*index) : missing;
        }
        return static_cast<DWORD>(count);
    });
}

DWORD GetCharacterPlacementW(HDC dc, const WCHAR* text, int count, int, GCP_RESULTSW* results, DWORD flags) {
    if (text == nullptr || results == nullptr || results->lStructSize < sizeof *results || count < 0)
        return 0;
    return Guarded(DWORD{0}, [=] {
        const FontInUse font(dc);
        if (!font) return DWORD{0};
        const int placed =
            results->lpDx == nullptr ? count : std::min(count, SaturatingInt(results->nGlyphs));
        std::int64_t width = 0;
        for (int i = 0; i < placed; ++i) {
            const auto character = static_cast<char32_t>(text[i]);
            double advance = font->Glyph(character).advance;
            if ((flags & GCP_USEKERNING) != 0 && i + 1 < count)
                advance += font->Kerning(character, static_cast<char32_t>(text[i + 1]));
            const int rounded = RoundToInt(advance);
            width += rounded;
            if (results->lpDx != nullptr) results->lpDx[i] = rounded;
        }
        results->nGlyphs = static_cast<UINT>(placed);
        const auto height = static_cast<DWORD>(
            std::clamp(RoundToInt(font->Metrics().ascent) + RoundToInt(font->Metrics().descent), 0, 0xFFFF));
        return static_cast<DWORD>(width & 0xFFFF) | height << 16;
    });
}

}  // namespace tarvex
