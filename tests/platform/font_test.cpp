// Fonts as they are asked for, and what is told about their characters.
#include "support/precompiled.h"

#include "platform/font.h"
#include "platform/handles.h"

namespace tarvex::test {
namespace {

constexpr MAT2 kIdentity = {{0, 1}, {0, 0}, {0, 0}, {0, 1}};

LOGFONTW Logical(const std::wstring& family, int height) {
    LOGFONTW font{};
    font.lfHeight = height;
    font.lfWeight = FW_NORMAL;
    std::copy(family.begin(), family.end(), font.lfFaceName);
    return font;
}

/// A context with a font in it.
class Setting {
  public:
    explicit Setting(const LOGFONTW& font) : Setting(CreateFontIndirectW(&font)) {}
    explicit Setting(HFONT font)
        : m_font(font), m_dc(CreateCompatibleDC(nullptr)), m_selected(m_dc.Get(), font) {
        EXPECT_NE(font, nullptr);
    }
    HDC Dc() const { return m_dc.Get(); }

    DWORD Size(unsigned c) const {
        GLYPHMETRICS metrics{};
        return GetGlyphOutlineW(Dc(), c, GGO_NATIVE, &metrics, 0, nullptr, &kIdentity);
    }
    std::vector<std::byte> Native(unsigned c) const {
        const DWORD size = Size(c);
        std::vector<std::byte> bytes(size == GDI_ERROR ? 0 : size);
        GLYPHMETRICS metrics{};
        if (bytes.empty()) return bytes;
        EXPECT_EQ(GetGlyphOutlineW(Dc(), c, GGO_NATIVE, &metrics, size, bytes.data(), &kIdentity), size);
        return bytes;
    }
    GLYPHMETRICS Metrics(unsigned c) const {
        GLYPHMETRICS metrics{};
        EXPECT_EQ(GetGlyphOutlineW(Dc(), c, GGO_METRICS, &metrics, 0, nullptr, &kIdentity), 0u);
        return metrics;
    }
    ABCFLOAT Widths(unsigned c) const {
        ABCFLOAT widths{};
        EXPECT_TRUE(GetCharABCWidthsFloatW(Dc(), c, c, &widths));
        return widths;
    }
    double Advance(unsigned c) const {
        const ABCFLOAT w = Widths(c);
        return double{w.abcfA} + double{w.abcfB} + double{w.abcfC};
    }
    TEXTMETRICW Text() const {
        TEXTMETRICW metrics{};
        EXPECT_TRUE(GetTextMetricsW(Dc(), &metrics));
        return metrics;
    }
    std::wstring Face() const {
        std::wstring name(100, L'\0');
        name.resize(static_cast<std::size_t>(std::max(0, GetTextFaceW(Dc(), 100, name.data()) - 1)));
        return name;
    }
    bool Has(wchar_t c) const {
        WORD index = 0;
        EXPECT_EQ(GetGlyphIndicesW(Dc(), &c, 1, &index, GGI_MARK_NONEXISTING_GLYPHS), 1u);
        return index != 0xFFFF;
    }
    std::vector<int> Advances(const std::wstring& text, DWORD flags) const {
        std::vector<int> dx(text.size());
        GCP_RESULTSW results{};
        results.lStructSize = sizeof results;
        results.lpDx = dx.data();
        results.nGlyphs = static_cast<UINT>(dx.size());
        EXPECT_NE(
            GetCharacterPlacementW(Dc(), text.data(), static_cast<int>(text.size()), 0, &results, flags), 0u);
        return dx;
    }

  private:
    UniqueFont m_font;
    UniqueDC m_dc;
    SelectedObject m_selected;
};

TEST(LogicalFont, HeightIsThatOfTheEmOrOfTheCell) {
    const TEXTMETRICW em = Setting(Logical(L"DejaVu Sans", -1000)).Text();
    EXPECT_EQ(em.tmHeight - em.tmInternalLeading, 1000);
    EXPECT_EQ(Setting(Logical(L"DejaVu Sans", 1000)).Text().tmHeight, 1000);
    const TEXTMETRICW usual = Setting(Logical(L"DejaVu Sans", 0)).Text();
    EXPECT_EQ(usual.tmHeight - usual.tmInternalLeading, 16);
    for (const int height :
         {-16385, 20000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        const LOGFONTW font = Logical(L"DejaVu Sans", height);
        EXPECT_EQ(CreateFontIndirectW(&font), nullptr) << height;
    }
}

TEST(LogicalFont, WidthStretchesAndEscapementTurns) {
    const Setting plain(Logical(L"DejaVu Sans", -1000));
    LOGFONTW font = Logical(L"DejaVu Sans", -1000);
    font.lfWidth = -2 * plain.Text().tmAveCharWidth;
    const Setting wide(font);
    EXPECT_NEAR(wide.Advance('H'), 2 * plain.Advance('H'), 2);
    EXPECT_EQ(wide.Metrics('H').gmBlackBoxY, plain.Metrics('H').gmBlackBoxY);
    EXPECT_NEAR(wide.Metrics('H').gmBlackBoxX, 2 * plain.Metrics('H').gmBlackBoxX, 3);

    font.lfWidth = 0;
    font.lfEscapement = 900;
    const GLYPHMETRICS turned = Setting(font).Metrics('L');
    const GLYPHMETRICS level = plain.Metrics('L');
    EXPECT_EQ(turned.gmBlackBoxX, level.gmBlackBoxY);
    EXPECT_EQ(turned.gmBlackBoxY, level.gmBlackBoxX);
    EXPECT_EQ(turned.gmptGlyphOrigin.x, -level.gmptGlyphOrigin.y) << "its head to the left";
    EXPECT_EQ(turned.gmCellIncX, 0);
    EXPECT_EQ(turned.gmCellIncY, level.gmCellIncX) << "the line runs upwards";
    EXPECT_EQ(Setting(font).Advance('L'), plain.Advance('L')) << "widths are along the line";
}

TEST(LogicalFont, WeightSlantAndKindChooseTheFace) {
    LOGFONTW font = Logical(L"DejaVu Sans", -100);
    font.lfWeight = FW_BOLD;
    EXPECT_GE(Setting(font).Text().tmWeight, 600);
    EXPECT_GT(Setting(font).Advance('m'), Setting(Logical(L"DejaVu Sans", -100)).Advance('m'));
    LOGFONTW italic = Logical(L"Nimbus Roman", -100);
    italic.lfItalic = 1;
    EXPECT_EQ(Setting(italic).Face(), L"Nimbus Roman");
    EXPECT_EQ(Setting(italic).Text().tmItalic, 1);
    EXPECT_EQ(Setting(Logical(L"DejaVu Serif", -100)).Face(), L"DejaVu Serif");
    EXPECT_EQ(Setting(Logical(L"dejavu serif", -100)).Face(), L"DejaVu Serif");

    // A face that nobody has is replaced by its kind: here one of fixed pitch.
    LOGFONTW none = Logical(L"No such face at all", -100);
    EXPECT_NE(Setting(none).Advance('i'), Setting(none).Advance('m'));
    none.lfPitchAndFamily = FIXED_PITCH;
    EXPECT_EQ(Setting(none).Advance('i'), Setting(none).Advance('m'));
    none.lfPitchAndFamily = FF_ROMAN;
    std::fill(std::begin(none.lfFaceName), std::end(none.lfFaceName), L'x');  // no zero at the end
    EXPECT_GT(Setting(none).Size('A'), 0u);
}

TEST(GlyphOutline, TrueTypePointsPassThroughUnchanged) {
    // At as many pixels as the em has units every point is a whole number; among these are composite glyphs.
    const Setting setting(Logical(L"DejaVu Sans", -2048));
    for (const unsigned c : {0x41u, 0x67u, 0xE4u, 0xDFu, 0x1D539u}) {
        const std::vector<std::byte> bytes = setting.Native(c);
        ASSERT_GT(bytes.size(), 16u);
        std::size_t curves = 0;
        for (std::size_t at = 0; at < bytes.size();) {
            TTPOLYGONHEADER head{};
            std::memcpy(&head, bytes.data() + at, sizeof head);
            ASSERT_EQ(head.dwType, TT_POLYGON_TYPE);
            EXPECT_EQ(head.pfxStart.x.fract, 0);
            for (std::size_t k = at + sizeof head; k < at + head.cb;) {
                WORD record[2];
                std::memcpy(record, bytes.data() + k, sizeof record);
                for (int i = 0; i < record[1]; ++i) {
                    POINTFX p{};
                    std::memcpy(&p, bytes.data() + k + 4 + 8 * static_cast<std::size_t>(i), sizeof p);
                    EXPECT_EQ(p.x.fract | p.y.fract, 0);
                }
                curves += record[0] == TT_PRIM_QSPLINE;
                k += 4 + std::size_t{8} * record[1];
            }
            at += head.cb;
        }
        EXPECT_EQ(curves > 0, c != 'A');
    }
}

TEST(GlyphOutline, WidthsAgreeWithTheOutline) {
    for (const std::wstring family : {L"DejaVu Sans", L"DejaVu Serif", L"Z003", L"Nimbus Roman"}) {
        const Setting setting(Logical(family, -1000));
        for (const unsigned c : {0x41u, 0x66u, 0x6Au, 0x78u, 0x2Eu}) {
            const ABCFLOAT w = setting.Widths(c);
            const GLYPHMETRICS m = setting.Metrics(c);
            EXPECT_EQ(m.gmptGlyphOrigin.x, std::floor(w.abcfA)) << c;
            EXPECT_EQ(m.gmptGlyphOrigin.x + static_cast<int>(m.gmBlackBoxX), std::ceil(w.abcfA + w.abcfB))
                << c;
            EXPECT_NEAR(m.gmCellIncX, setting.Advance(c), 0.51) << c;
        }
        const ABCFLOAT space = setting.Widths(' ');
        EXPECT_EQ(space.abcfA + space.abcfC, 0);
        EXPECT_GT(space.abcfB, 200);
        EXPECT_EQ(setting.Size(' '), 0u);
    }
}

TEST(GlyphOutline, MissingCharactersComeFromOtherFontsOrAreBoxes) {
    const Setting setting(Logical(L"Z003", -1000));
    const std::vector<std::byte> box = setting.Native(0xE000);
    for (const unsigned c : {0x416u, 0x1D539u}) {  // a Cyrillic letter; a letter beyond U+FFFF
        EXPECT_TRUE(setting.Has(static_cast<wchar_t>(c)));
        EXPECT_NE(setting.Native(c), box);
        EXPECT_NEAR(setting.Metrics(c).gmBlackBoxY, 650, 150) << "at the same size";
    }
    // Surrogates and what lies beyond the last character are no one's.
    for (const unsigned c : {0xE000u + 0x1234u, 0xD800u, 0x110000u, 0xFFFFFFFFu}) {
        EXPECT_FALSE(setting.Has(static_cast<wchar_t>(c))) << c;
        EXPECT_NE(setting.Size(c), GDI_ERROR) << c;
    }
}

/// A font that was let go of is kept for who asks in the same words, a few of them.
TEST(GlyphOutline, DoesNotDependOnWhatFontsWereAskedBefore) {
    std::vector<LOGFONTW> words(6, Logical(L"Z003", -500));
    words[1].lfHeight = -501;
    words[2].lfWidth = 300;
    words[3].lfEscapement = 300;
    words[4].lfItalic = 1;
    words[5].lfFaceName[3] = 0;
    const unsigned characters[] = {'a', 0x416, 0x1D539, 0x5D0, 0x4E00};  // the first is in the font itself
    for (const LOGFONTW& font : words) {
        for (const unsigned c : characters) {
            for (int i = 0; i < 8; ++i) Setting(Logical(L"DejaVu Sans", -300 - i)).Size('a');
            const std::vector<std::byte> anew = Setting(font).Native(c);
            for (const LOGFONTW& other : words) {
                const Setting setting(other);
                for (const unsigned k : characters) setting.Size(k);
            }
            EXPECT_EQ(Setting(font).Native(c), anew) << c;
        }
    }
}

TEST(GlyphOutline, IsRefusedRatherThanCutShort) {
    const Setting setting(Logical(L"DejaVu Sans", -100));
    const DWORD size = setting.Size('B');
    std::vector<std::byte> room(size, std::byte{0x55});
    GLYPHMETRICS m{};
    const MAT2 doubled = {{0, 2}, {0, 0}, {0, 0}, {0, 2}};
    EXPECT_EQ(GetGlyphOutlineW(setting.Dc(), 'B', GGO_NATIVE, &m, size - 1, room.data(), &kIdentity),
              GDI_ERROR);
    EXPECT_EQ(GetGlyphOutlineW(setting.Dc(), 'B', GGO_NATIVE, &m, size, room.data(), &doubled), GDI_ERROR);
    EXPECT_EQ(GetGlyphOutlineW(setting.Dc(), 'B', GGO_NATIVE, nullptr, size, room.data(), &kIdentity),
              GDI_ERROR);
    EXPECT_EQ(GetGlyphOutlineW(setting.Dc(), 'B', GGO_NATIVE, &m, size, room.data(), nullptr), GDI_ERROR);
    EXPECT_EQ(GetGlyphOutlineW(setting.Dc(), 'B', 1, &m, size, room.data(), &kIdentity), GDI_ERROR);
    EXPECT_EQ(m.gmBlackBoxX, 0u);
    EXPECT_THAT(room, testing::Each(std::byte{0x55}));
    ABCFLOAT widths[3];
    EXPECT_TRUE(GetCharABCWidthsFloatW(setting.Dc(), 0x10FFFD, 0x10FFFF, widths));
    EXPECT_FALSE(GetCharABCWidthsFloatW(setting.Dc(), 0x10FFFF, 0x110000, widths));
    EXPECT_FALSE(GetCharABCWidthsFloatW(setting.Dc(), 2, 1, widths));

    const UniqueDC none(CreateCompatibleDC(nullptr));
    EXPECT_EQ(GetGlyphOutlineW(none.Get(), 'B', GGO_NATIVE, &m, 0, nullptr, &kIdentity), GDI_ERROR);
    EXPECT_FALSE(GetCharABCWidthsFloatW(none.Get(), 'B', 'B', widths));
    EXPECT_EQ(GetTextFaceW(none.Get(), 0, nullptr), 0);
    EXPECT_EQ(CreateDCW(L"PRINTER", nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(CreateFontIndirectW(nullptr), nullptr);
}

/// A font of one bitmap, for the letter A.
constexpr char kBitmapFont[] =
    "STARTFONT 2.1\nFONT tiny\nSIZE 8 75 75\nFONTBOUNDINGBOX 8 8 0 0\nSTARTPROPERTIES 2\nFONT_ASCENT 8\n"
    "FONT_DESCENT 0\nENDPROPERTIES\nCHARS 1\nSTARTCHAR A\nENCODING 65\nSWIDTH 1000 0\nDWIDTH 8 0\nBBX 8 8 0 "
    "0\n"
    "BITMAP\n18\n3C\n66\n66\n7E\n66\n66\n66\nENDCHAR\nENDFONT\n";

TEST(GlyphOutline, FontsOfBitmapsHaveWidthsButNoOutlines) {
    const LOGFONTW font = Logical(L"", -8);
    const Setting setting(
        platform::RegisterFont(platform::OpenFont(std::as_bytes(std::span(kBitmapFont)), font), font));
    EXPECT_EQ(setting.Size('A'), GDI_ERROR);
    EXPECT_EQ(setting.Advance('A'), 8);
}

TEST(GlyphOutline, DamagedFontsAreRefusedOrDrawSomething) {
    const LOGFONTW font = Logical(L"", -1000);
    std::string bytes(kBitmapFont);
    EXPECT_EQ(platform::OpenFont({}, font), nullptr);
    EXPECT_EQ(platform::OpenFont(std::as_bytes(std::span(bytes)).first(200), font), nullptr);
}

TEST(Kerning, MovesPairsTogetherWhereTheFontSaysSo) {
    // DejaVu has an old table of pairs and a new one, Z003 only the new one.
    for (const std::wstring family : {L"DejaVu Sans", L"Nimbus Roman", L"Liberation Serif"}) {
        const Setting setting(Logical(family, -1000));
        const auto plain = setting.Advances(L"AVnn", 0);
        const auto kerned = setting.Advances(L"AVnn", GCP_USEKERNING);
        EXPECT_NEAR(plain[0], setting.Advance('A'), 0.5);
        EXPECT_LT(kerned[0], plain[0] - 20);
        EXPECT_EQ(kerned[2], plain[2]);
        EXPECT_EQ(kerned[3], plain[3]) << "nothing follows";
    }
}

TEST(Utf8, IsReadStrictlyOrWithStandIns) {
    const auto wide = [](const std::string& text, DWORD flags) {
        std::wstring out(text.size(), L'\0');
        const int room = static_cast<int>(text.size());
        out.resize(static_cast<std::size_t>(
            MultiByteToWideChar(CP_UTF8, flags, text.data(), room, out.data(), room)));
        return out;
    };
    const std::wstring all = {L'a', 0xDF, 0x20AC, 0x1D539, 0x10FFFF};
    std::string narrow(20, '\0');
    narrow.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, all.data(), 5, narrow.data(), 20, nullptr, nullptr)));
    EXPECT_EQ(narrow, "a\xC3\x9F\xE2\x82\xAC\xF0\x9D\x94\xB9\xF4\x8F\xBF\xBF");
    EXPECT_EQ(wide(narrow, MB_ERR_INVALID_CHARS), all);
    // Stray, cut short, overlong, a surrogate, too large.
    for (const char* bad :
         {"\x80", "\xC3", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF"}) {
        EXPECT_EQ(wide(bad, MB_ERR_INVALID_CHARS), L"") << bad;
        EXPECT_EQ(wide(bad, 0), std::wstring(std::strlen(bad), 0xFFFD)) << bad;
    }
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", -1, nullptr, 0), 3);
    wchar_t one = 0;
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", 2, &one, 1), 0);
}

}  // namespace
}  // namespace tarvex::test
