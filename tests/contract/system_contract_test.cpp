// What a simulated desktop does not have: pixels, processes that die, libraries.

#include "contract_test.h"
#include "core/text.h"
#include "platform/dynamic_library.h"
#include "platform/files.h"
#include "platform/focus.h"
#include "platform/injection.h"
#include "platform/paths.h"
#include "platform/pointer.h"

#include <algorithm>
#include <cstdlib>

namespace {

namespace fs = std::filesystem;

using SystemContract = ContractTest;

TEST_F(SystemContract, AKilledProgramLeavesNoKeyOrButtonOfAClickDown) {
    auto recorder = openRecorder(recorderPlace);
    setCursorPosition(overRecorder);
    auto victim = startHoldingInput();
    // A window manager may hold a button back for a moment, so the order of buttons and keys is open.
    for (const char* const key : {"key 65 down", "key 39 down", "button 1 down", "key 67 up", "key 66 down"})
        EXPECT_TRUE(recorder->hears(key)) << key;
    EXPECT_EQ(recorder->events().size(), 6U) << "nothing is let go while the program lives";
    victim.reset();
    for (const char* const event : {"key 65 up", "key 39 up", "button 1 up"})
        EXPECT_TRUE(recorder->hears(event)) << event;
    EXPECT_FALSE(contains(recorder->events(), "key 66 up")) << "left down on purpose";
    EXPECT_EQ(std::ranges::count(recorder->events(), "key 67 up"), 1) << "let go before the death";
    injectKey('B', false, InputMotion::up);
    EXPECT_TRUE(recorder->hears("key 66 up"));
    const WindowHandle dead = recorder->window();
    recorder.reset();
    bringToForeground(dead);
    EXPECT_TRUE(pumpUntil([&] { return foregroundWindow() != dead; }));
}

TEST_F(SystemContract, ALibraryIsFoundByPathAndByNameAndWhatIsNoneIsRefused) {
    const std::u16string path = fs::path(ROTIKA_CONTRACT_LIBRARY).make_preferred().u16string();
    const LibraryHandle library = loadLibrary(path, LibrarySearch::besideItself);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(loadLibrary(path, LibrarySearch::asSystemDoes), library);
    EXPECT_NE(findLibraryFunction(library, "vosk_model_new"), nullptr);
    EXPECT_EQ(findLibraryFunction(library, "vosk_model_gone"), nullptr);
    EXPECT_EQ(findLibraryFunction(library, ""), nullptr);
    EXPECT_NE(loadLibrary(fs::path(ROTIKA_SYSTEM_LIBRARY).u16string(), LibrarySearch::asSystemDoes), nullptr);

    const std::u16string folder = temporaryFolder();
    const std::string whole = readFileBytes(path).value();
    std::vector<std::u16string> refused{u"", folder, u"rotika-absent.so", path + u'\xD800',
                                        path + u'\0' + u"x"};
    for (const std::size_t percent : {0U, 1U, 5U, 10U, 20U}) { // the first ones, as a download leaves them
        refused.push_back(joinPath(folder, u"library" + decimalText(static_cast<int>(percent))));
        ASSERT_TRUE(replaceFileBytes(refused.back(), whole.substr(0, whole.size() * percent / 100)));
    }
    for (const std::u16string& name : refused)
        for (const LibrarySearch search : {LibrarySearch::besideItself, LibrarySearch::asSystemDoes})
            EXPECT_EQ(loadLibrary(name, search), nullptr) << utf8FromUtf16(name);
}

// Pixels

constexpr PictureColor red{255, 220, 20, 20}, blue{255, 20, 20, 220}, black{255, 0, 0, 0};

/// . white, r red, b blue, m a translucent blue over white, ? anything else.
char letterOf(PictureColor seen) {
    const std::pair<char, PictureColor> colors[] = {
        {'.', {255, 255, 255, 255}}, {'r', red}, {'b', blue}, {'m', {255, 148, 200, 236}}};
    constexpr auto isNear = [](int one, int other) { return std::abs(one - other) <= 3; };
    for (const auto& [letter, color] : colors)
        if (isNear(seen.red, color.red) && isNear(seen.green, color.green) && isNear(seen.blue, color.blue))
            return letter;
    return '?';
}

class PixelsContract : public ContractTest {
protected:
    /// Every 25th pixel of every 25th row of the layer, from 12, 12.
    static std::string samples() {
        const std::vector<PictureColor> pixels = screenPixels(layerPlace);
        std::string letters;
        for (std::size_t y = 12; y < 100; y += 25, letters += ' ')
            for (std::size_t x = 12; x < 200; x += 25)
                letters += letterOf(pixels[y * 200 + x]);
        return letters;
    }

    /// The smallest rectangle around all that is not white, in layer pixels.
    static Rect ink() {
        const std::vector<PictureColor> pixels = screenPixels(layerPlace);
        Rect around{200, 100, 0, 0};
        for (int i = 0; i < 200 * 100; ++i)
            if (letterOf(pixels[static_cast<std::size_t>(i)]) != '.')
                around = {std::min(around.left, i % 200), std::min(around.top, i / 200),
                          std::max(around.right, i % 200 + 1), std::max(around.bottom, i / 200 + 1)};
        return around;
    }
};

TEST_F(PixelsContract, EachCommandLeavesItsPixels) {
    const auto recorder = openRecorder(recorderPlace); // white
    constexpr PictureBox round{53, 3, 94, 94}, wide{-32, -36, 140, 140};
    const FilledRectangle everything{{0, 0, 200, 100}, blue};
    const std::pair<std::vector<DrawCommand>, std::string> cases[] = {
        {{}, "........ ........ ........ ........ "},
        {{FilledRectangle{{25, 25, 50, 50}, {0x87, 0x34, 0x98, 0xDB}}},
         "........ .mm..... .mm..... ........ "},
        {{FilledPie{round, -90, 90, red}}, "....r... ....rr.. ........ ........ "},
        {{OutlinedPie{wide, 0, 90, red, 12}}, "........ .rrrr... .r...... .r.r.... "},
        {{OutlinedArc{wide, 0, 90, red, 12}}, "........ ....r... ........ ...r.... "},
        {{OutlinedEllipse{{60, 10, 80, 80}, red, 12}}, "...rr... ..r..r.. ..r..r.. ...rr... "},
        {{OutlinedRectangle{{38, 13, 125, 75}, red, 12}}, ".rrrrrr. .r....r. .r....r. .rrrrrr. "},
        {{Polygon{{{{50, 95}, {150, 95}, {100, 5}}}, 3, red, 0}}, "........ ...rr... ...rr... ..rrrr.. "},
        {{Polygon{{{{38, 13}, {188, 13}, {38, 63}}}, 3, red, 8}}, ".rrrrrrr .r..r... .r...... ........ "},
        {{everything, CutOutEllipse{round}, FilledRectangle{{0, 25, 50, 50}, red}},
         "bbb..bbb rr....bb rr....bb bbb..bbb "},
    };
    for (const auto& [commands, expected] : cases) {
        showLayer(wheelWindow(), commands);
        EXPECT_TRUE(pumpUntil([&wanted = expected] { return samples() == wanted; })) << expected << "\n"
                                                                                     << samples();
    }
}

TEST_F(PixelsContract, TextIsCentredAndBrokenBetweenWords) {
    const auto recorder = openRecorder(recorderPlace);
    const auto writes = [](const char16_t* text, float width, float sizePx,
                           const std::function<bool()>& seen) {
        showLayer(wheelWindow(), {TextInBox{text, {40, 10, width, 80}, sizePx, true, black}});
        EXPECT_TRUE(pumpUntil(seen)) << testing::PrintToString(ink());
    };
    writes(u"Łąka", 120, 20, [] {
        const Rect seen = ink();
        return std::abs((seen.left + seen.right) / 2 - 100) <= 3 &&
               std::abs((seen.top + seen.bottom) / 2 - 50) <= 5 && seen.height() >= 12 &&
               seen.height() <= 26 && seen.width() >= 20 && seen.width() <= 80;
    });
    const Rect word = ink();
    writes(u"Łąka Łąka Łąka", 80, 20, [&] { return ink().height() > word.height() + 15; });
    EXPECT_TRUE(ink().left >= 40 && ink().right <= 120) << "not cut at the box";
    writes(u"Łąka", 120, 13, [&] { return ink().width() > 0 && ink().width() < word.width(); });
}

} // namespace
