#include "apps/support/program.h"

#include <sys/wait.h>

#include <cstdlib>

#include "apps/support/temporary_directory.h"

namespace tarvex::app::test {

namespace {

std::string Quoted(const std::string& word) {
    std::string out = "'";
    for (const char c : word) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

}  // namespace

ProgramResult RunTarvex(const std::vector<std::string>& arguments, const std::string& input) {
    const TemporaryDirectory directory;
    WriteFile(directory / "in", input);
    std::string command = Quoted(TARVEX_PROGRAM);
    for (const std::string& argument : arguments) command += " " + Quoted(argument);
    command += " <" + Quoted(directory / "in") + " >" + Quoted(directory / "out") + " 2>" +
               Quoted(directory / "err");
    const int result = std::system(command.c_str());
    return {WIFEXITED(result) ? WEXITSTATUS(result) : 128 + WTERMSIG(result), ReadFile(directory / "out"),
            ReadFile(directory / "err")};
}

}  // namespace tarvex::app::test
