// `tarvex text`: a text's outlines as a drawing.
#pragma once

#include <optional>
#include <string>

#include "tarvex/text_baseline.h"
#include "tarvex/text_layout.h"

namespace tarvex::app {

struct TextWarp {
    int type = 1;  ///< 1..10, as `tarvex warp` has them
    double amount = 0;
    bool isPercent = false;  ///< of the outlines' height
};

struct TextOptions {
    std::string text;  ///< UTF-8, \n for a new line and \\ for a backslash; "-" is standard input, as it is
    std::string output;
    TextStyle style;
    TextAlign align = TextAlign::Left;
    std::string colour = "#000";
    std::optional<EllipseBaseline> ellipse;
    std::optional<TextWarp> warp;
    std::optional<int> precision;
};

/// Returns the program's exit status or raises ProgramError.
int RunText(const TextOptions& options);

}  // namespace tarvex::app
