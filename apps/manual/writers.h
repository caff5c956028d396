// The files that are made from the program's definition.
#pragma once

#include <string>

#include "manual/command_tree.h"

namespace tarvex::manual {

/// The man page tarvex(1), in the language of man(7); `date` is its date.
std::string WriteManPage(const Program& program, const std::string& date);

/// Completions that bash, zsh and fish load. They offer commands, options, the words that an option
/// takes, and files where a file is meant. bash needs a driver beside the tables: bash_driver.sh.
std::string WriteBashCompletion(const Program& program, const std::string& driver);
std::string WriteZshCompletion(const Program& program);
std::string WriteFishCompletion(const Program& program);

}  // namespace tarvex::manual
