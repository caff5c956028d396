// Where the break-up of `tarvex breakup` and of `tarvex region` goes.
#pragma once

#include <string>

#include "tarvex/argument_values.h"
#include "tarvex/stitch_design.h"

namespace tarvex::app {

enum class StitchFormat { Svg, Satin, Json, Png };
/// In the order of StitchFormat; satin has no ending of its own.
inline constexpr FormatName STITCH_FORMATS[] = {
    {"svg", ".svg"}, {"satin", ".svg"}, {"json", ".json"}, {"png", ".png"}};

/// The design in a format, as the bytes of a file.
std::string WriteStitches(const StitchDesign& design, StitchFormat format, double mostSatin);

/// What Ctrl-C does to a break-up.
enum class BreakUpInterrupts {
    AfterPass,  ///< it asks it to stop; a second Ctrl-C ends the program at once
    AtOnce      ///< what it did before: for one of several break-ups, which cannot stop alone
};

/// Makes Ctrl-C a request to stop, for as long as it lives: the break-up gives up after its pass. Does
/// nothing where Ctrl-C is ignored, nor on Windows, where the break-up looks at the Escape key.
class InterruptsStopBreakUp {
  public:
    explicit InterruptsStopBreakUp(BreakUpInterrupts interrupts);
    InterruptsStopBreakUp(const InterruptsStopBreakUp&) = delete;
    InterruptsStopBreakUp& operator=(const InterruptsStopBreakUp&) = delete;
    ~InterruptsStopBreakUp();

  private:
    void (*m_former)(int) = nullptr;
    bool m_isActive = false;
};

}  // namespace tarvex::app
