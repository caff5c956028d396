#include "tarvex/xml_entities.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "tarvex/svg_reader.h"

namespace tarvex::app {

namespace {

using Entities = std::map<std::string_view, std::string_view>;

constexpr std::string_view SPACES = " \t\r\n";
constexpr std::string_view DECLARATION = "<!ENTITY";

/// The first word of the text, which it leaves; empty when there is none.
std::string_view TakeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(SPACES), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(" \t\r\n\"'>"));
    text.remove_prefix(word.size());
    return word;
}

/// Adds what stands after "<!ENTITY", if it is a name and a plain text in quotes.
void Declare(std::string_view text, Entities& entities) {
    const std::string_view name = TakeWord(text);
    text.remove_prefix(std::min(text.find_first_not_of(SPACES), text.size()));
    if (name.empty() || name == "%" || text.empty() || (text[0] != '"' && text[0] != '\'')) return;
    const std::size_t end = text.find(text[0], 1);
    if (end == text.npos) return;
    const std::string_view value = text.substr(1, end - 1);
    if (value.find_first_of("&<%") == value.npos) entities.emplace(name, value);
}

/// Where the declaration that starts the text ends, after its "]" and ">".
std::size_t DoctypeEnd(std::string_view text) {
    std::size_t at = 0;
    char quote = 0;
    int brackets = 0;
    for (; at < text.size(); ++at) {
        const char c = text[at];
        if (quote != 0) {
            if (c == quote) quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '[') {
            ++brackets;
        } else if (c == ']') {
            --brackets;
        } else if (c == '>' && brackets <= 0) {
            return at + 1;
        }
    }
    return at;
}

}  // namespace

std::string ExpandEntities(std::span<const std::uint8_t> bytes, std::uint64_t maxBytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const std::size_t start = text.find("<!DOCTYPE");
    if (start == text.npos) return {};
    const std::string_view doctype = text.substr(start, DoctypeEnd(text.substr(start)));
    Entities entities;
    for (std::size_t at = doctype.find(DECLARATION); at != doctype.npos;
         at = doctype.find(DECLARATION, at + 1))
        Declare(doctype.substr(at + DECLARATION.size()), entities);
    if (entities.empty()) return {};

    std::string out(text.substr(0, start));
    std::string_view rest = text.substr(start + doctype.size());
    while (!rest.empty()) {
        const std::size_t mark = rest.find('&');
        out += rest.substr(0, mark);
        if (mark == rest.npos) break;
        rest.remove_prefix(mark);
        const std::size_t end = rest.find_first_of(";&<\"' ", 1);
        const auto found =
            end != rest.npos && rest[end] == ';' ? entities.find(rest.substr(1, end - 1)) : entities.end();
        if (found == entities.end()) {
            out += '&';
            rest.remove_prefix(1);
            continue;
        }
        out += found->second;
        rest.remove_prefix(end + 1);
        if (out.size() > maxBytes) throw SvgError("its entities make it too long");
    }
    return out;
}

}  // namespace tarvex::app
