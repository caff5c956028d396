#include "tarvex/input.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include "tarvex/program_error.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace tarvex::app {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void Fail(const std::string& path, const std::string& what) {
    throw ProgramError(ExitStatus::File, InputName(path), what);
}

std::vector<std::uint8_t> ReadStream(std::FILE* stream, std::uint64_t expected, const std::string& path,
                                     const InputLimits& limits) {
    constexpr std::size_t firstStep = std::size_t{64} * 1024;
    std::vector<std::uint8_t> bytes;
    bool sniffed = !limits.isWorthReading;
    std::size_t step = firstStep;
    for (;;) {
        const std::size_t before = bytes.size();
        if (before >= limits.maxBytes) Fail(path, "the input is longer than the limit allows");
        bytes.resize(before + step);
        const std::size_t got = std::fread(bytes.data() + before, 1, step, stream);
        bytes.resize(before + got);
        if (got < step && std::ferror(stream)) Fail(path, std::strerror(errno));
        if (!sniffed && (bytes.size() >= limits.sniffedBytes || got < step)) {
            if (!limits.isWorthReading(bytes)) return bytes;
            sniffed = true;
        }
        if (got < step) return bytes;
        // The rest of a regular file in one go, and anything else in steps that grow with it.
        const std::uint64_t rest = expected > bytes.size() ? expected - bytes.size() + 1 : bytes.size();
        const std::uint64_t allowed =
            limits.maxBytes - std::min<std::uint64_t>(limits.maxBytes, bytes.size()) + 1;
        step = static_cast<std::size_t>(std::max<std::uint64_t>(std::min(rest, allowed), firstStep));
    }
}

}  // namespace

std::string InputName(const std::string& path) { return path == "-" ? "standard input" : path; }

std::vector<std::uint8_t> ReadInput(const std::string& path, const InputLimits& limits) {
    if (path == "-") {
#ifdef _WIN32
        _setmode(_fileno(stdin), _O_BINARY);
#endif
        return ReadStream(stdin, 0, path, limits);
    }
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) Fail(path, "is a directory");
    const File file(std::fopen(path.c_str(), "rb"));
    if (!file) Fail(path, std::strerror(errno));
    std::uint64_t size = 0;
    if (std::filesystem::is_regular_file(path, ignored)) {
        const std::uintmax_t found = std::filesystem::file_size(path, ignored);
        if (found != static_cast<std::uintmax_t>(-1)) size = found;
    }
    return ReadStream(file.get(), size, path, limits);
}

}  // namespace tarvex::app
