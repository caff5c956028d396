// The program's arguments: commands, their options, and the messages about them.
#pragma once

namespace tarvex::app {

/// Runs the program and returns its exit status. Every failure is one line on standard error.
int RunProgram(int argc, const char* const* argv);

}  // namespace tarvex::app
