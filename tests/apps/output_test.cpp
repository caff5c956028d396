// Output appears whole or not at all, whatever goes wrong while it is written.
#include "support/precompiled.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "apps/support/temporary_directory.h"
#include "tarvex/output.h"
#include "tarvex/program_error.h"

namespace tarvex::app::test {
namespace {

namespace fs = std::filesystem;

std::string ErrorOf(const std::string& path) {
    try {
        WriteOutput(path, "new");
    } catch (const ProgramError& error) {
        EXPECT_EQ(error.Status(), ExitStatus::File);
        return error.what();
    }
    return "none";
}

TEST(WriteOutput, MakesAndReplacesFilesAndLeavesNothingElse) {
    const TemporaryDirectory directory;
    const mode_t oldMask = umask(027);
    WriteOutput(directory / "a.svg", "first");
    umask(oldMask);
    EXPECT_EQ(fs::status(directory / "a.svg").permissions(), fs::perms(0640));
    EXPECT_EQ(ReadFile(directory / "a.svg"), "first");
    WriteOutput(directory / "a.svg", std::string("sec\0nd", 6));
    EXPECT_EQ(ReadFile(directory / "a.svg"), std::string("sec\0nd", 6));
    EXPECT_EQ(directory.Content(), "a.svg ");
}

TEST(WriteOutput, FollowsALinkAndKeepsIt) {
    const TemporaryDirectory directory;
    fs::create_directory(directory / "other");
    WriteFile(directory / "other/real", "old");
    fs::create_symlink("other/real", directory / "link");
    WriteOutput(directory / "link", "new");
    EXPECT_TRUE(fs::is_symlink(directory / "link"));
    EXPECT_EQ(ReadFile(directory / "other/real"), "new");
    EXPECT_EQ(directory.Content(), "link other ");
}

TEST(WriteOutput, WritesToADeviceWithoutReplacingIt) {
    WriteOutput("/dev/null", "gone");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST(WriteOutput, SaysWhatIsWrongWithAPathItCannotWrite) {
    const TemporaryDirectory directory;
    EXPECT_EQ(ErrorOf(directory / "."), (directory / ".") + ": cannot be written: is a directory");
    EXPECT_EQ(ErrorOf(directory / "no/a.svg"),
              (directory / "no/a.svg") + ": cannot be written: its directory does not exist");
    EXPECT_THAT(ErrorOf(directory / std::string(300, 'x')), testing::HasSubstr("cannot be written: "));
    if (geteuid() != 0) {  // the superuser may write anywhere
        WriteFile(directory / "guarded", "old");
        fs::permissions(directory / "guarded", fs::perms::owner_read);
        EXPECT_THAT(ErrorOf(directory / "guarded"), testing::HasSubstr("Permission denied"));
        EXPECT_EQ(ReadFile(directory / "guarded"), "old");
    }
}

/// The largest file that the child processes below may write, so that a write fails half way.
void LimitFileSize() {
    const rlimit limit{10'000, 10'000};
    setrlimit(RLIMIT_FSIZE, &limit);
}

TEST(WriteOutput, AnEndHalfWayLeavesTheOldFileAndNothingElse) {
    const TemporaryDirectory directory;
    WriteFile(directory / "a.svg", "old");
    const auto write = [&directory](void (*atTheLimit)(int)) {
        RemoveOutputOnInterrupt();
        LimitFileSize();
        std::signal(SIGXFSZ, atTheLimit);
        try {
            WriteOutput(directory / "a.svg", std::string(100'000, 'x'));
        } catch (const ProgramError& error) {
            std::fprintf(stderr, "%s\n", error.what());
            std::_Exit(static_cast<int>(error.Status()));
        }
        std::_Exit(0);
    };
    EXPECT_EXIT(write(SIG_IGN), testing::ExitedWithCode(3), "a.svg: cannot be written: File too large");
    EXPECT_EXIT(write([](int) { std::raise(SIGINT); }), testing::ExitedWithCode(130), "");
    EXPECT_EQ(ReadFile(directory / "a.svg"), "old");
    EXPECT_EQ(directory.Content(), "a.svg ");
}

}  // namespace
}  // namespace tarvex::app::test
