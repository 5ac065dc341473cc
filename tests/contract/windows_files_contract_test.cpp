// What other programs on Windows do to a file that is to be replaced.

#include "contract_test.h"
#include "platform/dynamic_library.h"
#include "platform/files.h"
#include "platform/paths.h"

#include "platform/windows/handles.h"

#include <gtest/gtest.h>

namespace {

using WindowsFiles = ContractTest;

TEST_F(WindowsFiles, AFileThatAnotherProgramHoldsOpenIsWrittenInPlaceIfItLetsOthersWrite) {
    const std::u16string path = joinPath(temporaryFolder(), u"file");
    const std::pair<DWORD, const char*> holders[] = {{FILE_SHARE_READ | FILE_SHARE_WRITE, "new"},
                                                     {FILE_SHARE_READ, "old and longer"}};
    for (const auto& [sharing, content] : holders) {
        ASSERT_TRUE(replaceFileBytes(path, "old and longer"));
        const KernelHandle held = fileHandle(CreateFileW(wideText(path), GENERIC_READ, sharing, nullptr,
                                                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(held);
        EXPECT_EQ(replaceFileBytes(path, "new"), std::string(content) == "new");
        EXPECT_EQ(readFileBytes(path), content);
    }
}

TEST_F(WindowsFiles, AReadOnlyFileAndADeviceAreLeftAlone) {
    const std::u16string path = joinPath(temporaryFolder(), u"file");
    ASSERT_TRUE(replaceFileBytes(path, "old"));
    ASSERT_TRUE(SetFileAttributesW(wideText(path), FILE_ATTRIBUTE_READONLY));
    EXPECT_FALSE(replaceFileBytes(path, "new"));
    EXPECT_EQ(readFileBytes(path), "old");
    SetFileAttributesW(wideText(path), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(readFileBytes(u"NUL"), std::nullopt);
}

TEST_F(WindowsFiles, FoldersMayBeAsDeepAsTheyLike) {
    const auto unlimited = [](const std::u16string& folder) { return u"\\\\?\\" + folder; };
    const std::u16string first = temporaryFolder() + u"\\deep";
    std::u16string folder = first;
    for (; folder.size() < 320; folder += u"\\" + std::u16string(9, u'ż')) {
        ASSERT_NE(CreateDirectoryW(wideText(unlimited(folder)), nullptr), 0);
        const std::u16string path = joinPath(folder, u"file");
        EXPECT_TRUE(replaceFileBytes(path, "new")) << folder.size();
        EXPECT_EQ(readFileBytes(path), "new") << folder.size();
        EXPECT_TRUE(pathExists(path)) << folder.size();
        const std::u16string parent = folder.substr(0, folder.rfind(u'\\'));
        EXPECT_EQ(foldersIn(parent).size(), 1U) << folder.size();
        removeFile(path);
        EXPECT_FALSE(pathExists(path)) << folder.size();
    }
    for (; folder.size() >= first.size(); folder.resize(folder.rfind(u'\\'))) {
        RemoveDirectoryW(wideText(unlimited(folder)));
    }
}

TEST_F(WindowsFiles, ALibraryThatKnowsNoWideNamesOpensAPathWithForeignLetters) {
    const std::u16string path = joinPath(temporaryFolder(), u"zażółć");
    ASSERT_TRUE(replaceFileBytes(path, "here"));
    const KernelHandle file = fileHandle(CreateFileA(pathForLibrary(path).c_str(), GENERIC_READ, 0, nullptr,
                                                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_TRUE(file);
}

} // namespace
