// Writes the man page and the shells' completions into a folder, when the program is built:
// tarvex_manual FOLDER DATE BASH_DRIVER.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
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

bool WriteAll(const std::filesystem::path& folder, const char* date, const char* bashDriver) {
    CLI::App parser;
    tarvex::app::Action action;
    tarvex::app::DefineProgram(parser, action);
    const auto program = tarvex::manual::ReadProgram(parser);
    return Write(folder / "tarvex.1", tarvex::manual::WriteManPage(program, date)) &&
           Write(folder / "tarvex.bash", tarvex::manual::WriteBashCompletion(program, Read(bashDriver))) &&
           Write(folder / "_tarvex", tarvex::manual::WriteZshCompletion(program)) &&
           Write(folder / "tarvex.fish", tarvex::manual::WriteFishCompletion(program));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    try {
        return WriteAll(argv[1], argv[2], argv[3]) ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tarvex_manual: %s\n", error.what());
        return 1;
    }
}
