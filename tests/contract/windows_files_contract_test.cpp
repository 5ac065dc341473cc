// What other programs on Windows do to a file that is to be replaced.

#include "contract_test.h"
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

} // namespace
