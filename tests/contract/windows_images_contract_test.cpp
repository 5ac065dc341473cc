// Which files count as images.

#include "contract_test.h"
#include "platform/overlay_window.h"
#include "platform/paths.h"
#include "platform/picture.h"

#include "platform/windows/handles.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

namespace {

using WindowsImages = ContractTest;

/// A bitmap file of one colour, 24 bits a pixel.
std::string bitmapFile(std::int32_t width, std::int32_t height, const std::string& blueGreenRed) {
    const std::size_t rowBytes = (static_cast<std::size_t>(width) * 3 + 3) / 4 * 4;
    BITMAPFILEHEADER file{};
    BITMAPINFOHEADER info{};
    file.bfType = 0x4D42;
    file.bfOffBits = sizeof(file) + sizeof(info);
    file.bfSize = file.bfOffBits + static_cast<DWORD>(rowBytes) * static_cast<DWORD>(height);
    info.biSize = sizeof(info);
    info.biWidth = width;
    info.biHeight = height;
    info.biPlanes = 1;
    info.biBitCount = 24;
    std::string bytes(file.bfSize, '\0');
    std::memcpy(bytes.data(), &file, sizeof(file));
    std::memcpy(bytes.data() + sizeof(file), &info, sizeof(info));
    for (std::size_t i = file.bfOffBits; i + 3 <= bytes.size(); i += 3)
        bytes.replace(i, 3, blueGreenRed);
    return bytes;
}

TEST_F(WindowsImages, AnImageIsAFileOnADiskOfBoundedSizeAndIsScaledToWhatIsDrawn) {
    const std::u16string path = joinPath(temporaryFolder(), u"image.bmp");
    const auto load = [&](const std::string& bytes) {
        std::ofstream(std::filesystem::path(path), std::ios::binary) << bytes;
        return loadPictureImage(path, 40);
    };
    const std::string red{20, 20, static_cast<char>(220)};
    EXPECT_EQ(load(""), nullptr);
    EXPECT_EQ(load("no image"), nullptr);
    EXPECT_EQ(load(bitmapFile(largestImageSidePx + 4, 2, red)), nullptr);
    EXPECT_EQ(load(bitmapFile(2400, 2400, red)), nullptr) << "more than 16 MB";
    EXPECT_NE(load(bitmapFile(largestImageSidePx, 2, red)), nullptr);
    const PictureImage* const image = load(bitmapFile(1600, 1200, red));
    ASSERT_NE(image, nullptr);

    const auto recorder = openRecorder(recorderPlace);
    placeOverlayWindow(wheelWindow(), {150, 150, 350, 250});
    presentPicture(wheelWindow(), {200, 100, {ImageInBox{image, {10, 10, 40, 40}, 1}}});
    showOverlayWindow(wheelWindow());
    EXPECT_TRUE(pumpUntil([] {
        const std::vector<PictureColor> row = screenPixels({159, 170, 201, 171});
        return row.front().green > 200 && row.at(1).green < 60 && row.at(40).green < 60 &&
               row.at(41).green > 200;
    }));
}

} // namespace
