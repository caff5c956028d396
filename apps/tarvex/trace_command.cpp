#include "tarvex/trace_command.h"

#include "tarvex/output.h"
#include "tarvex/picture.h"
#include "tarvex/program_error.h"

namespace tarvex::app {

int RunTrace(const TraceOptions& options) {
    CheckOutput(options.output);
    const Picture picture = ReadPicture(options.input, {options.maxPixels});
    static_cast<void>(picture);
    throw ProgramError(ExitStatus::NoResult, options.input,
                       "this build reads pictures but cannot trace them yet");
}

}  // namespace tarvex::app
