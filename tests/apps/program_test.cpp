// The built program: every failure is one line, a status of its own, and no file.
#include "support/precompiled.h"

#include <csignal>
#include <filesystem>

#include "apps/support/program.h"

namespace tarvex::app::test {
namespace {

TEST(Program, EveryFailureIsOneLineAStatusAndNoFile) {
    const TemporaryDirectory directory;
    WriteFile(directory / "good.pgm", "P5 2 1 255\nab");
    WriteFile(directory / "cut.pgm", "P5 2 1 255\na");
    WriteFile(directory / "large.pbm", "P4 2000 2000\n" + std::string(std::size_t{250} * 2000, '\x0f'));
    WriteFile(directory / "text.png", "no picture");
    WriteFile(directory / "empty.png", "");
    std::filesystem::create_hard_link(directory / "good.pgm", directory / "hard.svg");
    std::filesystem::create_symlink(directory / "good.pgm", directory / "soft.svg");
    ExpectFailures(
        {
            {"", 2, "a command is required"},
            {"frob", 2, "frob: there is no such command"},
            {"--frob", 2, "--frob: unknown argument"},
            {"trace", 2, "input is required"},
            {"trace @/good.pgm", 2, "--output is required"},
            {"trace @/good.pgm -o @/o.svg --bogus", 2, "--bogus: unknown argument"},
            {"trace --bogus", 2, "--bogus: unknown argument"},
            {"trace @/good.pgm more -o @/o.svg", 2, "--output: 2 inputs need a directory"},
            {"trace @/good.pgm -o @/o.pdf", 2, "neither .svg nor .json"},
            {"trace @/good.pgm -o @/o", 2, "neither .svg nor .json"},
            {"trace @/good.pgm -o @/o.svg --format pdf", 2, "--format: 'pdf' is neither svg nor json"},
            {"trace @/good.pgm -o @/o.svg --mode colour", 2, "--mode: 'colour' is not a mode"},
            {"trace @/good.pgm -o @/o.svg --threshold 256", 2, "'256' is not a whole number from 0 to 255"},
            {"trace @/good.pgm -o @/o.svg --threshold 12x", 2, "'12x' is not a whole number"},
            {"trace @/good.pgm -o @/o.svg --detail 0", 2, "--detail: '0'"},
            {"trace @/good.pgm -o @/o.svg --precision -1", 2, "--precision: '-1'"},
            {"trace @/good.pgm -o @/o.svg --min-points 1e3", 2, "--min-points: '1e3'"},
            {"trace @/good.pgm -o @/o.svg --max-pixels 99999999999999999999", 2, "--max-pixels: '9999"},
            {"trace '' -o @/o.svg", 2, "input: the file's name is empty"},
            {"trace @/good.pgm -o ''", 2, "--output: the file's name is empty"},

            {"trace @/missing.png -o @/o.svg", 3, "@/missing.png: No such file or directory"},
            {"trace @/. -o @/o.svg", 3, "is a directory"},
            {"trace @/text.png -o @/o.svg", 3, "@/text.png: not a picture"},
            {"trace @/empty.png -o @/o.svg", 3, "@/empty.png: the file is empty"},
            {"trace @/cut.pgm -o @/o.svg", 3, "@/cut.pgm: damaged PNM: the data ends early"},
            {"trace @/good.pgm -o @/o.svg --max-pixels 1", 3, "more than the limit of 1 (--max-pixels)"},
            {"trace @/large.pbm -o @/o.svg --detail 16", 3,
             "@/large.pbm: the picture enlarged 16 times has 32000 x 32000 pixels, more than the limit of "
             "100 million"},
            {"trace @/good.pgm -o @/o.svg --detail 2 --max-pixels 7", 3,
             "the picture enlarged 2 times has 4 x 2 pixels, more than the limit of 7 (--max-pixels)"},
            {"trace - -o @/o.svg", 3, "standard input: the file is empty"},
            {"trace - -o @/o.svg", 3, "standard input: not a picture", "GIF89a"},
            {"trace /dev/zero -o @/o.svg", 3, "/dev/zero: not a picture"},
            {"trace @/good.pgm -o @/no/o.svg", 3, "@/no/o.svg: cannot be written: its directory"},
            {"trace @/good.pgm -o @/good.pgm --format svg", 3,
             "@/good.pgm: cannot be written: it is the input"},
            {"trace @/good.pgm -o @/hard.svg", 3, "@/hard.svg: cannot be written: it is the input"},
            {"trace @/good.pgm -o @/soft.svg", 3, "@/soft.svg: cannot be written: it is the input"},
            {"trace - -o @/o.svg", 1, "no outline found", "P5 2 2 255\n\xff\xff\xff\xff"},
        },
        directory);
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
    const std::string streamed = OutputOf({"trace", "-", "-o", "-"}, SquarePicture());
    EXPECT_THAT(streamed, testing::HasSubstr("viewBox=\"0 0 40 30\""));
    EXPECT_THAT(streamed, testing::HasSubstr("<path "));

    EXPECT_EQ(RunTarvex({"trace", directory / "square.bin", "-o", directory / "a.svg"}).status, 0);
    EXPECT_EQ(ReadFile(directory / "a.svg"), streamed);

    EXPECT_EQ(RunTarvex({"trace", directory / "square.bin", "-o", directory / "b.JSON"}).status, 0);
    const Json read = Json::parse(ReadFile(directory / "b.JSON"));
    EXPECT_EQ(read.at("width"), 40);
    ASSERT_EQ(read.at("contours").size(), 1u);
    EXPECT_EQ(read.at("contours")[0].at("closed"), true);
    EXPECT_EQ(directory.Content(), "a.svg b.JSON square.bin ");
}

TEST(Program, EnlargesSmallPicturesByItselfOnlyWithinTheLimit) {
    EXPECT_EQ(OutputOf({"trace", "-", "-o", "-", "--max-pixels", "1200"}, SquarePicture()),
              OutputOf({"trace", "-", "-o", "-", "--detail", "1"}, SquarePicture()));
}

TEST(Program, HelpAndVersionAreAnswersAndNotErrors) {
    for (const Arguments& arguments : {Arguments{"--help"}, {"trace", "--help"}, {"--version"}})
        EXPECT_THAT(OutputOf(arguments), testing::HasSubstr("tarvex"));
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
