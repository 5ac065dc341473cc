// What a picture looks like on the screen, over another program's white window.

#include "contract_test.h"
#include "platform/overlay_window.h"
#include "screen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ostream>

void PrintTo(const PictureColor& color, std::ostream* out) {
    *out << int{color.red} << "," << int{color.green} << "," << int{color.blue};
}

namespace {

constexpr Rect layerPlace{150, 150, 350, 250};
constexpr PictureColor white{255, 255, 255, 255};
constexpr PictureColor red{255, 220, 20, 20};
constexpr PictureColor blue{255, 20, 20, 220};

PictureColor pixelAt(Point inLayer) {
    const std::int32_t x = layerPlace.left + inLayer.x;
    const std::int32_t y = layerPlace.top + inLayer.y;
    return screenPixels({x, y, x + 1, y + 1}).front();
}

bool looksLike(PictureColor seen, PictureColor wanted) {
    constexpr int tolerance = 3;
    return std::abs(seen.red - wanted.red) <= tolerance && std::abs(seen.green - wanted.green) <= tolerance &&
           std::abs(seen.blue - wanted.blue) <= tolerance;
}

void expectPixel(Point inLayer, PictureColor wanted, const std::string& what) {
    EXPECT_TRUE(pumpUntil([&] { return looksLike(pixelAt(inLayer), wanted); }))
        << what << " at " << inLayer.x << ", " << inLayer.y << ": "
        << testing::PrintToString(pixelAt(inLayer));
}

class PixelsContract : public ContractTest {
protected:
    void show(std::vector<DrawCommand> commands) {
        placeOverlayWindow(wheelWindow(), layerPlace);
        presentPicture(wheelWindow(), {layerPlace.width(), layerPlace.height(), std::move(commands)});
        showOverlayWindow(wheelWindow());
    }

    void SetUp() override {
        ContractTest::SetUp();
        recorder = openRecorder(recorderPlace);
        expectPixel({0, 0}, white, "the window beneath");
    }

    std::unique_ptr<Recorder> recorder;
};

TEST_F(PixelsContract, EachCommandLeavesItsPixels) {
    struct Case {
        const char* name;
        std::vector<DrawCommand> commands;
        std::vector<std::pair<Point, PictureColor>> seen;
    };
    constexpr PictureBox square{50, 0, 100, 100};
    const FilledRectangle everything{{0, 0, 200, 100}, blue};
    const std::vector<Case> cases{
        {"nothing", {}, {{{100, 50}, white}}},
        // 0x87 of #3498DB over white
        {"translucent rectangle",
         {FilledRectangle{{20, 10, 60, 40}, {0x87, 0x34, 0x98, 0xDB}}},
         {{{50, 30}, {255, 148, 200, 236}}, {{15, 30}, white}, {{85, 30}, white}, {{50, 55}, white}}},
        {"filled pie, clockwise from three o'clock",
         {FilledPie{square, -90, 90, red}},
         {{{125, 25}, red}, {{75, 25}, white}, {{125, 75}, white}, {{145, 5}, white}}},
        {"outlined pie: arc and both radii",
         {OutlinedPie{{60, 10, 80, 80}, 0, 90, red, 6}},
         {{{120, 50}, red}, {{100, 70}, red}, {{128, 78}, red}, {{112, 62}, white}, {{80, 30}, white}}},
        {"outlined arc without radii",
         {OutlinedArc{{60, 10, 80, 80}, -90, 180, red, 6}},
         {{{140, 50}, red}, {{100, 10}, red}, {{100, 50}, white}, {{60, 50}, white}}},
        {"cut-out",
         {everything, CutOutEllipse{square}},
         {{{100, 50}, white}, {{53, 3}, blue}, {{147, 97}, blue}, {{10, 50}, blue}}},
        {"outlined ellipse",
         {OutlinedEllipse{{60, 10, 80, 80}, red, 6}},
         {{{60, 50}, red}, {{140, 50}, red}, {{100, 90}, red}, {{100, 50}, white}, {{63, 13}, white}}},
        {"outlined rectangle",
         {OutlinedRectangle{{60, 10, 80, 80}, red, 6}},
         {{{60, 50}, red}, {{138, 90}, red}, {{100, 50}, white}, {{50, 50}, white}}},
        {"filled polygon",
         {Polygon{{{{50, 90}, {150, 90}, {100, 10}}}, 3, red, 0}},
         {{{100, 60}, red}, {{60, 85}, red}, {{60, 40}, white}, {{140, 40}, white}}},
        {"outlined polygon, closed",
         {Polygon{{{{50, 90}, {150, 90}, {100, 10}}}, 3, red, 6}},
         {{{100, 90}, red}, {{75, 50}, red}, {{125, 50}, red}, {{100, 60}, white}}},
        {"later commands over earlier ones",
         {everything, FilledRectangle{{60, 10, 80, 80}, red}},
         {{{100, 50}, red}, {{50, 50}, blue}}},
    };
    for (const Case& drawn : cases) {
        show(drawn.commands);
        for (const auto& [at, color] : drawn.seen)
            expectPixel(at, color, drawn.name);
    }
}

/// The smallest rectangle around all that is not white, in layer pixels; empty when all is.
Rect inkWithin(const Rect& part) {
    const std::vector<PictureColor> pixels =
        screenPixels({layerPlace.left + part.left, layerPlace.top + part.top, layerPlace.left + part.right,
                      layerPlace.top + part.bottom});
    Rect ink{part.right, part.bottom, part.left, part.top};
    for (std::int32_t y = part.top; y < part.bottom; ++y) {
        for (std::int32_t x = part.left; x < part.right; ++x) {
            const auto index = static_cast<std::size_t>((y - part.top) * part.width() + x - part.left);
            if (!looksLike(pixels[index], white)) {
                ink = {std::min(ink.left, x), std::min(ink.top, y), std::max(ink.right, x + 1),
                       std::max(ink.bottom, y + 1)};
            }
        }
    }
    return ink.width() > 0 ? ink : Rect{};
}

TEST_F(PixelsContract, TextIsCentredAndBrokenBetweenWords) {
    constexpr Rect all{0, 0, 200, 100};
    constexpr PictureColor black{255, 0, 0, 0};
    show({TextInBox{u"Łąka", {40, 10, 120, 80}, 20, true, black}});
    const auto isCentredWord = [](const Rect& ink) {
        return std::abs((ink.left + ink.right) / 2 - 100) <= 3 &&
               std::abs((ink.top + ink.bottom) / 2 - 50) <= 5 && ink.height() >= 12 && ink.height() <= 26 &&
               ink.width() >= 20 && ink.width() <= 80;
    };
    EXPECT_TRUE(pumpUntil([&] { return isCentredWord(inkWithin(all)); }))
        << testing::PrintToString(inkWithin(all));
    const Rect word = inkWithin(all);

    show({TextInBox{u"Łąka Łąka Łąka", {40, 10, 80, 80}, 20, true, black}});
    EXPECT_TRUE(pumpUntil([&] { return inkWithin(all).height() > word.height() + 15; })) << "one line only";
    EXPECT_GE(inkWithin(all).left, 40);
    EXPECT_LE(inkWithin(all).right, 120);

    show({TextInBox{u"Łąka", {40, 10, 120, 80}, 13, false, black}});
    EXPECT_TRUE(
        pumpUntil([&] { return inkWithin(all).width() > 0 && inkWithin(all).width() < word.width(); }));
}

} // namespace
