// Finding fonts by Fontconfig, under the rules of the system and its user.
//
// The requested family comes first and the generic one, which stands in for it, after; Fontconfig's rules may
// put others in between, such as a font of the same metrics. Named instances are asked for instead of
// variable fonts, so that a file and an index say all. The list of helpers is sorted when a character is
// first missing, because that looks at every installed font.
#include "platform/font_match.h"

#include <dlfcn.h>
#include <fontconfig/fontconfig.h>
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#define TARVEX_CHECKS_LEAKS
#endif
#endif

#include <algorithm>
#include <cstdlib>

namespace tarvex::platform {
namespace {

/// Keeps Fontconfig in the process when this library is unloaded. It does not release its rules then, so
/// each loading would leave a set of them behind; kept, it serves the next one.
void KeepLoaded() {
    Dl_info fontconfig{};
    if (dladdr(reinterpret_cast<void*>(&FcInit), &fontconfig) == 0) return;
    if (void* const library = dlopen(fontconfig.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE))
        dlclose(library);
}

/// Fontconfig reads its rules when it is first used. It lets go of some of that memory without freeing it,
/// once a process, which leak checks must not take for ours.
void LoadRules() {
#ifdef TARVEX_CHECKS_LEAKS
    const __lsan::ScopedDisabler disabled;
#endif
    KeepLoaded();
    FcInit();
}

struct Destroy {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
    void operator()(FcFontSet* set) const { FcFontSetDestroy(set); }
};
using UniquePattern = std::unique_ptr<FcPattern, Destroy>;
using UniqueFontSet = std::unique_ptr<FcFontSet, Destroy>;

const FcChar8* Utf8(const char* text) { return reinterpret_cast<const FcChar8*>(text); }

std::string ToUtf8(const std::wstring& text) {
    const int size = static_cast<int>(text.size());
    std::string out(text.size() * 4, '\0');
    const int written =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), size, out.data(), 4 * size, nullptr, nullptr);
    out.resize(static_cast<std::size_t>(written));
    return out;
}

std::wstring FromUtf8(const std::string& text) {
    const int size = static_cast<int>(text.size());
    std::wstring out(text.size(), L'\0');
    out.resize(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, out.data(), size)));
    return out;
}

std::wstring FaceName(const LOGFONTW& font) {
    const auto* const end = std::find(std::begin(font.lfFaceName), std::end(font.lfFaceName), WCHAR{0});
    return {std::begin(font.lfFaceName), end};
}

const char* GenericFamily(const LOGFONTW& font) {
    constexpr int familyBits = 0xF0;
    constexpr int pitchBits = 3;
    switch (font.lfPitchAndFamily & familyBits) {
        case FF_ROMAN:
            return "serif";
        case FF_MODERN:
            return "monospace";
        case FF_SCRIPT:
            return "cursive";
        case FF_DECORATIVE:
            return "fantasy";
        default:
            return (font.lfPitchAndFamily & pitchBits) == FIXED_PITCH ? "monospace" : "sans-serif";
    }
}

UniquePattern PatternFor(const LOGFONTW& font) {
    UniquePattern pattern(FcPatternCreate());
    if (pattern == nullptr) return pattern;
    if (const std::string family = ToUtf8(FaceName(font)); !family.empty())
        FcPatternAddString(pattern.get(), FC_FAMILY, Utf8(family.c_str()));
    FcPatternAddString(pattern.get(), FC_FAMILY, Utf8(GenericFamily(font)));
    if (font.lfWeight != 0) {
        const int weight = std::clamp<int>(font.lfWeight, 1, 1000);
        FcPatternAddInteger(pattern.get(), FC_WEIGHT, FcWeightFromOpenType(weight));
    }
    FcPatternAddInteger(pattern.get(), FC_SLANT, font.lfItalic != 0 ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddBool(pattern.get(), FC_OUTLINE, FcTrue);
    FcPatternAddBool(pattern.get(), FC_VARIABLE, FcFalse);
    if (FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern) == FcFalse) return nullptr;
    FcDefaultSubstitute(pattern.get());
    return pattern;
}

/// The name by which a font goes: the one asked for, if that is among its names, and else its first.
std::wstring FamilyOf(FcPattern* pattern, const std::string& wanted) {
    FcChar8* first = nullptr;
    if (FcPatternGetString(pattern, FC_FAMILY, 0, &first) != FcResultMatch) return {};
    FcChar8* name = nullptr;
    for (int i = 0; FcPatternGetString(pattern, FC_FAMILY, i, &name) == FcResultMatch; ++i) {
        if (FcStrCmpIgnoreCase(name, Utf8(wanted.c_str())) == 0) first = name;
    }
    return FromUtf8(reinterpret_cast<const char*>(first));
}

std::optional<FontFile> FileOf(FcPattern* pattern, const std::string& wanted) {
    FcChar8* text = nullptr;
    FontFile file;
    if (FcPatternGetString(pattern, FC_FILE, 0, &text) != FcResultMatch) return std::nullopt;
    file.path = reinterpret_cast<const char*>(text);
    FcPatternGetInteger(pattern, FC_INDEX, 0, &file.index);
    file.family = FamilyOf(pattern, wanted);
    int number = 0;
    if (FcPatternGetInteger(pattern, FC_WEIGHT, 0, &number) == FcResultMatch)
        file.weight = FcWeightToOpenType(number);
    if (FcPatternGetInteger(pattern, FC_SLANT, 0, &number) == FcResultMatch)
        file.isItalic = number != FC_SLANT_ROMAN;
    FcBool flag = FcFalse;
    if (FcPatternGetBool(pattern, FC_EMBOLDEN, 0, &flag) == FcResultMatch)
        file.isToBeWidened = flag == FcTrue;
    FcMatrix* matrix = nullptr;
    if (FcPatternGetMatrix(pattern, FC_MATRIX, 0, &matrix) == FcResultMatch && matrix->xx == 1 &&
        matrix->yy == 1 && matrix->yx == 0)
        file.slant = std::clamp(matrix->xy, -1.0, 1.0);
    return file;
}

class FontconfigChoice : public FontChoice {
  public:
    FontconfigChoice(UniquePattern pattern, FontFile nearest)
        : m_pattern(std::move(pattern)), m_nearest(std::move(nearest)) {}

    const FontFile& Nearest() const override { return m_nearest; }

    std::optional<FontFile> NearestWith(char32_t character) override {
        if (m_helpers == nullptr) {
            FcResult result = FcResultMatch;
            m_helpers.reset(FcFontSort(nullptr, m_pattern.get(), FcFalse, nullptr, &result));
        }
        if (m_helpers == nullptr) return std::nullopt;
        for (int i = 0; i < m_helpers->nfont; ++i) {
            FcPattern* const font = m_helpers->fonts[i];
            FcBool hasOutlines = FcFalse;
            FcCharSet* characters = nullptr;
            if (FcPatternGetBool(font, FC_OUTLINE, 0, &hasOutlines) != FcResultMatch ||
                hasOutlines == FcFalse)
                continue;
            if (FcPatternGetCharSet(font, FC_CHARSET, 0, &characters) != FcResultMatch) continue;
            if (FcCharSetHasChar(characters, character) == FcFalse) continue;
            const UniquePattern prepared(FcFontRenderPrepare(nullptr, m_pattern.get(), font));
            return prepared == nullptr ? std::nullopt : FileOf(prepared.get(), {});
        }
        return std::nullopt;
    }

  private:
    UniquePattern m_pattern;
    FontFile m_nearest;
    UniqueFontSet m_helpers;
};

}  // namespace

std::unique_ptr<FontChoice> ChooseFont(const LOGFONTW& font) {
    LoadRules();
    UniquePattern pattern = PatternFor(font);
    if (pattern == nullptr) return nullptr;
    FcResult result = FcResultMatch;
    const UniquePattern match(FcFontMatch(nullptr, pattern.get(), &result));
    if (match == nullptr) return nullptr;
    auto nearest = FileOf(match.get(), ToUtf8(FaceName(font)));
    if (!nearest) return nullptr;
    return std::make_unique<FontconfigChoice>(std::move(pattern), std::move(*nearest));
}

}  // namespace tarvex::platform
