#include "tarvex/output.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <mutex>

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

// The names of the files being written aside, one for each thread at work. A name goes in before its file is
// made and out when it is renamed or removed, so that a signal handler on the only thread that writes can
// remove what there is: it touches nothing else. Where several threads write, the mutex holds the table
// still, and the files with it, for the one that ends the program.
std::array<std::atomic<const char*>, MOST_WRITERS> asides{};
std::mutex asidesMutex;
static_assert(std::atomic<const char*>::is_always_lock_free);

std::atomic<bool> areInterruptsHeld{false};
std::atomic<int> heldSignal{0};
static_assert(std::atomic<int>::is_always_lock_free);

void RemoveAsides() {
    for (const std::atomic<const char*>& aside : asides) {
        if (const char* name = aside.load(std::memory_order_acquire); name != nullptr) std::remove(name);
    }
}

extern "C" void OnInterrupt(int signal) {
    if (areInterruptsHeld) {
        heldSignal = signal;
        return;
    }
    RemoveAsides();
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
            m_path = target.parent_path() / name;
            m_name = m_path.string();
            const std::lock_guard lock(asidesMutex);
            Publish();
            m_file.reset(OpenFile(m_path, FILE_MODE("wbx")));
            if (m_file) return;
            const int error = errno;
            Withdraw();
            errno = error;
            if (error != EEXIST || attempt == 1000) FailByErrno(path);
        }
    }

    ~AsideFile() {
        m_file.reset();
        if (m_slot == nullptr) return;
        const std::lock_guard lock(asidesMutex);
        std::error_code ignored;
        fs::remove(m_path, ignored);
        Withdraw();
    }
    AsideFile(const AsideFile&) = delete;
    AsideFile& operator=(const AsideFile&) = delete;

    std::FILE* Stream() { return m_file.get(); }

    void RenameTo(const fs::path& target, const std::string& path) {
        if (std::fclose(m_file.release()) != 0) FailByErrno(path);
        const std::lock_guard lock(asidesMutex);
        std::error_code error;
        fs::rename(m_path, target, error);
        if (!error) return Withdraw();
        const std::string what = error.message();
        Fail(path, what);
    }

  private:
    struct CloseFile {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    // The caller holds the mutex for these.
    void Publish() {
        for (std::atomic<const char*>& slot : asides) {
            if (slot.load(std::memory_order_relaxed) != nullptr) continue;
            m_slot = &slot;
            slot.store(m_name.c_str(), std::memory_order_release);
            return;
        }
    }
    void Withdraw() {
        if (m_slot != nullptr) m_slot->store(nullptr, std::memory_order_release);
        m_slot = nullptr;
    }

    fs::path m_path;
    std::string m_name;
    std::atomic<const char*>* m_slot = nullptr;
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

HeldInterrupts::HeldInterrupts() {
    heldSignal = 0;
    areInterruptsHeld = true;
}

HeldInterrupts::~HeldInterrupts() { areInterruptsHeld = false; }

int HeldInterrupts::Signal() const { return heldSignal; }

void HeldInterrupts::EndProgram() const {
    const std::lock_guard lock(asidesMutex);  // never given back: no file is made or renamed any more
    RemoveAsides();
    std::_Exit(128 + heldSignal);
}

}  // namespace tarvex::app
