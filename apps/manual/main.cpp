// Writes the man page and the shells' completions into a folder, when the program is built:
// tarvex_manual FOLDER DATE BASH_DRIVER.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "manual/writers.h"
#include "tarvex/commands.h"

namespace {

bool Write(const std::filesystem::path& path, const std::string& content) {
    std::ofstream file(path, std::ios::binary);
    file << content;
    file.close();
    if (!file) std::fprintf(stderr, "tarvex_manual: %s cannot be written\n", path.c_str());
    return static_cast<bool>(file);
}

std::string Read(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    const std::filesystem::path folder = argv[1];
    CLI::App parser;
    tarvex::app::Action action;
    tarvex::app::DefineProgram(parser, action);
    const auto program = tarvex::manual::ReadProgram(parser);
    const bool isWritten =
        Write(folder / "tarvex.1", tarvex::manual::WriteManPage(program, argv[2])) &&
        Write(folder / "tarvex.bash", tarvex::manual::WriteBashCompletion(program, Read(argv[3]))) &&
        Write(folder / "_tarvex", tarvex::manual::WriteZshCompletion(program)) &&
        Write(folder / "tarvex.fish", tarvex::manual::WriteFishCompletion(program));
    return isWritten ? 0 : 1;
}
