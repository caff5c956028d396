#include "apps/support/program.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarvex::app::test {

namespace {

std::string Quoted(const std::string& word) {
    std::string out = "'";
    for (const char c : word) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

/// The text with the directory in the place of each @.
std::string Placed(const std::string& text, const TemporaryDirectory& directory) {
    std::string placed;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 2, "@/") != 0) {
            placed += text[i];
        } else {
            placed += directory / "";
            ++i;
        }
    }
    return placed;
}

Arguments WordsOf(const std::string& line) {
    Arguments words;
    bool isQuoted = false, isInWord = false;
    for (const char c : line) {
        if (c == ' ' && !isQuoted) {
            isInWord = false;
            continue;
        }
        if (!std::exchange(isInWord, true)) words.emplace_back();
        if (c == '\'') {
            isQuoted = !isQuoted;
        } else {
            words.back() += c;
        }
    }
    return words;
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

Arguments operator+(Arguments a, const Arguments& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

std::string OutputOf(const Arguments& arguments, const std::string& input) {
    const ProgramResult result = RunTarvex(arguments, input);
    EXPECT_EQ(result.status, 0) << testing::PrintToString(arguments);
    EXPECT_EQ(result.errors, "") << testing::PrintToString(arguments);
    return result.output;
}

Json Info(const std::string& content) { return Json::parse(OutputOf({"info", "-", "--json"}, content)); }

void ExpectFrame(const Json& info, const std::vector<double>& frame, double slack) {
    ASSERT_TRUE(info.at("frame").is_array());
    for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(info["frame"][i].get<double>(), frame[i], slack) << i;
}

void ExpectFailures(std::initializer_list<Failure> failures, const TemporaryDirectory& directory) {
    const auto before = directory.Files();
    for (const Failure& failure : failures) {
        SCOPED_TRACE(failure.arguments);
        const ProgramResult result = RunTarvex(WordsOf(Placed(failure.arguments, directory)), failure.input);
        EXPECT_EQ(result.status, failure.status);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, testing::StartsWith("tarvex: "));
        EXPECT_THAT(result.errors, testing::HasSubstr(Placed(failure.message, directory)));
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
        if (failure.status == 2) {
            EXPECT_THAT(result.errors, testing::EndsWith("--help\"\n"));
        }
        EXPECT_TRUE(directory.Files() == before) << "files were made or changed";
    }
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
