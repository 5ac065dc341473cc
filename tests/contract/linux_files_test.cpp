// Oddities of files that only Linux has: permissions, symbolic links, pipes.

#include "common/linux/data_folder.h"
#include "contract_test.h"
#include "platform/files.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

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
    bool write(const std::string& name, const std::string& bytes) const {
        return replaceFileBytes((folder / name).u16string(), bytes);
    }
    std::string read(const std::string& name) const {
        return readFileBytes((folder / name).u16string()).value_or("none");
    }
    void setMode(const std::string& name, unsigned mode) const {
        fs::permissions(folder / name, static_cast<fs::perms>(mode));
    }

    /// Runs `body` in a child process, as "nobody": the superuser knows no read-only file. A file cannot grow
    /// beyond the limit there, as on a full disk.
    bool asOrdinaryUser(const std::function<bool()>& body, rlim_t sizeLimit = RLIM_INFINITY) const {
        constexpr uid_t nobody = 65534;
        const bool isSuperuser = ::getuid() == 0;
        EXPECT_TRUE(!isSuperuser || std::system(("chown -hR nobody: " + folder.string()).c_str()) == 0);
        const pid_t child = ::fork();
        if (child == 0) {
            const rlimit limit{sizeLimit, RLIM_INFINITY};
            std::signal(SIGXFSZ, SIG_IGN);
            const bool isReady = ::setrlimit(RLIMIT_FSIZE, &limit) == 0 &&
                                 (!isSuperuser || (::setgroups(0, nullptr) == 0 && ::setgid(nobody) == 0 &&
                                                   ::setuid(nobody) == 0));
            ::_exit(isReady && body() ? 0 : 1);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    const fs::path folder = temporaryFolder();
};

TEST_F(LinuxFiles, ALinkStaysALinkAndItsTargetGetsTheContentAndKeepsItsMode) {
    fs::create_directory(folder / "real");
    ASSERT_TRUE(write("real/file", "old"));
    setMode("real/file", 0606);
    fs::create_symlink("real/file", folder / "link");
    fs::create_symlink(folder / "link", folder / "chain");
    fs::create_symlink("circle", folder / "circle");
    EXPECT_TRUE(write("chain", "new") && !write("circle", "x"));
    EXPECT_EQ(read("real/file"), "new");
    EXPECT_EQ(static_cast<int>(fs::status(folder / "real/file").permissions()), 0606);
    for (const char* const link : {"link", "chain", "circle"})
        EXPECT_TRUE(fs::is_symlink(folder / link)) << link;
}

TEST_F(LinuxFiles, WhatIsReadOnlyIsLeftAloneAndAPipeNeitherHoldsTheReaderNorIsReplaced) {
    ASSERT_TRUE(write("file", "old"));
    setMode("file", 0444);
    EXPECT_TRUE(asOrdinaryUser([&] { return !write("file", "new") && read("file") == "old"; }));
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(read("pipe"), "none");
    EXPECT_FALSE(write("pipe", "x"));
    EXPECT_TRUE(fs::is_fifo(folder / "pipe"));
}

/// Also in a folder where nothing may be made: there the old bytes have kept their room on the disk.
TEST_F(LinuxFiles, AFullDiskLeavesTheOldFileAndNothingBehind) {
    const std::string old(3000, 'o'), tooLong(10'000, 'x');
    ASSERT_TRUE(write("file", old));
    for (const unsigned mode : {0755U, 0555U}) {
        setMode("", mode);
        EXPECT_TRUE(asOrdinaryUser([&] { return !write("file", tooLong); }, 4096));
        EXPECT_EQ(read("file"), old);
    }
    EXPECT_TRUE(asOrdinaryUser([&] { return write("file", "shorter") && !write("other", "new"); }));
    setMode("", 0755);
    renameError = ENOSPC;
    EXPECT_FALSE(write("file", "new"));
    renameError = 0;
    EXPECT_EQ(read("file"), "shorter");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
}

/// The second start is after the person has deleted a wheel.
TEST_F(LinuxFiles, AProgramInAPackageTakesOverWhatItsAdministratorPreparedOnce) {
    const fs::path own = folder / "data/rotika";
    fs::create_directories(own);
    ::setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    ASSERT_TRUE(write("config.json", "prepared") && write("default.json", "prepared") &&
                write("work.json", "prepared"));
    ASSERT_TRUE(write("data/rotika/default.json", "mine"));
    EXPECT_TRUE(asOrdinaryUser([&] { return chooseDataFolder(folder) == folder; }));
    setMode("", 0555);
    for (const char* const work : {"prepared", "none"}) {
        EXPECT_TRUE(asOrdinaryUser([&] { return chooseDataFolder(folder) == own; }));
        EXPECT_EQ(read("data/rotika/config.json"), "prepared");
        EXPECT_EQ(read("data/rotika/default.json"), "mine");
        EXPECT_EQ(read("data/rotika/work.json"), work);
        fs::remove(own / "work.json");
    }
    ::unsetenv("XDG_DATA_HOME");
}

} // namespace
