// Files, libraries and pixels.

#include "contract_test.h"
#include "platform/dynamic_library.h"
#include "platform/files.h"
#include "platform/paths.h"

#include <algorithm>

namespace {

namespace fs = std::filesystem;

using SystemContract = ContractTest;

/// The name leaves no room for that of a temporary file: Windows counts the whole path, others the name.
TEST_F(SystemContract, AFileIsReplacedAsAWholeOrStaysAsItIs) {
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

TEST_F(SystemContract, ALibraryIsFoundAndOneThatWasCutShortIsRefused) {
    const std::u16string path = fs::path(ROTIKA_CONTRACT_LIBRARY).make_preferred().u16string();
    const LibraryHandle library = loadLibrary(path, LibrarySearch::besideItself);
    ASSERT_NE(library, nullptr);
    EXPECT_NE(findLibraryFunction(library, "vosk_model_new"), nullptr);
    const std::u16string folder = temporaryFolder();
    const std::string whole = readFileBytes(path).value();
    for (const std::size_t percent : {0U, 1U, 5U, 10U, 20U}) {
        const std::u16string cut = joinPath(folder, std::u16string(percent + 1, u'c'));
        ASSERT_TRUE(replaceFileBytes(cut, whole.substr(0, whole.size() * percent / 100)));
        EXPECT_EQ(loadLibrary(cut, LibrarySearch::besideItself), nullptr) << percent;
    }
}

constexpr PictureColor red{255, 220, 20, 20}, blue{255, 20, 20, 220};

/// . white, r red, b blue.
char letterOf(PictureColor seen) {
    if (seen.green > 128)
        return '.';
    return seen.red > seen.blue ? 'r' : 'b';
}

/// Every 25th pixel of every 25th row of a layer's place, from 12, 12.
std::string samples(const Rect& place) {
    const std::vector<PictureColor> pixels = screenPixels(place);
    std::string letters;
    for (std::size_t y = 12; y < 100; y += 25, letters += ' ')
        for (std::size_t x = 12; x < 200; x += 25)
            letters += letterOf(pixels[y * 200 + x]);
    return letters;
}

std::ptrdiff_t inkIn(const Rect& place) {
    return std::ranges::count_if(screenPixels(place),
                                 [](PictureColor seen) { return letterOf(seen) != '.'; });
}

TEST_F(SystemContract, EachDrawCommandLeavesItsPixels) {
    const auto background = openRecorder(recorderPlace); // white
    constexpr PictureBox round{53, 3, 94, 94}, wide{-32, -36, 140, 140};
    const FilledRectangle everything{{0, 0, 200, 100}, blue};
    const std::pair<std::vector<DrawCommand>, std::string> cases[] = {
        {{OutlinedPie{wide, 0, 90, red, 12}}, "........ .rrrr... .r...... .r.r.... "},
        {{OutlinedArc{wide, 0, 90, red, 12}}, "........ ....r... ........ ...r.... "},
        {{OutlinedEllipse{{60, 10, 80, 80}, red, 12}}, "...rr... ..r..r.. ..r..r.. ...rr... "},
        {{OutlinedRectangle{{38, 13, 125, 75}, red, 12}}, ".rrrrrr. .r....r. .r....r. .rrrrrr. "},
        {{Polygon{{{{38, 13}, {188, 13}, {38, 63}}}, 3, red, 8}}, ".rrrrrrr .r..r... .r...... ........ "},
        {{everything, CutOutEllipse{round}, FilledRectangle{{0, 25, 50, 50}, red}},
         "bbb..bbb rr....bb rr....bb bbb..bbb "},
    };
    for (const auto& [commands, expected] : cases) {
        showLayer(wheelWindow(), commands);
        EXPECT_TRUE(pumpUntil([&wanted = expected] { return samples(layerPlace) == wanted; })) << expected;
    }
    showLayer(wheelWindow(), {TextInBox{u"Łąka", {40, 10, 120, 80}, 20, true, red}});
    constexpr Rect middle{layerPlace.left + 70, layerPlace.top + 32, layerPlace.left + 130,
                          layerPlace.top + 68};
    EXPECT_TRUE(pumpUntil([&] { return inkIn(middle) > 100 && inkIn(middle) == inkIn(layerPlace); }));
}

} // namespace
