// Files and folders; messages, timers and threads.

#include "contract_test.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/messages.h"
#include "platform/paths.h"
#include "platform/threads.h"
#include "platform/timer.h"

#include <algorithm>
#include <atomic>

namespace {

namespace fs = std::filesystem;

using FilesContract = ContractTest;
using Names = std::vector<std::u16string>;

Names namesIn(const std::u16string& folder) {
    Names names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().u16string());
    return names;
}

/// The long name leaves no room for that of a temporary file: Windows counts the whole path, others the name.
TEST_F(FilesContract, AFileIsReplacedAsAWhole) {
    const std::u16string folder = temporaryFolder();
    constexpr bool countsPaths = fs::path::preferred_separator == '\\';
    std::string everyByte(1 << 20, '\0');
    for (std::size_t i = 0; i < everyByte.size(); ++i)
        everyByte[i] = static_cast<char>(i * 31);
    for (const std::u16string& name : {std::u16string(u"koło wyboru.json"),
                                       std::u16string(countsPaths ? 258 - folder.size() : 255, u'n')}) {
        const std::u16string path = joinPath(folder, name);
        EXPECT_FALSE(pathExists(path) || readFileBytes(path));
        for (const std::string& bytes :
             {std::string("first\r\n\x1a after"), everyByte, std::string("short"), std::string()}) {
            ASSERT_TRUE(replaceFileBytes(path, bytes));
            EXPECT_TRUE(readFileBytes(path) == bytes && pathExists(path)) << bytes.size();
        }
        EXPECT_EQ(namesIn(folder), Names{name}) << "a temporary file was left";
        removeFile(path);
    }
}

TEST_F(FilesContract, WhatIsTooLongOrNoFileIsNeitherReadNorWritten) {
    const std::u16string folder = temporaryFolder();
    const std::u16string path = joinPath(folder, u"long"), inside = joinPath(folder, u"folder");
    const std::string longest(longestFileBytes, 'x');
    ASSERT_TRUE(replaceFileBytes(path, longest));
    EXPECT_FALSE(replaceFileBytes(path, longest + "x"));
    EXPECT_TRUE(readFileBytes(path) == longest);
    fs::resize_file(path, longest.size() + 1);
    EXPECT_FALSE(readFileBytes(path));
    removeFile(path);

    fs::create_directory(inside);
    const std::u16string absent = joinPath(joinPath(folder, u"absent"), u"file");
    for (const std::u16string& none : {inside, absent, joinPath(folder, std::u16string(256, u'n'))})
        EXPECT_FALSE(replaceFileBytes(none, "text") || readFileBytes(none)) << none.size();
    EXPECT_EQ(namesIn(folder), Names{u"folder"});
}

TEST_F(FilesContract, AReaderSeesTheOldContentOrTheNew) {
    const std::u16string path = joinPath(temporaryFolder(), u"shared");
    const std::string contents[] = {std::string(100'000, 'a'), std::string(70'000, 'b')};
    ASSERT_TRUE(replaceFileBytes(path, contents[0]));
    std::atomic<bool> hasEnded = false;
    ASSERT_TRUE(startDetachedThread([&] {
        for (std::size_t i = 0; i < 50; ++i)
            replaceFileBytes(path, contents[i % 2]);
        hasEnded = true;
    }));
    EXPECT_TRUE(pumpUntil([&] {
        const bool wasLast = hasEnded;
        const auto content = readFileBytes(path);
        EXPECT_TRUE(!content || *content == contents[0] || *content == contents[1]);
        return wasLast;
    }));
}

TEST_F(FilesContract, FoldersAreListedAndPathsJoined) {
    const std::u16string folder = temporaryFolder();
    for (const char16_t* const name : {u"Zażółć", u".hidden", u"a b"})
        fs::create_directory(joinPath(folder, name));
    ASSERT_TRUE(replaceFileBytes(joinPath(folder, u"file"), "text"));
    Names names = foldersIn(folder);
    std::ranges::sort(names);
    EXPECT_EQ(names, (Names{u".hidden", u"Zażółć", u"a b"}));
    EXPECT_TRUE(foldersIn(joinPath(folder, u"file")).empty() && foldersIn(joinPath(folder, u"none")).empty());
    const std::u16string own = programFolder();
    ASSERT_FALSE(own.empty());
    EXPECT_NE(own.back(), joinPath(own, u"name")[own.size()]) << "a trailing separator";
}

using LoopContract = ContractTest;

constexpr std::uint32_t firstMessage = 0x8003;

TEST_F(LoopContract, MessagesArriveWholeAndEachThreadsInOrder) {
    constexpr std::uintptr_t senders = 3, large = ~std::uintptr_t{0};
    constexpr std::intptr_t perSender = 200;
    ASSERT_TRUE(postWindowMessage(mainWindow(), firstMessage + 1, large, -1));
    ASSERT_TRUE(postWindowMessage(wheelWindow(), 0x8002));
    EXPECT_FALSE(postWindowMessage(nullptr, firstMessage));
    EXPECT_TRUE(heard.byMain.empty()) << "delivered by the post itself";
    for (std::uintptr_t sender = 0; sender < senders; ++sender) {
        ASSERT_TRUE(startDetachedThread([sender, window = mainWindow()] {
            for (std::intptr_t i = 0; i < perSender; ++i)
                postWindowMessage(window, firstMessage, sender, i);
        }));
    }
    ASSERT_TRUE(pumpUntil([&] { return heard.byMain.size() == 1 + senders * perSender; }));
    EXPECT_EQ(heard.byMain.front(), HeardMessage(firstMessage + 1, large, -1));
    EXPECT_EQ(heard.byWheel, (std::vector<HeardMessage>{{0x8002, 0, 0}}));
    std::vector<std::intptr_t> next(senders, 0);
    for (std::size_t i = 1; i < heard.byMain.size(); ++i) {
        const auto [message, sender, number] = heard.byMain[i];
        EXPECT_EQ(number, next.at(sender)++);
    }
}

TEST_F(LoopContract, ATimerTicksWithThePeriodOfItsLastStartUntilStopped) {
    startWindowTimer(wheelWindow(), 15, countTick);
    EXPECT_TRUE(pumpUntil([] { return heard.ticks >= 4; }));
    startWindowTimer(wheelWindow(), 60, countTick);
    const int before = heard.ticks;
    const std::uint64_t startedAt = watchMs();
    ASSERT_TRUE(pumpUntil([&] { return heard.ticks >= before + 3; }));
    EXPECT_GE(watchMs() - startedAt, 140U); // three periods, less the coarseness of both clocks
    stopWindowTimer(wheelWindow());
    const int atStop = heard.ticks;
    const std::uint64_t stoppedAt = tickCount();
    ASSERT_TRUE(pumpUntil([&] { return tickCount() - stoppedAt >= 90; }));
    EXPECT_EQ(heard.ticks, atStop);
}

} // namespace
