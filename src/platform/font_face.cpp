// Glyphs by FreeType: unhinted outlines at the font's size, widths, and kerning.
//
// A font is the face it was asked for and, behind it, the faces that help out with characters it lacks. All
// of them live in a FreeType library of their own, so fonts in different threads share nothing. FreeType
// checks what font files say; what it hands out is checked again where it indexes anything.
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_TRUETYPE_TABLES_H
#include FT_TRUETYPE_TAGS_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <unordered_map>

#include "platform/font.h"
#include "platform/font_kerning.h"
#include "platform/font_match.h"

namespace tarvex::platform {
namespace {

constexpr double kSubpixels = 64;
constexpr double kFixedOne = 65536;
constexpr double kDefaultEm = 16;
constexpr int kWideningPart = 24;  ///< of the em: what a bold font that is made gains in width
constexpr std::size_t kMostHelpers = 64;
constexpr std::uint32_t kSymbolPage = 0xF000;

struct Close {
    void operator()(FT_Library library) const { FT_Done_FreeType(library); }
    void operator()(FT_Face face) const { FT_Done_Face(face); }
};
using UniqueLibrary = std::unique_ptr<FT_LibraryRec_, Close>;
using UniqueFace = std::unique_ptr<FT_FaceRec_, Close>;

const TT_OS2* Os2Of(FT_Face face) {
    const auto* const table = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
    return table != nullptr && table->version != 0xFFFF ? table : nullptr;
}

/// Ascent and descent in font units: those of Windows where the font tells them.
struct CellUnits {
    double ascent = 0;
    double descent = 0;
};

CellUnits CellOf(FT_Face face) {
    const TT_OS2* const os2 = Os2Of(face);
    if (os2 != nullptr && os2->usWinAscent + os2->usWinDescent > 0)
        return {static_cast<double>(os2->usWinAscent), static_cast<double>(os2->usWinDescent)};
    return {static_cast<double>(face->ascender), -static_cast<double>(face->descender)};
}

/// Appends the contour of points `first` to `last`: on the curve, quadratic controls, or pairs of cubic ones.
void AppendContour(const FT_Outline& from, int first, int last, Outline& to) {
    const int n = last - first + 1;
    if (n < 2) return;  // a point that other glyphs are hung on
    const auto index = [&](int i) { return first + (i < n ? i : i - n); };
    const auto point = [&](int i) {
        const FT_Vector& v = from.points[index(i)];
        return OutlinePoint{static_cast<double>(v.x) / kSubpixels, static_cast<double>(v.y) / kSubpixels};
    };
    const auto tag = [&](int i) { return FT_CURVE_TAG(from.tags[index(i)]); };
    int start = 0;
    while (start < n && tag(start) != FT_CURVE_TAG_ON) ++start;
    OutlineContour contour;
    contour.reserve(static_cast<std::size_t>(n) + 1);
    if (start == n) {  // quadratic all around: begin midway between the first two controls
        const OutlinePoint a = point(0);
        const OutlinePoint b = point(1);
        contour.push_back({(a.x + b.x) / 2, (a.y + b.y) / 2, PointKind::OnCurve});
        start = 0;
    } else {
        contour.push_back(point(start));
    }
    const bool allControls = tag(start) != FT_CURVE_TAG_ON;
    for (int i = 1; i < n + (allControls ? 1 : 0); ++i) {
        OutlinePoint p = point(start + i);
        const bool hasPair = tag(start + i) == FT_CURVE_TAG_CUBIC && i + 1 < n &&
                             tag(start + i + 1) == FT_CURVE_TAG_CUBIC &&
                             contour.back().kind == PointKind::OnCurve;
        if (hasPair) {
            AppendCubic(contour, p, point(start + i + 1), point(start + i + 2));
            if (i + 2 == n) contour.pop_back();  // it came back to the first point, which is listed once
            i += 2;
            continue;
        }
        p.kind = tag(start + i) == FT_CURVE_TAG_ON ? PointKind::OnCurve : PointKind::Control;
        contour.push_back(p);
    }
    to.push_back(std::move(contour));
}

Outline OutlineOf(const FT_Outline& from) {
    Outline outline;
    outline.reserve(static_cast<std::size_t>(std::max<int>(from.n_contours, 0)));
    int first = 0;
    for (int i = 0; i < from.n_contours; ++i) {
        const int last = from.contours[i];
        if (last < first || last >= from.n_points) break;
        AppendContour(from, first, last, outline);
        first = last + 1;
    }
    return outline;
}

/// One face at the font's size.
class Face {
  public:
    Face(UniqueFace face, FontFile file) : m_face(std::move(face)), m_file(std::move(file)) {
        if (FT_Select_Charmap(m_face.get(), FT_ENCODING_UNICODE) == 0) return;
        m_isSymbol = FT_Select_Charmap(m_face.get(), FT_ENCODING_MS_SYMBOL) == 0;
        if (!m_isSymbol && m_face->num_charmaps > 0) FT_Set_Charmap(m_face.get(), m_face->charmaps[0]);
    }

    const FontFile& File() const { return m_file; }
    bool IsScalable() const { return FT_IS_SCALABLE(m_face.get()) && m_face->units_per_EM > 0; }

    /// The em for a logical height: that of the em itself when negative, of the cell when positive.
    double EmFor(double height) const {
        if (height == 0) return kDefaultEm;
        if (height < 0 || !IsScalable()) return std::fabs(height);
        const CellUnits cell = CellOf(m_face.get());
        const double units = cell.ascent + cell.descent;
        return units > 0 ? height * m_face->units_per_EM / units : height;
    }

    bool SetEm(double em) {
        m_em = em;
        if (!IsScalable()) return SelectBitmaps();
        return FT_Set_Char_Size(m_face.get(), 0, std::lround(em * kSubpixels), 72, 72) == 0;
    }

    /// Narrows or widens characters so that their average width becomes this.
    void SetAverageWidth(double width) {
        const double natural = AverageWidth();
        if (width > 0 && natural > 0) m_stretch = width / natural;
    }
    double Stretch() const { return m_stretch; }
    void SetStretch(double stretch) { m_stretch = stretch; }

    FT_UInt IndexOf(char32_t character) const {
        FT_UInt index = FT_Get_Char_Index(m_face.get(), character);
        if (index == 0 && m_isSymbol && character < 0x100)
            index = FT_Get_Char_Index(m_face.get(), kSymbolPage + character);
        return index;
    }

    GlyphShape Load(FT_UInt index) {
        GlyphShape shape = LoadShape(index);
        shape.box = BoxOf(shape.outline);
        return shape;
    }

    double Kerning(FT_UInt first, FT_UInt second) {
        if (!IsScalable()) return 0;
        if (!m_kerning) m_kerning = LoadKerning();
        const double unit = m_em / m_face->units_per_EM * m_stretch;
        if (m_kerning->HasPairs())
            return m_kerning->Adjustment(static_cast<std::uint16_t>(first),
                                         static_cast<std::uint16_t>(second)) *
                   unit;
        FT_Vector pair{};
        if (!FT_HAS_KERNING(m_face.get())) return 0;
        if (FT_Get_Kerning(m_face.get(), first, second, FT_KERNING_UNSCALED, &pair) != 0) return 0;
        return static_cast<double>(pair.x) * unit;
    }

    FontMetrics Metrics() const {
        FontMetrics metrics;
        metrics.em = m_em;
        metrics.weight = m_file.weight;
        metrics.isItalic = m_file.isItalic;
        metrics.isFixedPitch = FT_IS_FIXED_WIDTH(m_face.get());
        if (!IsScalable()) {
            const FT_Size_Metrics& size = m_face->size->metrics;
            metrics.ascent = static_cast<double>(size.ascender) / kSubpixels;
            metrics.descent = -static_cast<double>(size.descender) / kSubpixels;
            metrics.mostWidth = metrics.averageWidth = static_cast<double>(size.max_advance) / kSubpixels;
            return metrics;
        }
        const double unit = m_em / m_face->units_per_EM;
        const CellUnits cell = CellOf(m_face.get());
        metrics.ascent = cell.ascent * unit;
        metrics.descent = cell.descent * unit;
        metrics.externalLeading = std::max(0.0, m_face->height - cell.ascent - cell.descent) * unit;
        metrics.averageWidth = AverageWidth() * m_stretch;
        metrics.mostWidth = m_face->max_advance_width * unit * m_stretch;
        return metrics;
    }

  private:
    GlyphShape LoadShape(FT_UInt index) {
        GlyphShape shape;
        const FT_Int32 flags = IsScalable() ? FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP : FT_LOAD_DEFAULT;
        if (FT_Load_Glyph(m_face.get(), index, flags) != 0) return shape;
        const FT_GlyphSlot slot = m_face->glyph;
        if (slot->format != FT_GLYPH_FORMAT_OUTLINE) {
            shape.isBitmap = true;
            shape.advance = static_cast<double>(slot->advance.x) / kSubpixels * m_stretch;
            return shape;
        }
        double advance = static_cast<double>(slot->linearHoriAdvance) / kFixedOne;
        if (m_file.isToBeWidened && slot->outline.n_points > 0) {
            const FT_Pos width = std::lround(m_em * kSubpixels / kWideningPart);
            FT_Outline_Embolden(&slot->outline, width);
            advance += static_cast<double>(width) / kSubpixels;
        }
        shape.outline = OutlineOf(slot->outline);
        shape.advance = advance * m_stretch;
        if (m_stretch == 1 && m_file.slant == 0) return shape;
        for (OutlineContour& contour : shape.outline) {
            for (OutlinePoint& p : contour) p.x = (p.x + m_file.slant * p.y) * m_stretch;
        }
        return shape;
    }

    double AverageWidth() const {
        const TT_OS2* const os2 = Os2Of(m_face.get());
        if (os2 != nullptr && os2->xAvgCharWidth > 0 && IsScalable())
            return os2->xAvgCharWidth * m_em / m_face->units_per_EM;
        return m_em / 2;
    }

    bool SelectBitmaps() {
        int nearest = -1;
        double least = 0;
        for (int i = 0; i < m_face->num_fixed_sizes; ++i) {
            const double off =
                std::fabs(static_cast<double>(m_face->available_sizes[i].y_ppem) / kSubpixels - m_em);
            if (nearest >= 0 && off >= least) continue;
            nearest = i;
            least = off;
        }
        return nearest >= 0 && FT_Select_Size(m_face.get(), nearest) == 0;
    }

    KerningTable LoadKerning() const {
        constexpr FT_ULong most = 1 << 24;
        FT_ULong size = 0;
        if (FT_Load_Sfnt_Table(m_face.get(), TTAG_GPOS, 0, nullptr, &size) != 0 || size > most) return {};
        std::vector<std::byte> table(size);
        auto* const bytes = reinterpret_cast<FT_Byte*>(table.data());
        if (FT_Load_Sfnt_Table(m_face.get(), TTAG_GPOS, 0, bytes, &size) != 0) return {};
        return KerningTable(std::move(table));
    }

    UniqueFace m_face;
    FontFile m_file;
    bool m_isSymbol = false;
    double m_em = kDefaultEm;
    double m_stretch = 1;
    std::optional<KerningTable> m_kerning;
};

class FreeTypeFont : public FontSource {
  public:
    /// Call one of the Open functions before any other.
    FreeTypeFont() {
        FT_Library library = nullptr;
        if (FT_Init_FreeType(&library) == 0) m_library.reset(library);
    }

    bool OpenInstalled(std::unique_ptr<FontChoice> choice, const LOGFONTW& font) {
        if (choice == nullptr || !Open(choice->Nearest(), font)) return false;
        m_choice = std::move(choice);
        return true;
    }

    bool OpenBytes(std::span<const std::byte> file, const LOGFONTW& font) {
        if (m_library == nullptr) return false;
        m_bytes.assign(file.begin(), file.end());
        FT_Face face = nullptr;
        const auto* const bytes = reinterpret_cast<const FT_Byte*>(m_bytes.data());
        const auto size = static_cast<FT_Long>(m_bytes.size());
        if (FT_New_Memory_Face(m_library.get(), bytes, size, 0, &face) != 0) return false;
        return Start(UniqueFace(face), FontFile(), font);
    }

    const GlyphShape& Glyph(char32_t character) override {
        if (m_lastCharacter != character) {
            const Place place = PlaceOf(character);
            m_glyph = m_faces[place.face].Load(place.index);
            m_lastCharacter = character;
        }
        return m_glyph;
    }

    std::optional<unsigned> GlyphIndex(char32_t character) override {
        const Place place = PlaceOf(character);
        if (place.index == 0) return std::nullopt;
        return place.index;
    }

    double Kerning(char32_t first, char32_t second) override {
        const Place a = PlaceOf(first);
        const Place b = PlaceOf(second);
        return a.face == b.face ? m_faces[a.face].Kerning(a.index, b.index) : 0;
    }

    const FontMetrics& Metrics() const override { return m_metrics; }
    const std::wstring& Family() const override { return m_faces.front().File().family; }

    void Renew() override {
        while (m_faces.size() > 1) m_faces.pop_back();
        m_missing.clear();
        m_lastCharacter.reset();
    }

  private:
    struct Place {
        std::size_t face = 0;
        FT_UInt index = 0;
    };

    UniqueFace OpenFile(const FontFile& file) const {
        FT_Face face = nullptr;
        if (m_library == nullptr || FT_New_Face(m_library.get(), file.path.c_str(), file.index, &face) != 0)
            return nullptr;
        return UniqueFace(face);
    }

    bool Open(const FontFile& file, const LOGFONTW& font) {
        UniqueFace face = OpenFile(file);
        return face != nullptr && Start(std::move(face), file, font);
    }

    bool Start(UniqueFace opened, FontFile file, const LOGFONTW& font) {
        Face face(std::move(opened), std::move(file));
        const double em = face.EmFor(font.lfHeight);
        if (!(em >= kLeastEm && em <= kMostEm) || !face.SetEm(em)) return false;
        face.SetAverageWidth(std::fabs(static_cast<double>(font.lfWidth)));
        m_metrics = face.Metrics();
        m_faces.push_back(std::move(face));
        return true;
    }

    Place PlaceOf(char32_t character) {
        if (const FT_UInt index = m_faces.front().IndexOf(character); index != 0) return {0, index};
        const auto known = m_missing.find(character);
        if (known != m_missing.end()) return known->second;
        return m_missing[character] = FindElsewhere(character);
    }

    Place FindElsewhere(char32_t character) {
        for (std::size_t i = 1; i < m_faces.size(); ++i) {
            if (const FT_UInt index = m_faces[i].IndexOf(character); index != 0) return {i, index};
        }
        if (m_choice == nullptr || m_faces.size() > kMostHelpers) return {};
        const auto file = m_choice->NearestWith(character);
        if (!file) return {};
        UniqueFace opened = OpenFile(*file);
        if (opened == nullptr) return {};
        Face face(std::move(opened), *file);
        const FT_UInt index = face.IndexOf(character);
        if (index == 0 || !face.SetEm(m_metrics.em)) return {};
        face.SetStretch(m_faces.front().Stretch());
        m_faces.push_back(std::move(face));
        return {m_faces.size() - 1, index};
    }

    std::vector<std::byte> m_bytes;  // these three in this order: faces go before what they stand on
    UniqueLibrary m_library;
    std::vector<Face> m_faces;
    std::unique_ptr<FontChoice> m_choice;
    FontMetrics m_metrics;
    std::unordered_map<char32_t, Place> m_missing;
    std::optional<char32_t> m_lastCharacter;
    GlyphShape m_glyph;
};

}  // namespace

std::unique_ptr<FontSource> FindFont(const LOGFONTW& font) {
    auto source = std::make_unique<FreeTypeFont>();
    if (!source->OpenInstalled(ChooseFont(font), font)) return nullptr;
    return source;
}

std::unique_ptr<FontSource> OpenFont(std::span<const std::byte> file, const LOGFONTW& font) {
    auto source = std::make_unique<FreeTypeFont>();
    if (!source->OpenBytes(file, font)) return nullptr;
    return source;
}

}  // namespace tarvex::platform
