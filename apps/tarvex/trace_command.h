// `tarvex trace`: a picture to Bezier outlines, centre lines or edges.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tarvex/argument_values.h"
#include "tarvex/edges.h"

namespace tarvex::app {

enum class Format { Svg, Json };
/// In the order of Format.
inline constexpr FormatName OUTLINE_FORMATS[] = {{"svg", ".svg"}, {"json", ".json"}};
enum class TraceMode { Outline, Centerline, Edges, Color };  // Color is in color_trace.h

struct TraceOptions {
    TraceMode mode = TraceMode::Outline;
    std::string input;
    std::string output;
    std::optional<int> threshold;  ///< 0..255, levels up to it are dark; found when not given
    bool invert = false;           ///< trace what is taken for the ground
    std::optional<int> minPoints;  ///< outlines of this many pixel sides or fewer are left out
    std::optional<int> detail;     ///< enlarge the picture this many times first; by its size when not given
    std::optional<int> speckPixels;   ///< centre lines: specks of this many pixels or fewer are left out
    std::optional<double> minBranch;  ///< centre lines: branches sticking out by less are left out
    EdgeMethod detector = EdgeMethod::Canny;
    std::optional<double> sigma;          ///< edges: how far to smooth, in pixels
    std::optional<EdgeThresholds> steps;  ///< edges: found from the picture when not given
    Format format = Format::Svg;
    int precision = 2;
    std::uint64_t maxPixels = 100'000'000;
};

/// Traces and writes the result; returns the program's exit status or raises ProgramError.
int RunTrace(const TraceOptions& options);

}  // namespace tarvex::app
