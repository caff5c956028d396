// `tarvex trace --mode centerline`: a line drawing to strokes with their widths.
#pragma once

#include "tarvex/trace_command.h"

namespace tarvex::app {

/// Traces and writes the result; returns the program's exit status or raises ProgramError.
int RunCenterlineTrace(const TraceOptions& options);

}  // namespace tarvex::app
