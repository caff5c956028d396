// Names and texts between wide characters and UTF-8, read without trust.
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "tarvex/platform.h"

namespace tarvex {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsCharacter(char32_t c) { return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF); }

struct Decoded {
    char32_t character = 0;
    std::size_t length = 0;
};

/// The character at the front of a text that is not empty.
std::optional<Decoded> FirstCharacter(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80) return Decoded{lead, 1};
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return std::nullopt;
    char32_t c = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) return std::nullopt;
        c = c << 6 | (next & 0x3F);
    }
    constexpr char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    if (!IsCharacter(c) || c < least[length]) return std::nullopt;
    return Decoded{c, length};
}

void Append(std::string& text, char32_t c) {
    const int more = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    constexpr unsigned leads[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(leads[more] | c >> 6 * more);
    for (int shift = 6 * (more - 1); shift >= 0; shift -= 6)
        text += static_cast<char>(0x80 | (c >> shift & 0x3F));
}

/// The part of a text that its size tells: -1 stands for all of it with its closing zero.
template <class Character>
std::optional<std::basic_string_view<Character>> Part(const Character* text, int size) {
    if (text == nullptr || size == 0 || size < -1) return std::nullopt;
    if (size > 0) return std::basic_string_view(text, static_cast<std::size_t>(size));
    return std::basic_string_view(text, std::basic_string_view(text).size() + 1);
}

/// Hands out what was converted, or its length.
template <class Character>
int Deliver(const std::basic_string<Character>& converted, Character* out, int room) {
    const auto size = static_cast<std::int64_t>(converted.size());
    if (size > std::numeric_limits<int>::max()) return 0;
    if (room == 0) return static_cast<int>(size);
    if (out == nullptr || room < size) return 0;
    converted.copy(out, converted.size());
    return static_cast<int>(size);
}

}  // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int size, WCHAR* wide, int room) {
    const auto part = Part(text, size);
    if (codePage != CP_UTF8 || !part) return 0;
    std::wstring converted;
    for (std::size_t at = 0; at < part->size();) {
        const auto decoded = FirstCharacter(part->substr(at));
        if (!decoded && (flags & MB_ERR_INVALID_CHARS) != 0) return 0;
        converted += static_cast<wchar_t>(decoded ? decoded->character : kReplacement);
        at += decoded ? decoded->length : 1;
    }
    return Deliver(converted, wide, room);
}

int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* wide, int size, char* text, int room,
                        const char* standIn,
                        BOOL* wasNeeded) {  // NOLINT(readability-non-const-parameter): the system's signature
    const auto part = Part(wide, size);
    if (codePage != CP_UTF8 || flags != 0 || standIn != nullptr || wasNeeded != nullptr || !part) return 0;
    std::string converted;
    for (const wchar_t c : *part) {
        const auto character = static_cast<char32_t>(c);
        Append(converted, IsCharacter(character) ? character : kReplacement);
    }
    return Deliver(converted, text, room);
}

}  // namespace tarvex
