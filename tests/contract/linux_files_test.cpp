// Oddities of files that only Linux has: permissions, symbolic links, pipes; images among them.

#include "common/linux/data_folder.h"
#include "contract_test.h"
#include "platform/files.h"
#include "platform/paths.h"

#include <fcntl.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>

namespace {

namespace fs = std::filesystem;

int renameError = 0; // of all renames, as of a disk without room for another name

} // namespace

/// In the place of the system's.
extern "C" int rename(const char* from, const char* to) noexcept {
    errno = renameError;
    return renameError != 0 ? -1 : ::renameat(AT_FDCWD, from, AT_FDCWD, to);
}

namespace {

class LinuxFiles : public ContractTest {
protected:
    std::u16string path(const std::string& name) const { return (folder / name).u16string(); }
    bool write(const std::string& name, const std::string& bytes) const {
        return replaceFileBytes(path(name), bytes);
    }
    std::string read(const std::string& name) const { return readFileBytes(path(name)).value_or("none"); }
    void setMode(const std::string& name, unsigned mode) const {
        fs::permissions(folder / name, static_cast<fs::perms>(mode));
    }
    static std::ptrdiff_t countIn(const fs::path& counted) {
        return std::distance(fs::directory_iterator(counted), {});
    }

    /// Runs `body` in a child process, as "nobody": the superuser knows no read-only file. A file cannot grow
    /// beyond the limit there, as on a full disk.
    bool asOrdinaryUser(const std::function<bool()>& body, rlim_t sizeLimit = RLIM_INFINITY) const {
        constexpr uid_t nobody = 65534;
        for (const auto& entry : fs::directory_iterator(folder))
            EXPECT_TRUE(::getuid() != 0 || ::lchown(entry.path().c_str(), nobody, nobody) == 0);
        EXPECT_TRUE(::getuid() != 0 || ::chown(folder.c_str(), nobody, nobody) == 0);
        const pid_t child = ::fork();
        if (child == 0) {
            const rlimit limit{sizeLimit, RLIM_INFINITY};
            std::signal(SIGXFSZ, SIG_IGN);
            const bool isReady = ::setrlimit(RLIMIT_FSIZE, &limit) == 0 &&
                                 (::getuid() != 0 || (::setgroups(0, nullptr) == 0 && ::setgid(nobody) == 0 &&
                                                      ::setuid(nobody) == 0));
            ::_exit(isReady && body() ? 0 : 1);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    const fs::path folder = temporaryFolder();
    const std::string tooLong = std::string(10'000, 'x'); // for a limit of 4096
};

TEST_F(LinuxFiles, ANewFileFollowsTheUmaskAndAnOldOneKeepsItsMode) {
    const auto mode = [this] { return static_cast<int>(fs::status(folder / "new").permissions()); };
    const mode_t before = ::umask(027);
    EXPECT_TRUE(write("new", "x"));
    EXPECT_EQ(mode(), 0640);
    setMode("new", 0606);
    EXPECT_TRUE(write("new", "y"));
    EXPECT_EQ(mode(), 0606);
    ::umask(before);
}

TEST_F(LinuxFiles, ALinkStaysALinkAndItsTargetGetsTheContent) {
    fs::create_directory(folder / "real");
    ASSERT_TRUE(write("real/file", "old"));
    const std::pair<const char*, const char*> links[] = {
        {"link", "real/file"}, {"dangling", "real/later"}, {"circle", "circle"}, {"folder", "real"}};
    for (const auto& [link, target] : links)
        fs::create_symlink(target, folder / link);
    fs::create_symlink(folder / "link", folder / "chain");
    EXPECT_FALSE(pathExists(path("dangling")));
    EXPECT_TRUE(write("chain", "new") && write("dangling", "made"));
    EXPECT_EQ(read("real/file") + read("real/later"), "newmade");
    EXPECT_FALSE(write("circle", "x"));
    for (const char* const link : {"link", "dangling", "circle", "chain"})
        EXPECT_TRUE(fs::is_symlink(folder / link)) << link;
    EXPECT_EQ(countIn(folder), 6) << "a temporary file was left";
    EXPECT_EQ(foldersIn(path("")).size(), 2U) << "a link to a folder counts";
}

TEST_F(LinuxFiles, APipeNeitherHoldsTheReaderNorIsReplacedAndFilesOfTheKernelAreReadToTheirEnd) {
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(readFileBytes(path("pipe")) || write("pipe", "x"));
    EXPECT_TRUE(fs::is_fifo(folder / "pipe"));
    EXPECT_EQ(countIn(folder), 1);
    EXPECT_NE(readFileBytes(u"/proc/self/status").value_or("").find("VmPeak"), std::string::npos);
}

/// Also in a folder where nothing may be made: there the old bytes have kept their room on the disk.
TEST_F(LinuxFiles, AFullDiskLeavesTheOldFileAndNothingBehind) {
    const std::string old(3000, 'o');
    ASSERT_TRUE(write("file", old));
    for (const unsigned mode : {0755U, 0555U}) {
        setMode("", mode);
        EXPECT_TRUE(asOrdinaryUser([this] { return !write("file", tooLong); }, 4096));
        EXPECT_EQ(read("file"), old);
    }
    EXPECT_TRUE(asOrdinaryUser([this] { return write("file", "shorter") && !write("other", "new"); }));
    setMode("", 0755);
    renameError = ENOSPC;
    EXPECT_FALSE(write("file", "new"));
    renameError = 0;
    EXPECT_EQ(read("file"), "shorter");
    EXPECT_EQ(countIn(folder), 1);
}

TEST_F(LinuxFiles, WhatIsReadOnlyIsLeftAloneAndAnUnreadableFileIsNone) {
    ASSERT_TRUE(write("file", "old") && write("secret", "old"));
    setMode("file", 0444);
    setMode("secret", 0);
    EXPECT_TRUE(asOrdinaryUser(
        [this] { return !write("file", "new") && read("file") == "old" && read("secret") == "none"; }));
}

/// The second question comes when the other answer has become the right one: for the owner of the program's
/// folder by its mode, for anybody else by the variable.
TEST_F(LinuxFiles, TheFolderOfTheProgramIsDecidedOnceAndItsFilesMayStandBesideTheExecutable) {
    EXPECT_TRUE(asOrdinaryUser([this] {
        const fs::path executable = fs::read_symlink("/proc/self/exe");
        const std::u16string name = executable.filename().u16string();
        const fs::perms mode = fs::status(executable.parent_path()).permissions();
        std::error_code ignored;
        ::setenv("XDG_DATA_HOME", (folder / "one").c_str(), 1);
        const std::u16string before = programFolder();
        const bool isFoundBeside = programFilePath(name) == executable.u16string();
        std::ofstream(fs::path(joinPath(before, name)), std::ios::app);
        const bool isOwnPreferred = programFilePath(name) == joinPath(before, name);
        ::setenv("XDG_DATA_HOME", (folder / "two").c_str(), 1);
        fs::permissions(executable.parent_path(), fs::perms(0500), ignored);
        const std::u16string after = programFolder();
        fs::permissions(executable.parent_path(), mode, ignored);
        return isFoundBeside && isOwnPreferred && after == before;
    }));
}

/// The second start is after the person has deleted a wheel and the administrator has added one.
TEST_F(LinuxFiles, AProgramInAPackageTakesOverWhatItsAdministratorPreparedOnce) {
    const fs::path program = folder / "program", own = folder / "data/rotika";
    for (const fs::path& each : {program, own})
        fs::create_directories(each);
    for (const std::string name :
         {"config.json", "voice.json", "default.json", "praca.json", "readme.txt", "huge.json"})
        ASSERT_TRUE(write("program/" + name, name));
    fs::resize_file(program / "huge.json", longestFileBytes + 1);
    fs::create_symlink("praca.json", program / "link.json");
    ASSERT_EQ(::mkfifo((program / "pipe.json").c_str(), 0600), 0);
    ASSERT_TRUE(write("data/rotika/default.json", "mine"));
    fs::create_symlink("nowhere", own / "voice.json"); // the person's
    for (const char* const name : {"data", "data/rotika"})
        setMode(name, 0777);
    const auto chooses = [&](const fs::path& expected) {
        return asOrdinaryUser([&] {
            ::setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
            return chooseDataFolder(program) == expected;
        });
    };
    setMode("program", 0555);
    EXPECT_TRUE(chooses(own));
    EXPECT_EQ(read("data/rotika/config.json") + read("data/rotika/default.json") +
                  read("data/rotika/praca.json"),
              "config.jsonminepraca.json");
    EXPECT_EQ(countIn(own), 4);
    fs::remove(own / "praca.json");
    setMode("program", 0755);
    ASSERT_TRUE(write("program/new.json", "new"));
    setMode("program", 0555);
    EXPECT_TRUE(chooses(own));
    EXPECT_EQ(countIn(own), 3);
    setMode("program", 0755);
    EXPECT_TRUE(chooses(program));
}

/// The paths come from the person's files.
TEST_F(LinuxFiles, AnImageIsAFileWithinTheLimitsAndAnythingElseCostsNothing) {
    const auto writePng = [this](const char* name, int width, int height) {
        GdkPixbuf* const pixels = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, width, height);
        EXPECT_TRUE(gdk_pixbuf_save(pixels, (folder / name).c_str(), "png", nullptr, nullptr));
        g_object_unref(pixels);
    };
    writePng("small", 300, 300);
    writePng("wide", largestImageSidePx, 1);
    writePng("too wide", largestImageSidePx + 1, 1);
    writePng("too high", 1, largestImageSidePx + 1);
    for (const char* const name : {"cut", "large"})
        fs::copy_file(folder / "small", folder / name);
    fs::resize_file(folder / "cut", fs::file_size(folder / "small") / 2);
    fs::resize_file(folder / "large", largestImageBytes + 1);
    std::ofstream(folder / "empty");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const auto loads = [this](const std::string& name) {
        return loadPictureImage((folder / name).u16string(), 42) != nullptr; // a full path stays as it is
    };
    EXPECT_TRUE(loads("small") && loads("wide"));
    for (const char* const name :
         {"too wide", "too high", "cut", "large", "empty", "pipe", "", "none", "/dev/zero"})
        EXPECT_FALSE(loads(name)) << name;
}

} // namespace
