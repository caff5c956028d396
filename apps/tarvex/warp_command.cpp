#include "tarvex/warp_command.h"

#include "tarvex/bend.h"
#include "tarvex/drawing_change.h"
#include "tarvex/input.h"
#include "tarvex/program_error.h"

namespace tarvex::app {

namespace {

constexpr std::size_t MAX_NODES = 10'000'000;

}  // namespace

int RunWarp(const WarpOptions& options) {
    const auto apply = [&options](SvgDocument& drawing, const DRECT& frame) {
        const double whole = frame.bottom - frame.top;
        Bender bend(frame, options.type, options.isPercent ? options.amount / 100 * whole : options.amount);
        std::size_t nodes = 0;
        for (SvgElement& element : drawing.elements) {
            nodes += bend.Bend(element.outline);
            if (nodes <= MAX_NODES) continue;
            throw ProgramError(ExitStatus::NoResult, InputName(options.input),
                               "the result has more than " + std::to_string(MAX_NODES) + " nodes");
        }
        return 1.0;
    };
    return ChangeDrawing({options.input, options.output, options.precision, apply});
}

}  // namespace tarvex::app
