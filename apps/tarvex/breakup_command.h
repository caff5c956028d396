// `tarvex breakup`: shapes to regions that can be stitched in one direction.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tarvex/picture.h"
#include "tarvex/stitch_arguments.h"

namespace tarvex::app {

struct BreakUpOptions {
    std::string input;
    std::string output;
    StitchFormat format = StitchFormat::Svg;
    std::string json;  ///< a second file, of everything; none when empty
    BreakUpInterrupts interrupts = BreakUpInterrupts::AfterPass;
    bool checkComplexity = true;
    std::optional<double> millimetreWidth;  ///< the page's width
    double mostSatin = 12;                  ///< millimetres
    std::uint64_t maxPixels = PictureLimits{}.maxPixels;
};

/// Returns the program's exit status or raises ProgramError. Islands that cannot be broken up are told on
/// standard error; it is no result when that is so for all.
int RunBreakUp(const BreakUpOptions& options);

/// Says on standard error, in one line, what was not broken up; raises ProgramError when nothing was, or the
/// work was interrupted.
void ReportStitches(const std::string& input, const StitchDesign& design);

}  // namespace tarvex::app
