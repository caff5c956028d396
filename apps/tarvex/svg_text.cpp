#include "tarvex/svg_text.h"

#include <cctype>
#include <charconv>
#include <limits>
#include <numbers>

namespace tarvex::app {

namespace {

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
    return text;
}

/// Where digits that start at `at` end.
std::size_t DigitsEnd(std::string_view text, std::size_t at) {
    while (at < text.size() && IsDigit(text[at])) ++at;
    return at;
}

/// Where the number at the start of the text ends; 0 when there is none.
std::size_t NumberEnd(std::string_view text) {
    std::size_t at = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    const std::size_t whole = DigitsEnd(text, at);
    std::size_t digits = whole - at;
    at = whole;
    if (at < text.size() && text[at] == '.') {
        const std::size_t fraction = DigitsEnd(text, at + 1);
        digits += fraction - at - 1;
        at = fraction;
    }
    if (digits == 0) return 0;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        std::size_t exponent = at + 1;
        if (exponent < text.size() && (text[exponent] == '-' || text[exponent] == '+')) ++exponent;
        const std::size_t end = DigitsEnd(text, exponent);
        if (end > exponent) at = end;  // or else it is a unit, as in 2em
    }
    return at;
}

double Value(std::string_view number) {
    if (number.front() == '+') number.remove_prefix(1);
    double value = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec != std::errc::result_out_of_range) return value;
    const bool isTiny = number.find("e-") != number.npos || number.find("E-") != number.npos;
    const double size = isTiny ? 0 : std::numeric_limits<double>::infinity();
    return number.front() == '-' ? -size : size;
}

std::optional<Affine> TransformOf(std::string_view name, const std::vector<double>& n) {
    const std::size_t count = n.size();
    const auto radians = [](double degrees) { return degrees * (std::numbers::pi / 180); };
    if (name == "matrix" && count == 6) return Affine{n[0], n[1], n[2], n[3], n[4], n[5]};
    if (name == "translate" && (count == 1 || count == 2))
        return Affine{1, 0, 0, 1, n[0], count == 2 ? n[1] : 0};
    if (name == "scale" && (count == 1 || count == 2)) return Affine{n[0], 0, 0, n[count - 1], 0, 0};
    if (name == "skewX" && count == 1) return Affine{1, 0, std::tan(radians(n[0])), 1, 0, 0};
    if (name == "skewY" && count == 1) return Affine{1, std::tan(radians(n[0])), 0, 1, 0, 0};
    if (name != "rotate" || (count != 1 && count != 3)) return std::nullopt;
    const double c = std::cos(radians(n[0]));
    const double s = std::sin(radians(n[0]));
    const Affine turn{c, s, -s, c, 0, 0};
    if (count == 1) return turn;
    return Affine{1, 0, 0, 1, n[1], n[2]} * turn * Affine{1, 0, 0, 1, -n[1], -n[2]};
}

/// Calls `use(declaration)` for each declaration of a style attribute. Semicolons inside quotes and
/// parentheses, as in embedded data, separate nothing.
template <class Use>
void ForEachDeclaration(std::string_view style, Use use) {
    std::size_t start = 0;
    char quote = 0;
    int depth = 0;
    for (std::size_t i = 0; i <= style.size(); ++i) {
        const char c = i < style.size() ? style[i] : ';';
        if (i < style.size() && quote != 0) {
            if (c == quote) quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '(') {
            ++depth;
        } else if (c == ')') {
            depth = depth > 0 ? depth - 1 : 0;
        } else if (c == ';' && (depth == 0 || i == style.size())) {
            use(Trimmed(style.substr(start, i - start)));
            start = i + 1;
        }
    }
}

bool Declares(std::string_view declaration, std::string_view property) {
    const std::size_t colon = declaration.find(':');
    return colon != declaration.npos && Trimmed(declaration.substr(0, colon)) == property;
}

}  // namespace

void SvgScanner::SkipSpaces() {
    while (!IsAtEnd() && IsSpace(m_text[m_at])) ++m_at;
}

SvgScanner::Separator SvgScanner::SkipSeparator() {
    const std::size_t before = m_at;
    SkipSpaces();
    if (Peek() != ',') return m_at == before ? Separator::None : Separator::Spaces;
    ++m_at;
    SkipSpaces();
    return Separator::Comma;
}

std::optional<double> SvgScanner::Number() {
    const std::size_t end = NumberEnd(Rest());
    if (end == 0) return std::nullopt;
    const double value = Value(m_text.substr(m_at, end));
    m_at += end;
    return value;
}

std::optional<bool> SvgScanner::Flag() {
    if (Peek() != '0' && Peek() != '1') return std::nullopt;
    return Take() == '1';
}

std::string_view SvgScanner::Word() {
    const std::size_t start = m_at;
    while (!IsAtEnd() && std::isalpha(static_cast<unsigned char>(m_text[m_at])) != 0) ++m_at;
    return m_text.substr(start, m_at - start);
}

std::optional<std::vector<double>> ParseNumbers(std::string_view text) {
    std::vector<double> numbers;
    SvgScanner scanner(text);
    scanner.SkipSpaces();
    bool isDue = false;
    while (!scanner.IsAtEnd() || isDue) {
        const auto number = scanner.Number();
        if (!number) return std::nullopt;
        numbers.push_back(*number);
        isDue = scanner.SkipSeparator() == SvgScanner::Separator::Comma;
    }
    return numbers;
}

std::optional<double> ParseLength(std::string_view text, double whole) {
    struct Unit {
        std::string_view name;
        double size;
    };
    static constexpr Unit UNITS[] = {{"", 1},           {"px", 1},  {"pt", 96.0 / 72},
                                     {"pc", 16},        {"in", 96}, {"cm", 96 / 2.54},
                                     {"mm", 96 / 25.4}, {"em", 16}, {"ex", 8}};
    SvgScanner scanner(Trimmed(text));
    const auto number = scanner.Number();
    if (!number) return std::nullopt;
    if (scanner.Rest() == "%") return *number / 100 * whole;
    for (const Unit& unit : UNITS) {
        if (scanner.Rest() == unit.name) return *number * unit.size;
    }
    return std::nullopt;
}

std::optional<Affine> ParseTransform(std::string_view text) {
    Affine all;
    SvgScanner scanner(text);
    scanner.SkipSpaces();
    while (!scanner.IsAtEnd()) {
        const std::string_view name = scanner.Word();
        scanner.SkipSpaces();
        const std::string_view rest = scanner.Rest();
        const std::size_t end = rest.find(')');
        if (rest.empty() || rest.front() != '(' || end == rest.npos) return std::nullopt;
        const auto numbers = ParseNumbers(rest.substr(1, end - 1));
        const auto one = numbers ? TransformOf(name, *numbers) : std::nullopt;
        if (!one) return std::nullopt;
        all = all * *one;
        scanner = SvgScanner(rest.substr(end + 1));
        if (scanner.SkipSeparator() == SvgScanner::Separator::Comma && scanner.IsAtEnd()) return std::nullopt;
    }
    return all;
}

std::optional<std::string_view> StyleValue(std::string_view style, std::string_view property) {
    std::optional<std::string_view> value;
    ForEachDeclaration(style, [&](std::string_view declaration) {
        if (Declares(declaration, property)) value = Trimmed(declaration.substr(declaration.find(':') + 1));
    });
    return value;
}

std::string WithStyleValue(std::string_view style, std::string_view property, std::string_view value) {
    std::string out;
    const auto append = [&out](std::string_view declaration) {
        if (!out.empty()) out += ';';
        out += declaration;
    };
    ForEachDeclaration(style, [&](std::string_view declaration) {
        if (!declaration.empty() && !Declares(declaration, property)) append(declaration);
    });
    append(std::string(property) + ':' + std::string(value));
    return out;
}

}  // namespace tarvex::app
