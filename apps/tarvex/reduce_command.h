// `tarvex reduce`: a picture in few colours, and which colours they are.
#pragma once

#include <cstdint>
#include <string>

#include "tarvex/color_picture.h"

namespace tarvex::app {

struct ReduceOptions {
    std::string input;
    std::string output;
    std::string palette;  ///< file for the palette as JSON; none when empty
    ReduceSettings settings;
    std::uint64_t maxPixels = 100'000'000;
};

/// Reduces and writes; returns the program's exit status or raises ProgramError.
int RunReduce(const ReduceOptions& options);

/// The palette as JSON:
///
///     {"width": 640, "height": 480, "colors": [
///       {"color": "#c80000", "count": 1234, "share": 0.004, "rgb": [r, g, b], "cmyk": [c, m, y, k],
///        "hls": [h, l, s]}, ...], "transparent": 0}
///
/// Colours come with the most frequent first; `share` is of all pixels, `transparent` counts the pixels
/// without a colour. Inks are 0 to 255 as RGB2CMYK gives them, the hue is in degrees with pure red at 60 as
/// RGB2HLS gives it, lightness and saturation 0 to 1.
std::string PaletteJson(const IndexedPicture& picture);

}  // namespace tarvex::app
