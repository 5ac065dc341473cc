#include "contract_test.h"
#include "core/text.h"
#include "platform/dynamic_library.h"
#include "platform/files.h"
#include "platform/paths.h"

#include <algorithm>

namespace {

using LibraryContract = ContractTest;

const std::u16string someLibrary =
    std::filesystem::path(ROTIKA_CONTRACT_LIBRARY).make_preferred().u16string();
const std::u16string systemLibrary = std::filesystem::path(ROTIKA_SYSTEM_LIBRARY).u16string();

TEST_F(LibraryContract, IsFoundByPathAndByName) {
    const LibraryHandle library = loadLibrary(someLibrary, LibrarySearch::besideItself);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(loadLibrary(someLibrary, LibrarySearch::asSystemDoes), library);
    EXPECT_NE(findLibraryFunction(library, "vosk_model_new"), nullptr);
    EXPECT_EQ(findLibraryFunction(library, "vosk_model_gone"), nullptr);
    EXPECT_EQ(findLibraryFunction(library, ""), nullptr);

    const LibraryHandle system = loadLibrary(systemLibrary, LibrarySearch::asSystemDoes);
    ASSERT_NE(system, nullptr);
    EXPECT_EQ(findLibraryFunction(system, "vosk_model_new"), nullptr);
}

TEST_F(LibraryContract, WhatIsNoLibraryIsRefused) {
    const std::u16string folder = temporaryFolder();
    const std::string whole = readFileBytes(someLibrary).value();
    std::vector<std::u16string> refused{u"",
                                        folder,
                                        joinPath(folder, u"absent"),
                                        u"rotika-absent.so",
                                        someLibrary + u'\xD800',
                                        someLibrary + u'\0' + u"x"};
    const auto write = [&](const std::string& bytes) {
        refused.push_back(joinPath(folder, u"library" + decimalText(static_cast<int>(refused.size()))));
        ASSERT_TRUE(replaceFileBytes(refused.back(), bytes));
    };
    write("");
    write("no library at all");
    for (const int percent : {1, 5, 10, 20}) { // as a download leaves it; what only debuggers read comes last
        write(whole.substr(0, whole.size() * static_cast<std::size_t>(percent) / 100));
    }
    for (const std::u16string& name : refused) {
        for (const LibrarySearch search : {LibrarySearch::besideItself, LibrarySearch::asSystemDoes})
            EXPECT_EQ(loadLibrary(name, search), nullptr) << utf8FromUtf16(name);
    }
}

TEST_F(LibraryContract, FoldersAreListed) {
    const std::filesystem::path folder = temporaryFolder();
    for (const char16_t* const name : {u"Zażółć", u".hidden", u"a b"})
        std::filesystem::create_directory(folder / name);
    ASSERT_TRUE(replaceFileBytes((folder / u"file").u16string(), "text"));
    std::vector<std::u16string> names = foldersIn(folder.u16string());
    std::ranges::sort(names);
    EXPECT_EQ(names, (std::vector<std::u16string>{u".hidden", u"Zażółć", u"a b"}));
    EXPECT_TRUE(foldersIn((folder / u"file").u16string()).empty());
    EXPECT_TRUE(foldersIn((folder / u"absent").u16string()).empty());
}

} // namespace
