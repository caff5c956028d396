// The built program: every failure is one line, a status of its own, and no file.
#include "support/precompiled.h"

#include <csignal>
#include <filesystem>

#include <nlohmann/json.hpp>

#include "apps/support/program.h"
#include "apps/support/sample_pictures.h"
#include "apps/support/temporary_directory.h"

namespace tarvex::app::test {
namespace {

struct FailureCase {
    std::vector<std::string> arguments;  // @ stands for the test's directory
    int status;
    const char* message;  // part of the line; @ as above
    std::string input = {};
};

std::string Placed(std::string text, const TemporaryDirectory& directory) {
    const std::size_t at = text.find('@');
    return at == std::string::npos ? text : directory / text.substr(at + 2);
}

TEST(Program, EveryFailureIsOneLineAStatusAndNoFile) {
    const TemporaryDirectory directory;
    WriteFile(directory / "good.pgm", "P5 2 1 255\nab");
    WriteFile(directory / "cut.pgm", "P5 2 1 255\na");
    WriteFile(directory / "none.pgm", "P5 0 1 255\n");
    WriteFile(directory / "huge.pgm", "P5 100000 100000 255\na");
    WriteFile(directory / "large.pbm", "P4 10000 10000\n" + std::string(std::size_t{1250} * 10000, '\x0f'));
    WriteFile(directory / "text.png", "no picture");
    WriteFile(directory / "empty.png", "");
    const FileBytes png = MakePng(RandomSamples(40, 40, 1, 8, 1), {});
    WriteFile(directory / "cut.png", std::string(png.begin(), png.end() - 30));
    const std::string before = directory.Content();

    const std::string out = "@/out.svg";
    const FailureCase cases[] = {
        {{}, 2, "a command is required"},
        {{"frob"}, 2, "frob: there is no such command"},
        {{"--frob"}, 2, "--frob: unknown argument"},
        {{"trace"}, 2, "input is required"},
        {{"trace", "@/good.pgm"}, 2, "--output is required"},
        {{"trace", "@/good.pgm", "-o", out, "--bogus"}, 2, "--bogus: unknown argument"},
        {{"trace", "--bogus"}, 2, "--bogus: unknown argument"},
        {{"trace", "@/good.pgm", "more", "-o", out}, 2, "--output: 2 inputs need a directory"},
        {{"trace", "@/good.pgm", "-o", "@/out.pdf"}, 2, "neither .svg nor .json"},
        {{"trace", "@/good.pgm", "-o", "@/out"}, 2, "neither .svg nor .json"},
        {{"trace", "@/good.pgm", "-o", out, "--format", "pdf"}, 2, "--format: 'pdf' is neither svg nor json"},
        {{"trace", "@/good.pgm", "-o", out, "--mode", "colour"}, 2, "--mode: 'colour' is not a mode"},
        {{"trace", "@/good.pgm", "-o", out, "--threshold", "256"},
         2,
         "'256' is not a whole number from 0 to 255"},
        {{"trace", "@/good.pgm", "-o", out, "--threshold", "12x"}, 2, "'12x' is not a whole number"},
        {{"trace", "@/good.pgm", "-o", out, "--detail", "0"}, 2, "--detail: '0'"},
        {{"trace", "@/good.pgm", "-o", out, "--precision", "-1"}, 2, "--precision: '-1'"},
        {{"trace", "@/good.pgm", "-o", out, "--min-points", "1e3"}, 2, "--min-points: '1e3'"},
        {{"trace", "@/good.pgm", "-o", out, "--max-pixels", "99999999999999999999"},
         2,
         "--max-pixels: '9999"},

        {{"trace", "@/missing.png", "-o", out}, 3, "@/missing.png: No such file or directory"},
        {{"trace", "@/.", "-o", out}, 3, "is a directory"},
        {{"trace", "@/text.png", "-o", out}, 3, "@/text.png: not a picture"},
        {{"trace", "@/empty.png", "-o", out}, 3, "@/empty.png: the file is empty"},
        {{"trace", "@/cut.pgm", "-o", out}, 3, "@/cut.pgm: damaged PNM: the data ends early"},
        {{"trace", "@/cut.png", "-o", out}, 3, "@/cut.png: damaged PNG: the data ends early"},
        {{"trace", "@/none.pgm", "-o", out}, 3, "@/none.pgm: the picture has no pixels (0 x 1)"},
        {{"trace", "@/huge.pgm", "-o", out},
         3,
         "@/huge.pgm: the picture has 100000 x 100000 pixels, more than"},
        {{"trace", "@/good.pgm", "-o", out, "--max-pixels", "1"},
         3,
         "more than the limit of 1 (--max-pixels)"},
        {{"trace", "@/large.pbm", "-o", out, "--detail", "16"},
         3,
         "@/large.pbm: the picture enlarged 16 times has 160000 x 160000 pixels, more than the limit of 100 "
         "million"},
        {{"trace", "@/good.pgm", "-o", out, "--detail", "2", "--max-pixels", "7"},
         3,
         "the picture enlarged 2 times has 4 x 2 pixels, more than the limit of 7 (--max-pixels)"},
        {{"trace", "", "-o", out}, 2, "input: the file's name is empty"},
        {{"trace", "@/good.pgm", "-o", ""}, 2, "--output: the file's name is empty"},
        {{"trace", "-", "-o", out}, 3, "standard input: the file is empty"},
        {{"trace", "-", "-o", out}, 3, "standard input: not a picture", "GIF89a"},
        {{"trace", "/dev/zero", "-o", out}, 3, "/dev/zero: not a picture"},
        {{"trace", "@/good.pgm", "-o", "@/no/out.svg"}, 3, "@/no/out.svg: cannot be written: its directory"},
    };
    for (const FailureCase& c : cases) {
        std::vector<std::string> arguments;
        for (const std::string& argument : c.arguments) arguments.push_back(Placed(argument, directory));
        SCOPED_TRACE(testing::PrintToString(arguments));
        const ProgramResult result = RunTarvex(arguments, c.input);
        EXPECT_EQ(result.status, c.status);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, testing::StartsWith("tarvex: "));
        EXPECT_THAT(result.errors, testing::HasSubstr(Placed(c.message, directory)));
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
        if (c.status == 2) {
            EXPECT_THAT(result.errors, testing::EndsWith("--help\"\n"));
        }
        EXPECT_EQ(directory.Content(), before);
    }
}

/// A dark square in a light picture.
std::string SquarePicture() {
    std::string file = "P5 40 30 255\n";
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 40; ++x) file += x >= 10 && x < 25 && y >= 5 && y < 20 ? '\0' : '\xff';
    }
    return file;
}

TEST(Program, TraceReadsAndWritesFilesAndStreams) {
    const TemporaryDirectory directory;
    WriteFile(directory / "square.bin", SquarePicture());
    const ProgramResult streamed = RunTarvex({"trace", "-", "-o", "-"}, SquarePicture());
    EXPECT_EQ(streamed.status, 0);
    EXPECT_EQ(streamed.errors, "") << "silent when standard error is no terminal";
    EXPECT_THAT(streamed.output, testing::HasSubstr("viewBox=\"0 0 40 30\""));
    EXPECT_THAT(streamed.output, testing::HasSubstr("<path "));

    EXPECT_EQ(RunTarvex({"trace", directory / "square.bin", "-o", directory / "a.svg"}).status, 0);
    EXPECT_EQ(ReadFile(directory / "a.svg"), streamed.output);

    EXPECT_EQ(RunTarvex({"trace", directory / "square.bin", "-o", directory / "b.JSON"}).status, 0);
    const nlohmann::json read = nlohmann::json::parse(ReadFile(directory / "b.JSON"));
    EXPECT_EQ(read.at("width"), 40);
    ASSERT_EQ(read.at("contours").size(), 1u);
    EXPECT_EQ(read.at("contours")[0].at("closed"), true);
    EXPECT_EQ(directory.Content(), "a.svg b.JSON square.bin ");
}

TEST(Program, EnlargesSmallPicturesByItselfOnlyWithinTheLimit) {
    const ProgramResult limited =
        RunTarvex({"trace", "-", "-o", "-", "--max-pixels", "1200"}, SquarePicture());
    const ProgramResult asItIs = RunTarvex({"trace", "-", "-o", "-", "--detail", "1"}, SquarePicture());
    EXPECT_EQ(limited.status, 0);
    EXPECT_EQ(limited.output, asItIs.output);
}

TEST(Program, TheInputIsNeverTheOutput) {
    const TemporaryDirectory directory;
    WriteFile(directory / "square.pgm", SquarePicture());
    std::filesystem::create_hard_link(directory / "square.pgm", directory / "hard.svg");
    std::filesystem::create_symlink(directory / "square.pgm", directory / "soft.svg");
    for (const char* name : {"square.pgm", "hard.svg", "soft.svg"}) {
        const ProgramResult result =
            RunTarvex({"trace", directory / "square.pgm", "-o", directory / name, "--format", "svg"});
        EXPECT_EQ(result.status, 3);
        EXPECT_EQ(result.errors, "tarvex: " + (directory / name) + ": cannot be written: it is the input\n");
        EXPECT_EQ(ReadFile(directory / name), SquarePicture());
    }
}

TEST(Program, APictureWithNothingInItIsNoResultAndNoFile) {
    const TemporaryDirectory directory;
    const std::string blank = "P5 40 30 255\n" + std::string(std::size_t{40} * 30, '\xff');
    const ProgramResult result = RunTarvex({"trace", "-", "-o", directory / "a.svg"}, blank);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    EXPECT_EQ(directory.Content(), "");
}

TEST(Program, HelpAndVersionAreAnswersAndNotErrors) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--help"}, {"trace", "--help"}, {"--version"}}) {
        const ProgramResult result = RunTarvex(arguments);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        EXPECT_THAT(result.output, testing::HasSubstr("tarvex"));
    }
}

TEST(Program, CtrlCEndsItWithStatus130AndNoFile) {
    const TemporaryDirectory directory;
    RunningProgram program({"trace", "-", "-o", directory / "out.svg"});
    // Once the pipe's content is taken, the program is past its start and waits for more.
    program.Write("P5 1000 1000 255\n" + std::string(200'000, 'x'));
    program.Signal(SIGINT);
    EXPECT_EQ(program.Wait(), 130);
    EXPECT_EQ(directory.Content(), "");
}

TEST(Program, SignalsThatItsStarterIgnoresDoNotEndIt) {
    const TemporaryDirectory directory;
    std::signal(SIGHUP, SIG_IGN);
    RunningProgram program({"trace", "-", "-o", directory / "out.svg"});
    std::signal(SIGHUP, SIG_DFL);
    const std::string picture =
        "P5 1000 1000 255\n" + std::string(999'000, '\xff') + std::string(1'000, '\0');
    program.Write(picture.substr(0, 900'000));
    program.Signal(SIGHUP);
    program.Write(picture.substr(900'000));
    EXPECT_EQ(program.Wait(), 0);
    EXPECT_EQ(directory.Content(), "out.svg ");
}

}  // namespace
}  // namespace tarvex::app::test
