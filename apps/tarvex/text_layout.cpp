// Characters become outlines one by one, by the library's own GetTTOutlinePoints; their places come from the
// font's advances and kerning. There is no shaping: no ligatures, no right-to-left scripts, and a combining
// mark stands where its font puts it.
#include "tarvex/text_layout.h"

#include <algorithm>
#include <cmath>
#include <cwctype>
#include <set>

#include "tarvex/glyphs.h"
#include "tarvex/program_error.h"
#include "tarvex/view.h"

namespace tarvex::app {

namespace {

/// For characters so wide that their outlines leave the range of the grid at TEXT_EM.
constexpr int SMALL_EM = 512;

constexpr std::size_t MOST_NAMED = 8;  ///< characters that a message lists

bool IsBlank(wchar_t c) {
    // No-break spaces are no spaces to the classes of the C library, and draw nothing either.
    return std::iswspace(static_cast<std::wint_t>(c)) != 0 || c == 0xA0 || (c >= 0x2000 && c <= 0x200F) ||
           c == 0x202F || c == 0x205F || c == 0x2060 || c == 0x3000 || c == 0xFEFF;
}

/// A tabulator or another control character counts as a space.
std::wstring Printable(const std::wstring& text) {
    std::wstring printable = text;
    std::replace_if(
        printable.begin(), printable.end(), [](wchar_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); },
        L' ');
    return printable;
}

LOGFONTW LogicalFont(const TextStyle& style) {
    LOGFONTW font{};
    font.lfHeight = -TEXT_EM;
    font.lfWeight = style.isBold ? FW_BOLD : FW_NORMAL;
    font.lfItalic = style.isItalic ? 1 : 0;
    const std::wstring family = TextLines(style.family).front();
    if (family.size() >= LF_FACESIZE) {
        throw ProgramError(ExitStatus::Usage, "--font",
                           "a font's name has at most " + std::to_string(LF_FACESIZE - 1) + " characters");
    }
    std::copy(family.begin(), family.end(), font.lfFaceName);
    return font;
}

void Transform(CPolyPolyBezier& shape, double scale) {
    CView3D view;
    view.Scale(scale, scale, 1);
    shape.ApplyTransformation(view);
}

std::string Listed(const std::set<wchar_t>& characters) {
    std::string list;
    std::size_t count = 0;
    for (const wchar_t c : characters) {
        if (count++ == MOST_NAMED)
            return list + " and " + std::to_string(characters.size() - MOST_NAMED) + " more";
        if (!list.empty()) list += ", ";
        list += CodePointName(c);
        if (std::iswprint(static_cast<std::wint_t>(c)) != 0) list += " " + Narrow(std::wstring(1, c));
    }
    return list;
}

}  // namespace

struct TextSetter::Resources {
    HFONT font = nullptr;
    HDC dc = nullptr;
    HGDIOBJ former = nullptr;

    explicit Resources(const LOGFONTW& wanted) : font(CreateFontIndirectW(&wanted)) {
        if (font == nullptr) return;
        dc = CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
        former = SelectObject(dc, font);
    }
    Resources(const Resources&) = delete;
    Resources& operator=(const Resources&) = delete;
    ~Resources() {
        if (former != nullptr) SelectObject(dc, former);
        if (font != nullptr) DeleteObject(font);
        if (dc != nullptr) DeleteDC(dc);
    }
};

TextSetter::TextSetter(const TextStyle& style)
    : m_style(style),
      m_font(LogicalFont(style)),
      m_scale(style.size / TEXT_EM),
      m_resources(std::make_unique<Resources>(m_font)) {
    if (m_resources->former != nullptr) return;
    throw ProgramError(ExitStatus::NoResult, "--font",
                       "there is no font: none is installed, or this program was built without FreeType and "
                       "Fontconfig");
}

TextSetter::~TextSetter() = default;

SetText TextSetter::Set(const std::vector<std::wstring>& lines) {
    std::vector<std::wstring> printable;
    for (const std::wstring& line : lines) printable.push_back(Printable(line));
    RequireGlyphs(printable);
    TEXTMETRICW metrics{};
    GetTextMetricsW(m_resources->dc, &metrics);
    SetText text;
    text.ascent = metrics.tmAscent * m_scale;
    text.descent = metrics.tmDescent * m_scale;
    text.lineAdvance = (metrics.tmHeight + metrics.tmExternalLeading) * m_scale * m_style.lineHeight;
    std::wstring family(LF_FACESIZE, L'\0');
    const int length = GetTextFaceW(m_resources->dc, LF_FACESIZE, family.data());
    family.resize(static_cast<std::size_t>(std::max(length - 1, 0)));
    text.family = Narrow(family);
    for (const std::wstring& line : printable) text.lines.push_back(Line(line));
    return text;
}

void TextSetter::RequireGlyphs(const std::vector<std::wstring>& lines) const {
    constexpr WORD missing = 0xFFFF;
    std::set<wchar_t> all;
    for (const std::wstring& line : lines) all.insert(line.begin(), line.end());
    const std::wstring text(all.begin(), all.end());
    std::vector<WORD> indices(text.size());
    GetGlyphIndicesW(m_resources->dc, text.data(), static_cast<int>(text.size()), indices.data(),
                     GGI_MARK_NONEXISTING_GLYPHS);
    std::set<wchar_t> none;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (indices[i] == missing && !IsBlank(text[i])) none.insert(text[i]);
    }
    if (none.empty()) return;
    throw ProgramError(ExitStatus::NoResult, "the text", "no installed font has " + Listed(none));
}

const CPolyPolyBezier& TextSetter::OutlineOf(wchar_t character) {
    const auto [place, isNew] = m_outlines.try_emplace(character);
    CPolyPolyBezier& outline = place->second;
    if (!isNew || IsBlank(character)) return outline;
    for (const int em : {TEXT_EM, SMALL_EM}) {
        LOGFONTW font = m_font;
        font.lfHeight = -em;
        DPOINT pen;
        if (GetTTOutlinePoints(font, static_cast<unsigned>(character), outline, pen, 1) == 0) continue;
        Transform(outline, m_style.size / em);
        return outline;
    }
    GLYPHMETRICS metrics{};
    const MAT2 identity = {{0, 1}, {0, 0}, {0, 0}, {0, 1}};
    const auto size = GetGlyphOutlineW(m_resources->dc, static_cast<UINT>(character), GGO_NATIVE, &metrics, 0,
                                       nullptr, &identity);
    if (size != GDI_ERROR) return outline;  // a glyph that draws nothing
    throw ProgramError(ExitStatus::NoResult, "the text",
                       "the font that has " + Listed({character}) + " has only bitmaps");
}

SetLine TextSetter::Line(const std::wstring& text) {
    const int count = static_cast<int>(text.size());
    std::vector<int> advances(text.size());
    const auto place = [&](DWORD flags) {
        GCP_RESULTSW results{};
        results.lStructSize = sizeof results;
        results.lpDx = advances.data();
        results.nGlyphs = static_cast<UINT>(count);
        GetCharacterPlacementW(m_resources->dc, text.data(), count, 0, &results, flags);
    };
    place(0);
    const std::vector<int> plain = advances;
    if (m_style.kerning == Kerning::On) place(GCP_USEKERNING);
    SetLine line;
    double pen = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const CPolyPolyBezier& outline = OutlineOf(text[i]);
        if (!outline.IsEmpty()) {
            SetGlyph glyph;
            glyph.outline.Copy(outline);
            glyph.pen = pen;
            glyph.advance = plain[i] * m_scale;
            line.glyphs.push_back(std::move(glyph));
        }
        pen += advances[i] * m_scale + (i + 1 < text.size() ? m_style.letterSpacing : 0);
    }
    line.width = pen;
    return line;
}

}  // namespace tarvex::app
