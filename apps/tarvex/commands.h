// How a command joins the program: it adds itself and its options to the parser, and when it is the
// one chosen, the action it leaves behind runs.
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tarvex::app {

/// What the chosen command does; returns the exit status or raises ProgramError.
using Action = std::function<int()>;

/// The program's version, "0.1.0".
extern const char* const VERSION;

/// Gives the parser the whole program: what it says of itself, and its commands. The man page and the shells'
/// completions are made from that, too.
void DefineProgram(CLI::App& program, Action& action);

/// `tarvex trace`.
void AddTraceCommand(CLI::App& program, Action& action);
/// `tarvex reduce`.
void AddReduceCommand(CLI::App& program, Action& action);
/// `tarvex transform`.
void AddTransformCommand(CLI::App& program, Action& action);
/// `tarvex warp`.
void AddWarpCommand(CLI::App& program, Action& action);
/// `tarvex render`.
void AddRenderCommand(CLI::App& program, Action& action);
/// `tarvex text`.
void AddTextCommand(CLI::App& program, Action& action);
/// `tarvex region`.
void AddRegionCommand(CLI::App& program, Action& action);
/// `tarvex breakup`.
void AddBreakUpCommand(CLI::App& program, Action& action);
/// `tarvex shape`.
void AddShapeCommand(CLI::App& program, Action& action);
/// `tarvex info`.
void AddInfoCommand(CLI::App& program, Action& action);

// ---------------------------------------------------------------------------------------------
// What several commands' options share

/// Checks that an option's value is a whole number from `least` to `most`.
CLI::Validator WholeNumber(std::uint64_t least, std::uint64_t most);

/// The name of FileName()'s check, by which an option that takes a file is known.
inline constexpr const char* FILE_CHECK = "file";

/// Checks that a file's name is one.
CLI::Validator FileName();

/// Adds `--max-pixels`.
void AddMaxPixels(CLI::App& command, std::uint64_t& maxPixels);

/// Adds an option that takes "auto" (no value) or an integer from `least` to `most`.
void AddAutoOrInteger(CLI::App& command, const std::string& name, std::optional<int>& value, int least,
                      int most, const std::string& description);

}  // namespace tarvex::app
