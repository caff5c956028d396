// `tarvex trace --mode color`: a picture as painted regions.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tarvex::app {

struct ColorTraceOptions {
    std::string input;
    std::string output;
    int colors = 8;
    bool cutout = false;           ///< regions end at their borders instead of running on beneath others
    std::optional<int> minPoints;  ///< regions with a border of this many pixel sides or fewer are left out
    int precision = 2;
    std::uint64_t maxPixels = 100'000'000;
};

/// Traces and writes an SVG file; returns the program's exit status or raises ProgramError.
int RunColorTrace(const ColorTraceOptions& options);

}  // namespace tarvex::app
