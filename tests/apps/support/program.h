// Runs the built program.
#pragma once

#include <string>
#include <vector>

namespace tarvex::app::test {

struct ProgramResult {
    int status = -1;  ///< exit status, or 128 + the number of the signal that ended it
    std::string output;
    std::string errors;
};

/// Runs `tarvex ARGUMENTS...` with `input` on its standard input, to its end.
ProgramResult RunTarvex(const std::vector<std::string>& arguments, const std::string& input = {});

}  // namespace tarvex::app::test
