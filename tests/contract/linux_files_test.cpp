// Oddities of files that only Linux has: permissions, symbolic links, pipes.

#include "common/linux/data_folder.h"
#include "contract_test.h"
#include "platform/files.h"
#include "platform/paths.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

namespace {

namespace fs = std::filesystem;

class LinuxFiles : public ContractTest {
protected:
    std::u16string path(const std::string& name) const { return (folder / name).u16string(); }
    bool write(const std::string& name, const std::string& bytes) const {
        return replaceFileBytes(path(name), bytes);
    }
    std::string read(const std::string& name) const {
        return readFileBytes(path(name)).value_or("(unreadable)");
    }
    std::ptrdiff_t fileCount() const { return std::distance(fs::directory_iterator(folder), {}); }

    /// Runs `body` in a child process and answers what it answered.
    static bool inChild(const std::function<bool()>& body) {
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(body() ? 0 : 1);
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status)) << "the child died of signal " << WTERMSIG(status);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    /// The same without the superuser's rights, which know no read-only file. The child becomes "nobody".
    bool asOrdinaryUser(const std::function<bool()>& body) const {
        constexpr uid_t nobody = 65534;
        if (::getuid() != 0)
            return body();
        for (const auto& entry : fs::directory_iterator(folder))
            EXPECT_EQ(::lchown(entry.path().c_str(), nobody, nobody), 0);
        EXPECT_EQ(::chown(folder.c_str(), nobody, nobody), 0);
        return inChild([&body] {
            return ::setgroups(0, nullptr) == 0 && ::setresgid(nobody, nobody, nobody) == 0 &&
                   ::setresuid(nobody, nobody, nobody) == 0 && body();
        });
    }

    /// In this process no file can grow beyond that size, as on a full disk.
    static bool limitFileSize(rlim_t bytes) {
        const rlimit limit{bytes, bytes};
        return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && ::setrlimit(RLIMIT_FSIZE, &limit) == 0;
    }

    fs::path folder = temporaryFolder();
};

int modeOf(const fs::path& path) {
    return static_cast<int>(fs::status(path).permissions());
}

TEST_F(LinuxFiles, ANewFileFollowsTheUmaskAndAnOldOneKeepsItsMode) {
    const mode_t before = ::umask(027);
    EXPECT_TRUE(write("new", "x"));
    EXPECT_EQ(modeOf(folder / "new"), 0640);
    ASSERT_EQ(::chmod((folder / "new").c_str(), 0606), 0);
    EXPECT_TRUE(write("new", "y"));
    EXPECT_EQ(modeOf(folder / "new"), 0606);
    ::umask(before);
}

TEST_F(LinuxFiles, ALinkStaysALinkAndItsTargetGetsTheContent) {
    fs::create_directory(folder / "real");
    ASSERT_TRUE(write("real/file", "old"));
    fs::create_symlink("real/file", folder / "relative");
    fs::create_symlink(folder / "relative", folder / "chain");
    fs::create_symlink("real/later", folder / "dangling");
    fs::create_symlink("circle", folder / "circle");

    EXPECT_TRUE(write("chain", "new"));
    EXPECT_EQ(read("real/file"), "new");
    EXPECT_TRUE(fs::is_symlink(folder / "chain"));
    EXPECT_TRUE(fs::is_symlink(folder / "relative"));

    EXPECT_FALSE(pathExists(path("dangling")));
    EXPECT_TRUE(write("dangling", "made"));
    EXPECT_EQ(read("real/later"), "made");
    EXPECT_TRUE(fs::is_symlink(folder / "dangling"));

    EXPECT_FALSE(write("circle", "x"));
    EXPECT_TRUE(fs::is_symlink(folder / "circle"));
    EXPECT_EQ(fileCount(), 5);
}

TEST_F(LinuxFiles, APipeNeitherHoldsTheReaderNorIsReplaced) {
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(readFileBytes(path("pipe")));
    EXPECT_FALSE(write("pipe", "x"));
    EXPECT_TRUE(fs::is_fifo(folder / "pipe"));
    EXPECT_EQ(fileCount(), 1);
}

TEST_F(LinuxFiles, AFullDiskLeavesTheOldFileAndNothingBehind) {
    ASSERT_TRUE(write("file", "old"));
    EXPECT_TRUE(inChild([this] { return limitFileSize(4096) && !write("file", std::string(10'000, 'x')); }));
    EXPECT_EQ(read("file"), "old");
    EXPECT_EQ(fileCount(), 1);
}

TEST_F(LinuxFiles, WhatIsReadOnlyIsLeftAloneAndAnUnreadableFileIsNone) {
    ASSERT_TRUE(write("file", "old"));
    ASSERT_TRUE(write("secret", "old"));
    ASSERT_EQ(::chmod((folder / "file").c_str(), 0444), 0);
    ASSERT_EQ(::chmod((folder / "secret").c_str(), 0), 0);
    EXPECT_TRUE(asOrdinaryUser(
        [this] { return !write("file", "new") && read("file") == "old" && !readFileBytes(path("secret")); }));
}

TEST_F(LinuxFiles, InAFolderWhereNothingMayBeMadeAFileIsWrittenInPlace) {
    const std::string old(3000, 'o');
    ASSERT_TRUE(write("file", old));
    ASSERT_EQ(::chmod(folder.c_str(), 0555), 0);
    EXPECT_TRUE(asOrdinaryUser([this] { return write("file", "shorter") && !write("other", "new"); }));
    EXPECT_EQ(read("file"), "shorter");
    EXPECT_TRUE(asOrdinaryUser([&] { return write("file", old); }));
    EXPECT_EQ(read("file"), old);
    // The old bytes have kept their room on the disk, and are put back.
    EXPECT_TRUE(inChild([this] {
        return asOrdinaryUser(
            [this] { return limitFileSize(4096) && !write("file", std::string(10'000, 'x')); });
    }));
    EXPECT_EQ(read("file"), old);
    EXPECT_EQ(fileCount(), 1);
    ASSERT_EQ(::chmod(folder.c_str(), 0755), 0);
}

/// Between the two questions the other answer becomes the right one: for the owner of the program's folder
/// by its mode, for anybody else by the variable.
TEST_F(LinuxFiles, TheFolderOfTheProgramIsDecidedOnceAndItsFilesMayStandBesideTheExecutable) {
    EXPECT_TRUE(inChild([this] {
        return asOrdinaryUser([this] {
            const fs::path executable = fs::read_symlink("/proc/self/exe");
            const fs::path program = executable.parent_path();
            const std::u16string name = executable.filename().u16string();
            const fs::perms mode = fs::status(program).permissions();
            std::error_code ignored;
            ::setenv("XDG_DATA_HOME", (folder / "one").c_str(), 1);
            const std::u16string before = programFolder();
            const bool isFoundBeside = programFilePath(name) == executable.u16string();
            std::ofstream(fs::path(joinPath(before, name)), std::ios::app);
            const bool isOwnPreferred = programFilePath(name) == joinPath(before, name);
            ::setenv("XDG_DATA_HOME", (folder / "two").c_str(), 1);
            fs::permissions(program, fs::perms::owner_read | fs::perms::owner_exec, ignored);
            const std::u16string after = programFolder();
            fs::permissions(program, mode, ignored);
            return isFoundBeside && isOwnPreferred && after == before;
        });
    }));
}

/// The second start is after the person has deleted a wheel and the administrator has added one.
TEST_F(LinuxFiles, AProgramInAPackageTakesOverWhatItsAdministratorPreparedOnce) {
    const fs::path program = folder / "program";
    const fs::path own = folder / "data/rotika";
    fs::create_directories(program);
    fs::create_directories(own);
    for (const char* name : {"config", "voice", "default", "praca", "gone"})
        ASSERT_TRUE(write("program/" + std::string(name) + ".json", name));
    ASSERT_TRUE(write("program/readme.txt", "no wheels"));
    ASSERT_TRUE(write("program/huge.json", "x"));
    fs::resize_file(program / "huge.json", longestFileBytes + 1);
    fs::create_symlink("praca.json", program / "link.json");
    ASSERT_EQ(::mkfifo((program / "pipe.json").c_str(), 0600), 0);
    ASSERT_TRUE(write("data/rotika/default.json", "mine"));
    fs::create_symlink("nowhere", own / "voice.json");
    for (const fs::path& each : {own, folder / "data"})
        fs::permissions(each, fs::perms::all);
    fs::permissions(program, fs::perms(0555));
    const auto chooses = [&] {
        ::setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
        return chooseDataFolder(program) == own;
    };
    EXPECT_TRUE(asOrdinaryUser(chooses));
    EXPECT_EQ(read("data/rotika/config.json") + read("data/rotika/default.json") +
                  read("data/rotika/praca.json"),
              "configminepraca");
    EXPECT_EQ(std::distance(fs::directory_iterator(own), {}), 5)
        << "and gone.json, and a link of the person's";
    fs::remove(own / "gone.json");
    fs::permissions(program, fs::perms(0755));
    ASSERT_TRUE(write("program/new.json", "new"));
    fs::permissions(program, fs::perms(0555));
    EXPECT_TRUE(asOrdinaryUser(chooses));
    EXPECT_EQ(std::distance(fs::directory_iterator(own), {}), 4);
    fs::permissions(program, fs::perms(0755));
    EXPECT_TRUE(asOrdinaryUser([&] { return chooseDataFolder(program) == program; }));
}

TEST_F(LinuxFiles, FilesOfTheKernelThatSayTheyAreEmptyAreReadToTheirEnd) {
    const auto status = readFileBytes(u"/proc/self/status");
    ASSERT_TRUE(status);
    EXPECT_NE(status->find("VmPeak"), std::string::npos);
}

TEST_F(LinuxFiles, LinksToFoldersAreListedAsFolders) {
    fs::create_directory(folder / "kept");
    fs::create_symlink("kept", folder / "link");
    fs::create_symlink("absent", folder / "broken");
    std::vector<std::u16string> names = foldersIn(path(""));
    std::ranges::sort(names);
    EXPECT_EQ(names, (std::vector<std::u16string>{u"kept", u"link"}));
}

} // namespace
