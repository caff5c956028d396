// `tarvex warp`: a drawing bent between two arcs.
#pragma once

#include <array>
#include <optional>
#include <string>

namespace tarvex::app {

/// What `--type` calls the presets of CEnvelop, from 1.
inline constexpr std::array<const char*, 10> WARP_NAMES = {
    "dent-top", "dent-bottom", "waist", "bulge-top",  "bulge-bottom",
    "barrel",   "sag",         "arch",  "taper-left", "taper-right"};

/// How the help writes what takes one of them.
inline constexpr const char* WARP_VALUE = "TYPE";

struct WarpOptions {
    std::string input;
    std::string output;
    int type = 1;       ///< 1..10
    double amount = 0;  ///< in the drawing's units, or percent of the outlines' height
    bool isPercent = false;
    std::optional<int> precision;
};

/// Returns the program's exit status or raises ProgramError.
int RunWarp(const WarpOptions& options);

}  // namespace tarvex::app
