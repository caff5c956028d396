// `tarvex render`: a drawing as a picture.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tarvex/picture.h"

namespace tarvex::app {

struct RenderOptions {
    std::string input;
    std::string output;
    std::optional<int> width;  ///< in pixels; otherwise the longer side has LONGER_SIDE
    std::uint64_t maxPixels = PictureLimits{}.maxPixels;
};

inline constexpr int LONGER_SIDE = 1024;
inline constexpr int MAX_RENDERED_WIDTH = 100'000;

/// Returns the program's exit status or raises ProgramError.
int RunRender(const RenderOptions& options);

}  // namespace tarvex::app
