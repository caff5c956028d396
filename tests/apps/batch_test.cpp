// Many files through the built program: each as though it were alone, whatever happens to the others.
#include "support/precompiled.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <thread>

#include "apps/support/program.h"
#include "tarvex/batch.h"
#include "tarvex/output.h"

namespace tarvex::app::test {
namespace {

namespace fs = std::filesystem;
/// A dark square `size` wide in a light picture.
std::string Square(int size) {
    std::string file = "P5 60 60 255\n";
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 60; ++x) file += x >= 5 && x < 5 + size && y >= 5 && y < 5 + size ? '\0' : '\xff';
    return file;
}

std::string Drawing(int size) {
    const std::string s = std::to_string(size);
    return "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 90 90'><path d='M5 5h" + s + "v9h-" + s +
           "z'/><circle cx='50' cy='50' r='" + s + "' fill='red'/></svg>";
}

const std::string BLANK = "P5 2 2 255\n\xff\xff\xff\xff";

/// Lines of standard error, in any order.
std::multiset<std::string> Lines(const std::string& text) {
    std::istringstream stream(text);
    std::multiset<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.insert(line);
    return lines;
}

TEST(Batch, EveryCommandDoesEachFileAsThoughItWereAlone) {
    const struct {
        Arguments command;
        const char* ending;
        bool isOfDrawings;
        const char* extra = nullptr;  // an option for a second file
    } cases[] = {
        {{"trace"}, ".svg", false},
        {{"trace", "--format", "json"}, ".json", false},
        {{"trace", "--mode", "centerline"}, ".svg", false},
        {{"trace", "--mode", "edges"}, ".svg", false},
        {{"trace", "--mode", "color"}, ".svg", false},
        {{"reduce", "--colors", "2"}, ".png", false, "--palette"},
        {{"region", "--seed", "8,8"}, ".svg", false},
        {{"region", "--seed", "8,8", "--breakup", "--format", "satin"}, ".svg", false},
        {{"breakup"}, ".svg", false, "--json"},
        {{"breakup", "--format", "png"}, ".png", true},
        {{"transform", "--rotate", "20"}, ".svg", true},
        {{"warp", "--type", "arch", "--amount", "20%"}, ".svg", true},
        {{"render", "--width", "50"}, ".png", true},
        {{"shape", "difference"}, ".svg", true},
        {{"shape", "union", "--raster"}, ".svg", true},
    };
    const TemporaryDirectory directory;
    Arguments pictures, drawings;
    for (int i = 0; i < 8; ++i) {
        pictures.push_back(directory / (std::to_string(i) + ".picture"));
        drawings.push_back(directory / (std::to_string(i) + ".drawing"));
        WriteFile(pictures.back(), Square(20 + 2 * i));
        WriteFile(drawings.back(), Drawing(20 + i));
    }
    WriteFile(directory / "b", Drawing(7));
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.command));
        const Arguments& inputs = c.isOfDrawings ? drawings : pictures;
        const Arguments last = c.command[0] == "shape" ? Arguments{directory / "b"} : Arguments{};
        const auto extra = [&c](const std::string& path) {
            return c.extra != nullptr ? Arguments{c.extra, path} : Arguments{};
        };
        const std::string out = directory / "out/", second = directory / "second/";
        const ProgramResult result =
            RunTarvex(c.command + Arguments{"-j4", "-o", out} + extra(second) + inputs + last);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "tarvex: 8 of 8 done\n");
        EXPECT_EQ(result.output, "");
        for (const std::string& input : inputs) {
            const std::string stem = fs::path(input).stem();
            const std::string one = directory / "one" + std::string(c.ending);
            const std::string other = directory / "two.json";
            ASSERT_EQ(
                RunTarvex(c.command + Arguments{"-o", one} + extra(other) + Arguments{input} + last).status,
                0);
            EXPECT_EQ(ReadFile(out + stem + c.ending), ReadFile(one));
            if (c.extra != nullptr) {
                EXPECT_EQ(ReadFile(second + stem + ".json"), ReadFile(other));
            }
        }
        fs::remove_all(out);
        fs::remove_all(second);
    }
}

TEST(Batch, AFailureIsToldAndStopsNothing) {
    const TemporaryDirectory directory;
    WriteFile(directory / "good.pgm", Square(20));
    WriteFile(directory / "blank.pgm", BLANK);
    WriteFile(directory / "text.png", "no picture");
    const std::string good = directory / "good.pgm", blank = directory / "blank.pgm";
    const struct {
        Arguments inputs;
        int status;
        const char* summary;
        Arguments failed;
    } cases[] = {
        {{blank, good}, 1, "1 of 2 done, 1 failed", {blank + ": no outline found"}},
        {{directory / "text.png", good, blank, directory / "none.png", directory / "."},
         3,
         "1 of 5 done, 4 failed",
         {blank + ": no outline", directory / "none.png: No such file", directory / "text.png: not a picture",
          directory / ".: is a directory"}},
        {{good, good, directory / "./good.pgm", blank}, 1, "1 of 2 done, 1 failed", {blank}},
    };
    for (const auto& c : cases) {
        for (const char* jobs : {"1", "7"}) {
            const std::string out = directory / "out";
            fs::create_directory(out);
            const ProgramResult result = RunTarvex(Arguments{"trace", "--jobs", jobs, "-o", out} + c.inputs);
            EXPECT_EQ(result.status, c.status);
            const auto lines = Lines(result.errors);
            EXPECT_EQ(lines.size(), c.failed.size() + 1) << result.errors;
            EXPECT_THAT(result.errors, testing::EndsWith(std::string("tarvex: ") + c.summary + "\n"));
            for (const std::string& failed : c.failed)
                EXPECT_THAT(lines, testing::Contains(testing::StartsWith("tarvex: " + failed)));
            EXPECT_EQ(std::distance(fs::directory_iterator(out), {}), 1) << "good.svg and nothing else";
            EXPECT_TRUE(fs::exists(out + "/good.svg"));
            fs::remove_all(out);
        }
    }
}

TEST(Batch, WhatMakesNoSenseIsSaidBeforeAnythingIsWritten) {
    const TemporaryDirectory directory;
    for (const char* name : {"a.pgm", "a.png", "b.pgm"}) WriteFile(directory / name, Square(20));
    fs::create_directory(directory / "links");
    fs::create_symlink(directory / "a.pgm", directory / "links/b.svg");
    ExpectFailures(
        {
            {"trace @/a.pgm @/b.pgm @/a.png -o @/o/", 2, "@/a.pgm and @/a.png: both would become @/o/a.svg"},
            {"trace @/a.pgm @/b.pgm -o @/c.svg", 2, "2 inputs need a directory"},
            {"trace @/a.pgm @/b.pgm -o -", 2, "2 inputs need a directory"},
            {"trace - -o @/o/", 2, "standard input has no name"},
            {"trace - @/a.pgm -o @/o/", 2, "standard input goes alone"},
            {"trace -o @/o/", 2, "input is required"},
            {"trace @/a.pgm @/b.pgm -o @/o/ --jobs 0", 2, "'0' is not a whole number from 1 to 256"},
            {"trace @/a.pgm @/b.pgm -o @/links", 2, "it is a link to one of the inputs"},
            {"trace @/a.pgm @/b.pgm -o @/none/o/", 3, "cannot be made: No such file or directory"},
            {"breakup @/a.pgm @/b.pgm -o @/o/ --json @/o/ --format json", 2, "to the same place"},
            {"breakup @/a.pgm @/b.pgm -o @/o/ --json @/c.json", 2, "--json: 2 inputs need a directory"},
            {"shape union @/a.pgm -o @/o/", 2, "there are not enough of them"},
            {"shape union @/a.pgm @/b.pgm - -o @/o/", 2, "not both"},
        },
        directory);
}

TEST(Batch, FilesMayHaveAnyName) {
    const TemporaryDirectory directory;
    const Arguments names = {"[a]",      "[b].pgm", "{}",       "-c",  "d e.pgm",
                             "f\ng.pgm", "trace",   "\xff.pgm", ".pgm"};
    const fs::path before = fs::current_path();
    for (const std::string& name : names) WriteFile(directory / name, Square(20));
    fs::current_path(directory / ".");
    const ProgramResult result = RunTarvex(Arguments{"trace", "-o", "out/", "--"} + names);
    const ProgramResult failing = RunTarvex({"trace", "-o", "out/", "f\ng.pgm", "h\n\x1b[2J"});
    fs::current_path(before);
    EXPECT_EQ(result.errors, "tarvex: 9 of 9 done\n");
    for (const char* stem : {"[a]", "[b]", "{}", "-c", "d e", "f\ng", "trace", "\xff", ".pgm"})
        EXPECT_TRUE(fs::exists(directory / "out/" + stem + ".svg")) << stem;
    EXPECT_THAT(failing.errors, testing::StartsWith("tarvex: h??[2J: No such file"));
}

TEST(Batch, InfoKeepsTheOrderOfItsInputs) {
    const TemporaryDirectory directory;
    Arguments inputs;
    std::string one;
    for (int i = 0; i < 700; ++i) {
        inputs.push_back(directory / std::to_string(i));
        WriteFile(inputs.back(), i == 0 ? "P5 3000 2000 255\n" + std::string(6'000'000, 'x') : Square(20));
        if (i % 50 == 49) inputs.push_back(directory / ("missing" + std::to_string(i)));
    }
    const ProgramResult result = RunTarvex(Arguments{"info", "--jobs", "8"} + inputs);
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.errors, testing::EndsWith("tarvex: 700 of 714 done, 14 failed\n"));
    std::istringstream lines(result.output);
    int next = 0;
    for (std::string line; std::getline(lines, line); ++next)
        ASSERT_THAT(line, testing::StartsWith(directory / std::to_string(next) + ": PNM picture"));
    EXPECT_EQ(next, 700);
}

/// An input that keeps the program waiting until it gets something.
class Fifo {
  public:
    explicit Fifo(std::string path) : m_path(std::move(path)) {
        if (mkfifo(m_path.c_str(), 0600) != 0) throw std::runtime_error("no fifo");
    }
    void Feed(const std::string& content) const { WriteFile(m_path, content); }

  private:
    std::string m_path;
};

bool Comes(const std::function<bool()>& condition) {
    for (int i = 0; i < 1000; ++i) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

TEST(Batch, CtrlCKeepsWhatIsDoneAndLeavesNothingElse) {
    for (const auto& [signal, status] : {std::pair(SIGINT, 130), std::pair(SIGTERM, 143)}) {
        const TemporaryDirectory directory;
        const Fifo never(directory / "never");
        WriteFile(directory / "a", Square(20));
        WriteFile(directory / "b", Square(30));
        RunningProgram program({"breakup", directory / "a", directory / "never", directory / "b", "-j2", "-o",
                                directory / "out/"});
        EXPECT_TRUE(Comes([&] { return fs::exists(directory / "out/b.svg"); }));
        program.Signal(signal);
        EXPECT_EQ(program.Wait(), status);
        EXPECT_TRUE(fs::exists(directory / "out/a.svg"));
        EXPECT_EQ(std::distance(fs::directory_iterator(directory / "out"), {}), 2);
    }
}

TEST(Batch, AnInterruptionWhileThreadsWriteLeavesNoPartOfAFile) {
    const TemporaryDirectory directory;
    const auto interrupted = [&directory] {
        RemoveOutputOnInterrupt();
        const rlimit limit{10'000, 10'000};
        setrlimit(RLIMIT_FSIZE, &limit);
        // The first to write too much asks for the end, and no thread gets further than it was.
        std::signal(SIGXFSZ, [](int) {
            std::raise(SIGINT);
            for (;;) pause();
        });
        FilePlan plan;
        for (const char* name : {"a", "b", "c"}) plan.tasks.push_back({name, directory / name, {}, false});
        plan.jobs = 3;
        std::_Exit(RunFiles("writing", plan, [](const FileTask& task) {
            WriteOutput(task.output, std::string(100'000, 'x'));
        }));
    };
    EXPECT_EXIT(interrupted(), testing::ExitedWithCode(130), "tarvex: interrupted: 0 of 3 done\n");
    EXPECT_EQ(directory.Content(), "");
}

TEST(Batch, OnATerminalItShowsHowFarItIsAndClearsThatAtTheEnd) {
    const TemporaryDirectory directory;
    const Fifo late(directory / "late");
    WriteFile(directory / "a", Square(20));
    WriteFile(directory / "bad", "junk");
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const int errors = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    RunningProgram program(
        {"trace", directory / "a", directory / "bad", directory / "late", "-j1", "-o", directory / "out/"},
        errors);
    close(errors);
    std::string shown;
    const auto readOn = [&](const std::string& wanted) {
        char some[512];
        while (shown.find(wanted) == std::string::npos) {
            const ssize_t got = read(terminal, some, sizeof some);
            if (got <= 0) return false;
            shown.append(some, static_cast<std::size_t>(got));
        }
        return true;
    };
    EXPECT_TRUE(readOn("\rtracing [================>       ] 1 of 3, 1 failed, 0:0")) << shown;
    late.Feed(Square(30));
    EXPECT_TRUE(readOn("2 of 3 done, 1 failed")) << shown;
    EXPECT_THAT(shown, testing::ContainsRegex("left\r +\rtarvex: 2 of 3 done"));
    EXPECT_THAT(shown, testing::HasSubstr("bad: not a picture"));
    EXPECT_EQ(program.Wait(), 3);
    close(terminal);
}

}  // namespace
}  // namespace tarvex::app::test
