// Where the break-up of `tarvex breakup` and of `tarvex region` goes.
#pragma once

#include <optional>
#include <string>

#include "tarvex/stitch_design.h"

namespace tarvex::app {

enum class StitchFormat { Svg, Satin, Json, Png };

/// By the word given for --format, or else the output's ending (satin has none of its own). Raises
/// CLI::ValidationError.
StitchFormat StitchFormatOf(const std::optional<std::string>& word, const std::string& output);

/// The design in a format, as the bytes of a file.
std::string WriteStitches(const StitchDesign& design, StitchFormat format, double mostSatin);

/// Makes Ctrl-C a request to stop, for as long as it lives: the break-up gives up after its pass. A second
/// Ctrl-C ends the program at once. Does nothing where Ctrl-C is ignored, nor on Windows, where the break-up
/// looks at the Escape key.
class InterruptsStopBreakUp {
  public:
    InterruptsStopBreakUp();
    InterruptsStopBreakUp(const InterruptsStopBreakUp&) = delete;
    InterruptsStopBreakUp& operator=(const InterruptsStopBreakUp&) = delete;
    ~InterruptsStopBreakUp();

  private:
    void (*m_former)(int);
};

}  // namespace tarvex::app
