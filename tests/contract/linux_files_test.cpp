// File features of Linux: permissions, symbolic links, pipes.

#include "common/data_folder.h"
#include "contract_test.h"
#include "platform/files.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

using namespace rotika;

namespace {

namespace fs = std::filesystem;

int renameError = 0; // of all renames, as on a full disk

} // namespace

/// Replaces the system's function.
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

    /// As "nobody" when run by root, for whom no file is read-only. Files cannot grow beyond the limit, as on
    /// a full disk.
    void asOrdinaryUser(const std::function<void()>& body, rlim_t sizeLimit = RLIM_INFINITY) const {
        const uid_t own = ::getuid(), user = own == 0 ? 65534 : own;
        EXPECT_TRUE(own != 0 || std::system(("chown -hR nobody: " + folder.string()).c_str()) == 0);
        const rlimit limit{sizeLimit, RLIM_INFINITY}, none{RLIM_INFINITY, RLIM_INFINITY};
        std::signal(SIGXFSZ, SIG_IGN);
        EXPECT_TRUE(::setrlimit(RLIMIT_FSIZE, &limit) == 0 && ::setresuid(user, user, own) == 0);
        body();
        EXPECT_TRUE(::setresuid(own, own, own) == 0 && ::setrlimit(RLIMIT_FSIZE, &none) == 0);
    }

    const fs::path folder = temporaryFolder();
};

TEST_F(LinuxFiles, ALinkIsKeptAndItsTargetIsReplacedWithItsMode) {
    ASSERT_TRUE(write("file", "old"));
    setMode("file", 0606);
    fs::create_symlink("file", folder / "link");
    fs::create_symlink(folder / "link", folder / "chain");
    EXPECT_TRUE(write("chain", "new"));
    EXPECT_EQ(read("file"), "new");
    EXPECT_EQ(static_cast<int>(fs::status(folder / "file").permissions()), 0606);
    EXPECT_TRUE(fs::is_symlink(folder / "link") && fs::is_symlink(folder / "chain"));
}

TEST_F(LinuxFiles, AReadOnlyFileIsKeptAndAPipeNeitherBlocksNorIsReplaced) {
    ASSERT_TRUE(write("file", "old"));
    setMode("file", 0444);
    asOrdinaryUser([&] { EXPECT_FALSE(write("file", "new")); });
    EXPECT_EQ(read("file"), "old");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(read("pipe"), "none");
    EXPECT_FALSE(write("pipe", "x"));
    EXPECT_TRUE(fs::is_fifo(folder / "pipe"));
}

/// Also in a read-only folder, where the file is overwritten in place.
TEST_F(LinuxFiles, AFullDiskKeepsTheOldFileAndLeavesNoOther) {
    const std::string old(3000, 'o'), tooLong(10'000, 'x');
    ASSERT_TRUE(write("file", old));
    for (const unsigned mode : {0755U, 0555U}) {
        setMode("", mode);
        asOrdinaryUser([&] { EXPECT_FALSE(write("file", tooLong)); }, 4096);
        EXPECT_EQ(read("file"), old);
    }
    asOrdinaryUser([&] { EXPECT_TRUE(write("file", "shorter") && !write("other", "new")); });
    setMode("", 0755);
    renameError = ENOSPC;
    EXPECT_FALSE(write("file", "new"));
    renameError = 0;
    EXPECT_EQ(read("file"), "shorter");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
}

/// Not writable, or marked as installed: beside itself not even root writes. The second start is after the
/// user has deleted a wheel.
TEST_F(LinuxFiles, AnInstalledProgramCopiesTheAdministratorsFilesOnceAndWritesOnlyToTheUsersFolder) {
    const fs::path own = folder / "data/rotika";
    fs::create_directories(own);
    ::setenv("XDG_DATA_HOME", own.parent_path().c_str(), 1);
    for (const char* const file : {"config.json", "default.json", "work.json"})
        ASSERT_TRUE(write(file, "prepared"));
    ASSERT_TRUE(write("data/rotika/default.json", "mine"));
    asOrdinaryUser([&] { EXPECT_EQ(chooseDataFolder(folder), folder); });
    setMode("", 0555);
    for (const char* const work : {"prepared", "none"}) {
        asOrdinaryUser([&] { EXPECT_EQ(chooseDataFolder(folder), own); });
        EXPECT_EQ(read("data/rotika/config.json") + read("data/rotika/default.json"), "preparedmine");
        EXPECT_EQ(read("data/rotika/work.json"), work);
        fs::remove(own / "work.json");
    }
    setMode("", 0755);
    ASSERT_TRUE(write("installed", ""));
    EXPECT_EQ(chooseDataFolder(folder), own);
    ::unsetenv("XDG_DATA_HOME");
}

/// Earlier versions linked the whole folder to that of the program; a link of the user's own stays.
TEST_F(LinuxFiles, AnInstalledProgramsUserHasAFolderForOwnIcons) {
    const fs::path own = folder / "data/rotika", icons = own / "icons", pictures = folder / "pictures";
    ::setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    fs::create_directories(folder / "icons");
    fs::create_directories(pictures);
    ASSERT_TRUE(write("installed", "") && write("icons/shipped.png", "") && write("pictures/own.png", ""));
    const fs::path moved = folder / "gone" / folder.filename() / "icons", stick = folder / "gone/icons";
    for (const fs::path& earlier : {fs::path(), folder / "icons", moved, pictures, stick}) {
        fs::remove_all(icons);
        if (!earlier.empty())
            fs::create_directory_symlink(earlier, icons);
        for (int start = 0; start < 2; ++start) {
            ASSERT_EQ(chooseDataFolder(folder), own);
            EXPECT_EQ(fs::is_symlink(icons), earlier == pictures || earlier == stick) << earlier;
            EXPECT_EQ(write("data/rotika/icons/own.png", "own"), earlier != stick) << earlier;
        }
    }
    EXPECT_EQ(read("pictures/own.png") + read("icons/own.png"), "ownnone");
    EXPECT_TRUE(fs::exists(folder / "icons/shipped.png"));
    ::unsetenv("XDG_DATA_HOME");
}

} // namespace
