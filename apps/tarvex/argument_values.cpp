// Numbers, angles, warps and file names out of options, with the errors that tell what they should be.
#include "tarvex/argument_values.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <string_view>

#include "tarvex/files.h"
#include "tarvex/svg_reader.h"
#include "tarvex/warp_command.h"

namespace tarvex::app {

namespace {

/// "not A", "neither A nor B", "none of A, B and C".
std::string NoneOf(const std::vector<std::string>& names) {
    if (names.size() == 1) return "not " + names[0];
    if (names.size() == 2) return "neither " + names[0] + " nor " + names[1];
    std::string text = "none of " + names[0];
    for (std::size_t i = 1; i < names.size(); ++i) text += (i + 1 < names.size() ? ", " : " and ") + names[i];
    return text;
}

}  // namespace

void Refuse(const std::string& option, const std::string& text, const std::string& wanted) {
    throw CLI::ValidationError(option, "'" + text + "' is not " + wanted);
}

std::vector<double> Numbers(const std::string& option, const std::string& text, std::size_t least,
                            std::size_t most, const std::string& wanted) {
    std::vector<double> numbers;
    std::string_view rest = text;
    for (;;) {
        const std::size_t comma = rest.find(',');
        const std::string_view one = rest.substr(0, comma);
        double number = 0;
        const auto [stopped, error] = std::from_chars(one.data(), one.data() + one.size(), number);
        const bool isWhole = error == std::errc{} && stopped == one.data() + one.size();
        if (!isWhole || !(std::fabs(number) < MAX_SVG_COORDINATE)) Refuse(option, text, wanted);
        numbers.push_back(number);
        if (comma == rest.npos) break;
        rest.remove_prefix(comma + 1);
    }
    if (numbers.size() < least || numbers.size() > most) Refuse(option, text, wanted);
    return numbers;
}

double Radians(double degrees) { return std::fmod(degrees, 360) * (std::numbers::pi / 180); }

std::size_t FormatIndex(std::span<const FormatName> formats, const std::optional<std::string>& word,
                        const std::string& output) {
    std::vector<std::string> words, endings;
    for (const FormatName& format : formats) {
        words.emplace_back(format.word);
        const bool isNew = std::find(endings.begin(), endings.end(), format.ending) == endings.end();
        if (isNew) endings.emplace_back(format.ending);
    }
    const auto same = [&](const char* FormatName::*name, const std::string& text) {
        return std::find_if(formats.begin(), formats.end(),
                            [&](const FormatName& format) { return format.*name == text; });
    };
    if (word) {
        const auto found = same(&FormatName::word, *word);
        if (found == formats.end())
            throw CLI::ValidationError("--format", "'" + *word + "' is " + NoneOf(words));
        return static_cast<std::size_t>(found - formats.begin());
    }
    if (output == "-" || IsDirectoryName(output)) return 0;
    const auto found =
        same(&FormatName::ending, CLI::detail::to_lower(std::filesystem::path(output).extension().string()));
    if (found != formats.end()) return static_cast<std::size_t>(found - formats.begin());
    const char* remedy = formats.size() > 1 ? "; name it so, or add --format" : "";
    throw CLI::ValidationError(output, "its ending is " + NoneOf(endings) + remedy);
}

int WarpType(const std::string& option, const std::string& text) {
    for (std::size_t i = 0; i < WARP_NAMES.size(); ++i) {
        if (text == WARP_NAMES[i] || text == std::to_string(i + 1)) return static_cast<int>(i) + 1;
    }
    Refuse(option, text, "a type of warp: 1 to 10, or a name of theirs");
}

Amount WarpAmount(const std::string& option, const std::string& text) {
    Amount amount;
    amount.isPercent = text.size() > 1 && text.back() == '%';
    const std::string number = amount.isPercent ? text.substr(0, text.size() - 1) : text;
    amount.value = Numbers(option, number, 1, 1, "a length, nor one in percent").front();
    return amount;
}

}  // namespace tarvex::app
