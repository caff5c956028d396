// Text between UTF-8 and characters, by the platform's own conversions.
#include <cstdio>
#include <stdexcept>

#include "tarvex/text_layout.h"

namespace tarvex::app {

std::vector<std::wstring> TextLines(std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    const int count =
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, wide.data(), size);
    if (count == 0 && size > 0) throw std::invalid_argument("not all of it is UTF-8");
    wide.resize(static_cast<std::size_t>(count));
    std::vector<std::wstring> lines(1);
    for (const wchar_t c : wide) {
        if (c != L'\n') {
            lines.back() += c;
            continue;
        }
        if (lines.back().ends_with(L'\r')) lines.back().pop_back();
        lines.emplace_back();
    }
    return lines;
}

std::string CodePointName(wchar_t character) {
    char text[16];
    std::snprintf(text, sizeof text, "U+%04X", static_cast<unsigned>(character));
    return text;
}

std::string Narrow(const std::wstring& text) {
    const int size = static_cast<int>(text.size());
    std::string out(text.size() * 4, '\0');
    const int written =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), size, out.data(), 4 * size, nullptr, nullptr);
    out.resize(static_cast<std::size_t>(written));
    return out;
}

}  // namespace tarvex::app
