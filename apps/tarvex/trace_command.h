// `tarvex trace`: a picture to Bezier outlines.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tarvex::app {

enum class Format { Svg, Json };

struct TraceOptions {
    std::string input;
    std::string output;
    std::optional<int> threshold;  ///< 0..255; found from the picture when not given
    bool invert = false;           ///< trace the light parts instead of the dark ones
    std::optional<int> minPoints;  ///< contours of fewer boundary pixels are left out
    std::optional<int> detail;     ///< times the picture is enlarged first; from its size when not given
    Format format = Format::Svg;
    int precision = 2;
    std::uint64_t maxPixels = 100'000'000;
};

/// Traces and writes the result; returns the program's exit status or raises ProgramError.
int RunTrace(const TraceOptions& options);

}  // namespace tarvex::app
