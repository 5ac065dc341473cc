// Files and libraries.

#include "contract_test.h"
#include "platform/dynamic_library.h"
#include "platform/files.h"
#include "platform/paths.h"

using namespace rotika;

namespace {

namespace fs = std::filesystem;

using SystemContract = ContractTest;

/// The name is too long to append ".tmp": Windows limits the whole path, other systems the name.
TEST_F(SystemContract, AFileIsReplacedCompletelyOrUnchanged) {
    const std::u16string folder = temporaryFolder();
    constexpr bool countsPaths = fs::path::preferred_separator == '\\';
    const std::u16string path =
        joinPath(folder, std::u16string(countsPaths ? 258 - folder.size() : 255, u'n'));
    const std::string longest(longestFileBytes, 'x');
    for (const std::string& bytes : {std::string("first\r\n\x1a after"), std::string(), longest}) {
        ASSERT_TRUE(replaceFileBytes(path, bytes));
        EXPECT_TRUE(readFileBytes(path) == bytes && pathExists(path)) << bytes.size();
    }
    EXPECT_FALSE(replaceFileBytes(path, longest + "x"));
    EXPECT_TRUE(readFileBytes(path) == longest);
    removeFile(path);
    EXPECT_TRUE(fs::is_empty(folder)) << "a temporary file was left";
}

TEST_F(SystemContract, ALibraryIsLoadedButNotATruncatedOneNorByNameFromTheCurrentFolder) {
    const std::u16string path = fs::path(ROTIKA_CONTRACT_LIBRARY).make_preferred().u16string();
    const LibraryHandle library = loadLibrary(path, LibrarySearch::ownFolderFirst);
    ASSERT_NE(library, nullptr);
    EXPECT_NE(findLibraryFunction(library, "vosk_model_new"), nullptr);
    const std::u16string folder = temporaryFolder();
    const std::string whole = readFileBytes(path).value();
    for (const std::size_t percent : {0U, 1U, 5U, 10U, 20U}) {
        const std::u16string cut = joinPath(folder, std::u16string(percent + 1, u'c'));
        ASSERT_TRUE(replaceFileBytes(cut, whole.substr(0, whole.size() * percent / 100)));
        EXPECT_EQ(loadLibrary(cut, LibrarySearch::ownFolderFirst), nullptr) << percent;
    }
    const fs::path former = fs::current_path();
    ASSERT_TRUE(replaceFileBytes(joinPath(folder, u"foreign.dll"), whole));
    fs::current_path(folder);
    for (const LibrarySearch search : {LibrarySearch::ownFolderFirst, LibrarySearch::systemDefault})
        EXPECT_EQ(loadLibrary(u"foreign.dll", search), nullptr);
    fs::current_path(former);
}

} // namespace
