// Values of options that several commands read the same way. What makes no sense raises CLI::ValidationError.
#pragma once

#include <cstddef>
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

/// Checks that the output's ending is .svg, unless it is standard output.
void RequireSvg(const std::string& output);

}  // namespace tarvex::app
