// Image files that must cost nothing: the paths come from the person's files.

#include "contract_test.h"
#include "core/text.h"
#include "platform/picture.h"

#include <fcntl.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

namespace {

class LinuxImage : public ContractTest {
protected:
    std::string path(const std::string& name) const { return folder + "/" + name; }

    std::string writePng(const std::string& name, int width, int height) const {
        GdkPixbuf* const pixels = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, width, height);
        gdk_pixbuf_fill(pixels, 0x12345678);
        EXPECT_TRUE(gdk_pixbuf_save(pixels, path(name).c_str(), "png", nullptr, nullptr));
        g_object_unref(pixels);
        return path(name);
    }

    static bool loads(const std::string& file) {
        return loadPictureImage(utf16FromUtf8(file), 42) != nullptr;
    }

    const std::string folder = utf8FromUtf16(temporaryFolder());
};

TEST_F(LinuxImage, LoadsWhatIsWithinTheLimits) {
    EXPECT_TRUE(loads(writePng("small.png", 1, 1)));
    EXPECT_TRUE(loads(writePng("wide.png", largestImageSidePx, 1)));
    EXPECT_FALSE(loads(writePng("too wide.png", largestImageSidePx + 1, 1)));
    EXPECT_FALSE(loads(writePng("too high.png", 1, largestImageSidePx + 1)));
}

TEST_F(LinuxImage, AnythingElseIsNoImageAndReturnsAtOnce) {
    const std::string whole = writePng("whole.png", 300, 300);
    std::filesystem::copy_file(whole, path("cut.png"));
    std::filesystem::resize_file(path("cut.png"), std::filesystem::file_size(whole) / 2);
    std::filesystem::copy_file(whole, path("large.png"));
    std::filesystem::resize_file(path("large.png"), largestImageBytes + 1);
    std::ofstream(path("empty.png"));
    ASSERT_EQ(mkfifo(path("pipe.png").c_str(), 0600), 0);
    for (const std::string& file : {path("cut.png"), path("large.png"), path("empty.png"), path("pipe.png"),
                                    folder, path("none.png"), std::string("/dev/zero"), std::string()})
        EXPECT_FALSE(loads(file)) << file;
}

} // namespace
