#include "platform/platform.h"

#include "platform/windows/handles.h"
#include "platform/windows/input_guard.h"
#include "platform/windows/picture_drawing.h"

namespace rotika {

namespace {

/// The first use of a font reads it from disk and renders its glyphs, which takes longer than a whole paint.
void warmFonts() {
    const std::u16string letters =
        u"AĄBCĆDEĘFGHIJKLŁMNŃOÓPQRSŚTUVWXYZŹŻaąbcćdeęfghijklłmnńoópqrsśtuvwxyzźż 0123456789/";
    const PictureColor white{255, 255, 255, 255};
    Picture picture{1, 1, {}};
    for (const float boldSize : {19.0F, 16.0F, 15.0F, 14.0F}) {
        picture.commands.emplace_back(TextInBox{letters, {0, 0, 1, 1}, boldSize, true, white});
    }
    picture.commands.emplace_back(TextInBox{letters, {0, 0, 1, 1}, 13, false, white});
    const MemoryDc memory(CreateCompatibleDC(nullptr));
    drawPicture(memory.get(), picture);
}

} // namespace

bool openPlatform() {
    SetProcessDPIAware();
    startDrawing();
    startInputGuard();
    warmFonts();
    return true;
}

} // namespace rotika
