#pragma once

// The flat API of GDI+, and an owning handle for each kind of object.

#include "platform/windows/handles.h"

#include <objidl.h>

#include <algorithm>

// The header expects the macros min and max.
namespace Gdiplus {
using std::max;
using std::min;
} // namespace Gdiplus

#include <gdiplus.h>

namespace gdip = Gdiplus::DllExports;

namespace rotika {

inline void deleteGraphics(Gdiplus::GpGraphics* object) {
    gdip::GdipDeleteGraphics(object);
}
inline void deleteBrush(Gdiplus::GpSolidFill* object) {
    gdip::GdipDeleteBrush(object);
}
inline void deletePen(Gdiplus::GpPen* object) {
    gdip::GdipDeletePen(object);
}
inline void deleteGdipFont(Gdiplus::GpFont* object) {
    gdip::GdipDeleteFont(object);
}
inline void disposeImage(Gdiplus::GpImage* object) {
    gdip::GdipDisposeImage(object);
}
inline void deleteFontFamily(Gdiplus::GpFontFamily* object) {
    gdip::GdipDeleteFontFamily(object);
}
inline void deleteStringFormat(Gdiplus::GpStringFormat* object) {
    gdip::GdipDeleteStringFormat(object);
}
inline void disposeImageAttributes(Gdiplus::GpImageAttributes* object) {
    gdip::GdipDisposeImageAttributes(object);
}

using GraphicsHandle = UniqueHandle<Gdiplus::GpGraphics*, deleteGraphics>;
using BrushHandle = UniqueHandle<Gdiplus::GpSolidFill*, deleteBrush>;
using PenHandle = UniqueHandle<Gdiplus::GpPen*, deletePen>;
using GdipFontHandle = UniqueHandle<Gdiplus::GpFont*, deleteGdipFont>;
using ImageHandle = UniqueHandle<Gdiplus::GpImage*, disposeImage>;
using FontFamilyHandle = UniqueHandle<Gdiplus::GpFontFamily*, deleteFontFamily>;
using StringFormatHandle = UniqueHandle<Gdiplus::GpStringFormat*, deleteStringFormat>;
using ImageAttributesHandle = UniqueHandle<Gdiplus::GpImageAttributes*, disposeImageAttributes>;

} // namespace rotika
