#include "apps/support/program.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "apps/support/temporary_directory.h"

namespace tarvex::app::test {

namespace {

std::string Quoted(const std::string& word) {
    std::string out = "'";
    for (const char c : word) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

int StatusOf(int result) { return WIFEXITED(result) ? WEXITSTATUS(result) : 128 + WTERMSIG(result); }

}  // namespace

ProgramResult RunTarvex(const std::vector<std::string>& arguments, const std::string& input) {
    const TemporaryDirectory directory;
    WriteFile(directory / "in", input);
    std::string command = Quoted(TARVEX_PROGRAM);
    for (const std::string& argument : arguments) command += " " + Quoted(argument);
    command += " <" + Quoted(directory / "in") + " >" + Quoted(directory / "out") + " 2>" +
               Quoted(directory / "err");
    const int result = std::system(command.c_str());
    return {StatusOf(result), ReadFile(directory / "out"), ReadFile(directory / "err")};
}

RunningProgram::RunningProgram(const std::vector<std::string>& arguments, int errors) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe");
    std::vector<std::string> words = arguments;
    words.insert(words.begin(), "tarvex");
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    m_pid = fork();
    if (m_pid == 0) {
        dup2(ends[0], STDIN_FILENO);
        if (errors >= 0) dup2(errors, STDERR_FILENO);
        close(ends[0]);
        close(ends[1]);
        execv(TARVEX_PROGRAM, pointers.data());
        _exit(99);
    }
    close(ends[0]);
    m_input = ends[1];
}

void RunningProgram::Write(const std::string& text) const {
    if (write(m_input, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        throw std::runtime_error("the program does not read");
}

void RunningProgram::Signal(int signal) const { kill(m_pid, signal); }

int RunningProgram::Wait() {
    if (m_input < 0) return m_status;
    close(std::exchange(m_input, -1));
    int result = 0;
    waitpid(m_pid, &result, 0);
    return m_status = StatusOf(result);
}

}  // namespace tarvex::app::test
