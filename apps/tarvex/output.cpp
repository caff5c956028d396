#include "tarvex/output.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include "tarvex/program_error.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <process.h>
#else
#include <unistd.h>
#endif

namespace tarvex::app {

namespace fs = std::filesystem;

namespace {

#ifdef _WIN32
int ProcessId() { return _getpid(); }
bool MayWrite(const fs::path& path) { return _waccess(path.c_str(), 2) == 0; }
std::FILE* OpenFile(const fs::path& path, const wchar_t* mode) { return _wfopen(path.c_str(), mode); }
#define FILE_MODE(mode) L##mode
#else
int ProcessId() { return static_cast<int>(getpid()); }
bool MayWrite(const fs::path& path) { return access(path.c_str(), W_OK) == 0; }
std::FILE* OpenFile(const fs::path& path, const char* mode) { return std::fopen(path.c_str(), mode); }
#define FILE_MODE(mode) mode
#endif

[[noreturn]] void Fail(const std::string& path, const std::string& what) {
    throw ProgramError(ExitStatus::File, OutputName(path), "cannot be written: " + what);
}

[[noreturn]] void FailByErrno(const std::string& path) { Fail(path, std::strerror(errno)); }

// A signal handler may touch little: a fixed buffer, published by an atomic flag, holds the name of
// the file to remove.
char pendingName[4096];
std::atomic<bool> isPending{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void OnInterrupt(int signal) {
    if (isPending.load(std::memory_order_acquire)) std::remove(pendingName);
    std::_Exit(128 + signal);
}

/// A file written aside: gone at the end of its life, unless it was renamed.
class AsideFile {
  public:
    AsideFile(const fs::path& target, const std::string& path) {
        for (int attempt = 0;; ++attempt) {
            const std::string suffix = std::to_string(ProcessId()) + "-" + std::to_string(attempt) + ".tmp";
            std::string name = ".";
            name += target.filename().string().substr(0, 200) + "." + suffix;
            m_name = target.parent_path() / name;
            Publish();
            m_file.reset(OpenFile(m_name, FILE_MODE("wbx")));
            if (m_file) return;
            isPending.store(false, std::memory_order_release);
            if (errno != EEXIST || attempt == 1000) FailByErrno(path);
        }
    }

    ~AsideFile() {
        m_file.reset();
        if (!isPending.exchange(false)) return;
        std::error_code ignored;
        fs::remove(m_name, ignored);
    }
    AsideFile(const AsideFile&) = delete;
    AsideFile& operator=(const AsideFile&) = delete;

    std::FILE* Stream() { return m_file.get(); }

    void RenameTo(const fs::path& target, const std::string& path) {
        if (std::fclose(m_file.release()) != 0) FailByErrno(path);
        std::error_code error;
        fs::rename(m_name, target, error);
        if (error) Fail(path, error.message());
        isPending.store(false, std::memory_order_release);
    }

  private:
    struct CloseFile {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void Publish() {
        const std::string name = m_name.string();
        if (name.size() >= sizeof pendingName) return;
        std::memcpy(pendingName, name.c_str(), name.size() + 1);
        isPending.store(true, std::memory_order_release);
    }

    fs::path m_name;
    std::unique_ptr<std::FILE, CloseFile> m_file;
};

void WriteAll(std::FILE* stream, std::string_view content, const std::string& path) {
    if (std::fwrite(content.data(), 1, content.size(), stream) != content.size() ||
        std::fflush(stream) != 0) {
        FailByErrno(path);
    }
}

void WriteStandardOutput(std::string_view content) {
#ifdef _WIN32
    _setmode(_fileno(stdout), _O_BINARY);
#endif
    WriteAll(stdout, content, "-");
}

/// Where the content goes in the end: the file a link leads to, else the path itself.
fs::path Target(const std::string& path) {
    std::error_code error;
    if (fs::is_symlink(path, error)) {
        fs::path resolved = fs::canonical(path, error);
        if (!error) return resolved;
    }
    return path;
}

bool IsSpecial(const fs::path& target) {
    std::error_code ignored;
    const fs::file_status status = fs::status(target, ignored);
    return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

void WriteDirectly(const fs::path& target, std::string_view content, const std::string& path) {
    std::FILE* stream = OpenFile(target, FILE_MODE("wb"));
    if (stream == nullptr) FailByErrno(path);
    const std::size_t written = std::fwrite(content.data(), 1, content.size(), stream);
    if (std::fclose(stream) != 0 || written != content.size()) FailByErrno(path);
}

}  // namespace

std::string OutputName(const std::string& path) { return path == "-" ? "standard output" : path; }

void CheckOutput(const std::string& path) {
    if (path == "-") return;
    const fs::path target = Target(path);
    std::error_code ignored;
    if (fs::is_directory(target, ignored)) Fail(path, "is a directory");
    const fs::path directory = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (!fs::is_directory(directory, ignored)) Fail(path, "its directory does not exist");
    // A file that its owner protected is not replaced behind its back.
    if (fs::exists(target, ignored) && !MayWrite(target)) FailByErrno(path);
    if (!IsSpecial(target) && !MayWrite(directory)) FailByErrno(path);
}

void CheckOutput(const std::string& path, const std::string& input) {
    CheckOutput(path);
    if (path == "-" || input == "-") return;
    std::error_code ignored;
    if (fs::is_regular_file(path, ignored) && fs::equivalent(path, input, ignored))
        Fail(path, "it is the input");
}

void WriteOutput(const std::string& path, std::string_view content) {
    if (path == "-") return WriteStandardOutput(content);
    CheckOutput(path);
    const fs::path target = Target(path);
    if (IsSpecial(target)) return WriteDirectly(target, content, path);
    AsideFile aside(target, path);
    WriteAll(aside.Stream(), content, path);
    aside.RenameTo(target, path);
}

void RemoveOutputOnInterrupt() {
    // What whoever started the program has it ignore (nohup, a shell's background jobs) stays ignored.
    const auto handle = [](int signal) {
        if (std::signal(signal, OnInterrupt) == SIG_IGN) std::signal(signal, SIG_IGN);
    };
    handle(SIGINT);
    handle(SIGTERM);
#ifndef _WIN32
    handle(SIGHUP);
    // A closed pipe and a full quota are errors of the write, told like any other.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
#endif
}

}  // namespace tarvex::app
