// `tarvex trace --mode edges`: the edges of a picture as strokes.
#pragma once

#include "tarvex/trace_command.h"

namespace tarvex::app {

/// Traces and writes the result; returns the program's exit status or raises ProgramError.
int RunEdgeTrace(const TraceOptions& options);

}  // namespace tarvex::app
