// `tarvex region`: the outlines of the colour region around a pixel, or its stitch regions.
#pragma once

#include <cstdint>
#include <string>

#include "tarvex/picture.h"
#include "tarvex/stitch_arguments.h"

namespace tarvex::app {

struct RegionOptions {
    std::string input;
    std::string output;
    int seedX = 0;
    int seedY = 0;
    int tolerance = 0;  ///< how far a colour may be from the seed's, in levels of red, green and blue
    bool isSmooth = true;
    bool isBrokenUp = false;
    StitchFormat format = StitchFormat::Svg;
    BreakUpInterrupts interrupts = BreakUpInterrupts::AfterPass;
    std::uint64_t maxPixels = PictureLimits{}.maxPixels;
};

/// Returns the program's exit status or raises ProgramError.
int RunRegion(const RegionOptions& options);

}  // namespace tarvex::app
