// Numbers, angles, warps and file names out of options, with the errors that tell what they should be.
#include "tarvex/argument_values.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <numbers>
#include <string_view>

#include "tarvex/svg_reader.h"
#include "tarvex/warp_command.h"

namespace tarvex::app {

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

void RequireSvg(const std::string& output) {
    const auto endsWithSvg = [&output] {
        if (output.size() < 4) return false;
        std::string ending = output.substr(output.size() - 4);
        std::transform(ending.begin(), ending.end(), ending.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        return ending == ".svg";
    };
    if (output != "-" && !endsWithSvg()) throw CLI::ValidationError(output, "its ending is not .svg");
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
