// Outlines of a font's characters, beside FreeType's own decomposition of the same glyphs, unhinted, at the
// same size. Both pay for finding and opening the font once.
#include <string>

#include "support.h"
#include "tarvex/glyphs.h"

#if defined(TARVEX_BENCH_FREETYPE)
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <fontconfig/fontconfig.h>
#endif

namespace tarvex::bench {
namespace {

constexpr int kHeight = 100;

tagLOGFONTW Font() {
    tagLOGFONTW font{};
    font.lfHeight = -kHeight;
    const std::wstring family = L"DejaVu Sans";
    for (std::size_t i = 0; i < family.size(); ++i) font.lfFaceName[i] = static_cast<WCHAR>(family[i]);
    return font;
}

/// Characters that DejaVu has, of Latin and Cyrillic.
unsigned CharacterAt(int i) {
    struct Range {
        unsigned first, last;
    };
    auto rest = static_cast<unsigned>(i);
    for (const Range range : {Range{0x21, 0x7E}, {0xA1, 0x24F}, {0x250, 0x2AF}, {0x400, 0x525}}) {
        if (rest <= range.last - range.first) return range.first + rest;
        rest -= range.last - range.first + 1;
    }
    return 0x1E00 + rest;
}

/// Makes the outlines of the first so many characters, and says how many have any.
int Draw(int count) {
    tagLOGFONTW font = Font();
    int drawn = 0;
    for (int i = 0; i < count; ++i) {
        CPolyPolyBezier contours;
        DPOINT origin{};
        drawn += GetTTOutlinePoints(font, CharacterAt(i), contours, origin, 0) > 0 ? 1 : 0;
        benchmark::DoNotOptimize(contours.GetData());
    }
    return drawn;
}

void Outlines(benchmark::State& state) {
    const int count = Size(state);
    int drawn = 0;
    for ([[maybe_unused]] auto _ : state) drawn = Draw(count);
    state.counters["drawn"] = drawn;
    CountItems(state, "glyphs", static_cast<std::size_t>(count));
}
BENCHMARK(Outlines)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMicrosecond);

#if defined(TARVEX_BENCH_FREETYPE)

std::string FileOfFont() {
    FcPattern* pattern = FcNameParse(reinterpret_cast<const FcChar8*>("DejaVu Sans"));
    FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
    FcDefaultSubstitute(pattern);
    FcResult result{};
    FcPattern* found = FcFontMatch(nullptr, pattern, &result);
    FcChar8* file = nullptr;
    FcPatternGetString(found, FC_FILE, 0, &file);
    std::string name = reinterpret_cast<const char*>(file);
    FcPatternDestroy(found);
    FcPatternDestroy(pattern);
    return name;
}

using Points = std::vector<FT_Vector>;

int Append(void* to, std::initializer_list<const FT_Vector*> points) {
    for (const FT_Vector* p : points) static_cast<Points*>(to)->push_back(*p);
    return 0;
}

void PeerOutlines(benchmark::State& state) {
    const int count = Size(state);
    const std::string file = FileOfFont();
    const FT_Outline_Funcs visit{[](const FT_Vector* p, void* to) { return Append(to, {p}); },
                                 [](const FT_Vector* p, void* to) { return Append(to, {p}); },
                                 [](const FT_Vector* c, const FT_Vector* p, void* to) {
                                     return Append(to, {c, p});
                                 },
                                 [](const FT_Vector* a, const FT_Vector* b, const FT_Vector* p, void* to) {
                                     return Append(to, {a, b, p});
                                 },
                                 0,
                                 0};
    int drawn = 0;
    for ([[maybe_unused]] auto _ : state) {
        FT_Library library = nullptr;
        FT_Face face = nullptr;
        Require(FT_Init_FreeType(&library) == 0 && FT_New_Face(library, file.c_str(), 0, &face) == 0,
                "FreeType cannot open the font");
        FT_Set_Char_Size(face, 0, FT_F26Dot6{64} * kHeight, 72, 72);
        drawn = 0;
        for (int i = 0; i < count; ++i) {
            Points points;
            if (FT_Load_Char(face, CharacterAt(i), FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP) != 0) continue;
            FT_Outline_Decompose(&face->glyph->outline, &visit, &points);
            drawn += points.empty() ? 0 : 1;
            benchmark::DoNotOptimize(points.data());
        }
        FT_Done_Face(face);
        FT_Done_FreeType(library);
    }
    Require(drawn == Draw(count), "one draws more characters than the other");
    state.counters["drawn"] = drawn;
    CountItems(state, "glyphs", static_cast<std::size_t>(count));
}
BENCHMARK(PeerOutlines)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMicrosecond);

#endif

}  // namespace
}  // namespace tarvex::bench
