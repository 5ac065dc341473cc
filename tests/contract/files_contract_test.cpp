#include "contract_test.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>

namespace {

using FilesContract = ContractTest;

std::vector<std::string> namesIn(const std::u16string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(folder))) {
        const std::u8string name = entry.path().filename().u8string();
        names.emplace_back(name.begin(), name.end());
    }
    return names;
}

TEST_F(FilesContract, AFileIsReplacedAsAWhole) {
    const std::u16string folder = temporaryFolder();
    const std::u16string path = joinPath(folder, u"koło wyboru.json");
    EXPECT_FALSE(pathExists(path));
    EXPECT_EQ(readFileBytes(path), std::nullopt);

    std::string everyByte(1 << 20, '\0');
    for (std::size_t i = 0; i < everyByte.size(); ++i)
        everyByte[i] = static_cast<char>(i * 31);
    for (const std::string& bytes :
         {std::string("first\r\n\x1a after"), everyByte, std::string("short"), std::string()}) {
        ASSERT_TRUE(replaceFileBytes(path, bytes));
        EXPECT_TRUE(readFileBytes(path) == bytes) << bytes.size();
        EXPECT_TRUE(pathExists(path));
    }
    EXPECT_EQ(namesIn(folder), std::vector<std::string>{"koło wyboru.json"}) << "a temporary file was left";
}

TEST_F(FilesContract, AFolderIsNoFile) {
    const std::u16string folder = temporaryFolder();
    const std::u16string path = joinPath(folder, u"folder");
    std::filesystem::create_directory(std::filesystem::path(path));
    EXPECT_TRUE(pathExists(path));
    EXPECT_EQ(readFileBytes(path), std::nullopt);
    EXPECT_FALSE(replaceFileBytes(path, "text"));
    EXPECT_TRUE(std::filesystem::is_directory(std::filesystem::path(path)));
    EXPECT_EQ(namesIn(folder), std::vector<std::string>{"folder"}) << "a temporary file was left";

    EXPECT_FALSE(replaceFileBytes(joinPath(joinPath(folder, u"absent"), u"file"), "text"));
}

TEST_F(FilesContract, AFileBeyondTheLimitIsNeitherReadNorWritten) {
    const std::u16string path = joinPath(temporaryFolder(), u"long");
    const std::string longest(longestFileBytes, 'x');
    ASSERT_TRUE(replaceFileBytes(path, longest));
    EXPECT_TRUE(readFileBytes(path) == longest);
    EXPECT_FALSE(replaceFileBytes(path, longest + "x"));
    EXPECT_TRUE(readFileBytes(path) == longest);

    std::filesystem::resize_file(std::filesystem::path(path), longest.size() + 1);
    EXPECT_FALSE(readFileBytes(path).has_value());
}

/// As long as the system allows: Windows counts the whole path, others the name.
TEST_F(FilesContract, AFileWhoseNameLeavesNoRoomForATemporaryOneIsReplacedToo) {
    const std::u16string folder = temporaryFolder();
    constexpr bool countsPaths = std::filesystem::path::preferred_separator == '\\';
    const std::u16string path =
        joinPath(folder, std::u16string(countsPaths ? 258 - folder.size() : 255, u'n'));
    for (const char* const bytes : {"first and longer", "second"}) {
        ASSERT_TRUE(replaceFileBytes(path, bytes));
        EXPECT_EQ(readFileBytes(path), bytes);
    }
    EXPECT_EQ(namesIn(folder).size(), 1u) << "a temporary file was left";
    EXPECT_FALSE(replaceFileBytes(joinPath(folder, std::u16string(256, u'n')), "x"));
}

TEST_F(FilesContract, AReaderSeesTheOldContentOrTheNew) {
    const std::u16string path = joinPath(temporaryFolder(), u"shared");
    const std::string first(100'000, 'a');
    const std::string second(70'000, 'b');
    ASSERT_TRUE(replaceFileBytes(path, first));
    static std::atomic<bool> ended;
    ended = false;
    ASSERT_TRUE(startDetachedThread([path, first, second] {
        for (int i = 0; i < 50; ++i)
            replaceFileBytes(path, i % 2 == 0 ? second : first);
        ended = true;
    }));
    int cut = 0;
    EXPECT_TRUE(pumpUntil([&] {
        const auto content = readFileBytes(path);
        cut += content && *content != first && *content != second ? 1 : 0;
        return ended.load();
    }));
    EXPECT_EQ(cut, 0);
    const auto last = readFileBytes(path);
    EXPECT_TRUE(last == first || last == second);
}

TEST_F(FilesContract, ProgramFolderIsAFolderWithoutTrailingSeparator) {
    const std::u16string folder = programFolder();
    ASSERT_FALSE(folder.empty());
    const std::u16string joined = joinPath(folder, u"name");
    EXPECT_EQ(joined.size(), folder.size() + 5);
    EXPECT_NE(folder.back(), joined[folder.size()]);
}

} // namespace
