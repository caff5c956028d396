// Values of options that several commands read the same way. What makes no sense raises CLI::ValidationError.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tarvex::app {

/// Raises the error that `text` is not what the option takes.
[[noreturn]] void Refuse(const std::string& option, const std::string& text, const std::string& wanted);

/// Finite numbers between commas, as many as `least` to `most`; `wanted` says what they are.
std::vector<double> Numbers(const std::string& option, const std::string& text, std::size_t least,
                            std::size_t most, const std::string& wanted);

double Radians(double degrees);

/// The number, from 1, of a warp's type that is given by number or name.
int WarpType(const std::string& option, const std::string& text);

/// A length, or with a % behind it a part of another one.
struct Amount {
    double value = 0;
    bool isPercent = false;
};
Amount WarpAmount(const std::string& option, const std::string& text);

/// A kind of result: the word for it, and the ending of its files.
struct FormatName {
    const char* word;
    const char* ending;
};
inline constexpr FormatName SVG_FORMAT[] = {{"svg", ".svg"}};
inline constexpr FormatName PNG_FORMAT[] = {{"png", ".png"}};

/// Which of the formats to write: the one that --format names; or else the first one with the output's
/// ending; or the first of all for standard output and directories.
std::size_t FormatIndex(std::span<const FormatName> formats, const std::optional<std::string>& word,
                        const std::string& output);

}  // namespace tarvex::app
