#include "platform/windows/picture_drawing.h"

#include "base/picture.h"

#include "platform/windows/gdiplus_api.h"
#include "platform/windows/picture_image.h"

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

namespace rotika {

namespace {

Gdiplus::ARGB argbOf(PictureColor color) {
    return static_cast<Gdiplus::ARGB>(color.alpha) << 24U | static_cast<Gdiplus::ARGB>(color.red) << 16U |
           static_cast<Gdiplus::ARGB>(color.green) << 8U | color.blue;
}

BrushHandle solidBrush(PictureColor color) {
    BrushHandle brush;
    gdip::GdipCreateSolidFill(argbOf(color), brush.slot());
    return brush;
}

PenHandle solidPen(PictureColor color, float width) {
    PenHandle pen;
    gdip::GdipCreatePen1(argbOf(color), width, Gdiplus::UnitPixel, pen.slot());
    return pen;
}

FontFamilyHandle interfaceFontFamily() {
    FontFamilyHandle family;
    if (gdip::GdipCreateFontFamilyFromName(L"Segoe UI", nullptr, family.slot()) != Gdiplus::Ok) {
        gdip::GdipGetGenericFontFamilySansSerif(family.slot());
    }
    return family;
}

StringFormatHandle centredFormat() {
    StringFormatHandle format;
    gdip::GdipCreateStringFormat(0, LANG_NEUTRAL, format.slot());
    gdip::GdipSetStringFormatAlign(format.get(), Gdiplus::StringAlignmentCenter);
    gdip::GdipSetStringFormatLineAlign(format.get(), Gdiplus::StringAlignmentCenter);
    return format;
}

/// Draws the commands of one picture. A command that fails changes nothing.
class PictureReplay {
public:
    explicit PictureReplay(HDC surface) : family(interfaceFontFamily()), format(centredFormat()) {
        gdip::GdipCreateFromHDC(surface, owned.slot());
        graphics = owned.get();
        gdip::GdipSetSmoothingMode(graphics, Gdiplus::SmoothingModeAntiAlias);
        gdip::GdipSetTextRenderingHint(graphics, Gdiplus::TextRenderingHintAntiAlias);
        gdip::GdipGraphicsClear(graphics, 0);
    }

    void operator()(const FilledPie& pie) {
        gdip::GdipFillPie(graphics, solidBrush(pie.color).get(), pie.box.x, pie.box.y, pie.box.width,
                          pie.box.height, pie.startAngle, pie.sweepAngle);
    }

    void operator()(const OutlinedPie& pie) {
        gdip::GdipDrawPie(graphics, solidPen(pie.color, pie.penWidth).get(), pie.box.x, pie.box.y,
                          pie.box.width, pie.box.height, pie.startAngle, pie.sweepAngle);
    }

    void operator()(const OutlinedArc& arc) {
        gdip::GdipDrawArc(graphics, solidPen(arc.color, arc.penWidth).get(), arc.box.x, arc.box.y,
                          arc.box.width, arc.box.height, arc.startAngle, arc.sweepAngle);
    }

    void operator()(const CutOutEllipse& hole) {
        gdip::GdipSetCompositingMode(graphics, Gdiplus::CompositingModeSourceCopy);
        gdip::GdipFillEllipse(graphics, solidBrush({}).get(), hole.box.x, hole.box.y, hole.box.width,
                              hole.box.height);
        gdip::GdipSetCompositingMode(graphics, Gdiplus::CompositingModeSourceOver);
    }

    void operator()(const OutlinedEllipse& ellipse) {
        gdip::GdipDrawEllipse(graphics, solidPen(ellipse.color, ellipse.penWidth).get(), ellipse.box.x,
                              ellipse.box.y, ellipse.box.width, ellipse.box.height);
    }

    void operator()(const FilledRectangle& rectangle) {
        gdip::GdipFillRectangle(graphics, solidBrush(rectangle.color).get(), rectangle.box.x, rectangle.box.y,
                                rectangle.box.width, rectangle.box.height);
    }

    void operator()(const OutlinedRectangle& rectangle) {
        gdip::GdipDrawRectangle(graphics, solidPen(rectangle.color, rectangle.penWidth).get(),
                                rectangle.box.x, rectangle.box.y, rectangle.box.width, rectangle.box.height);
    }

    void operator()(const Polygon& polygon) {
        std::array<Gdiplus::GpPointF, std::tuple_size_v<decltype(polygon.points)>> points;
        for (std::size_t i = 0; i < points.size(); ++i) {
            points[i].X = polygon.points[i].x;
            points[i].Y = polygon.points[i].y;
        }
        const auto count = static_cast<INT>(polygon.count);
        if (polygon.penWidth > 0) {
            gdip::GdipDrawPolygon(graphics, solidPen(polygon.color, polygon.penWidth).get(), points.data(),
                                  count);
        } else {
            gdip::GdipFillPolygon(graphics, solidBrush(polygon.color).get(), points.data(), count,
                                  Gdiplus::FillModeAlternate);
        }
    }

    void operator()(const TextInBox& text) {
        const Gdiplus::GpRectF box(text.box.x, text.box.y, text.box.width, text.box.height);
        gdip::GdipDrawString(graphics, wideText(text.text), static_cast<INT>(text.text.size()),
                             fontFor(text.sizePx, text.bold), &box, format.get(),
                             solidBrush(text.color).get());
    }

    void operator()(const ImageInBox& drawn) {
        if (drawn.image == nullptr) {
            return;
        }
        Gdiplus::GpImage* const image = drawn.image->pixels;
        UINT width = 0;
        UINT height = 0;
        gdip::GdipGetImageWidth(image, &width);
        gdip::GdipGetImageHeight(image, &height);
        gdip::GdipDrawImageRectRect(graphics, image, drawn.box.x, drawn.box.y, drawn.box.width,
                                    drawn.box.height, 0, 0, static_cast<float>(width),
                                    static_cast<float>(height), Gdiplus::UnitPixel,
                                    fadedBy(drawn.opacity).get(), nullptr, nullptr);
    }

private:
    Gdiplus::GpFont* fontFor(float sizePx, bool bold) {
        for (const CachedFont& cached : fonts) {
            if (cached.sizePx == sizePx && cached.bold == bold) {
                return cached.font.get();
            }
        }
        GdipFontHandle font;
        gdip::GdipCreateFont(family.get(), sizePx, bold ? Gdiplus::FontStyleBold : Gdiplus::FontStyleRegular,
                             Gdiplus::UnitPixel, font.slot());
        fonts.push_back({sizePx, bold, std::move(font)});
        return fonts.back().font.get();
    }

    static ImageAttributesHandle fadedBy(float opacity) {
        ImageAttributesHandle attributes;
        gdip::GdipCreateImageAttributes(attributes.slot());
        const Gdiplus::ColorMatrix matrix{
            {{1, 0, 0, 0, 0}, {0, 1, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 0, 0, opacity, 0}, {0, 0, 0, 0, 1}}};
        gdip::GdipSetImageAttributesColorMatrix(attributes.get(), Gdiplus::ColorAdjustTypeDefault, TRUE,
                                                &matrix, nullptr, Gdiplus::ColorMatrixFlagsDefault);
        return attributes;
    }

    struct CachedFont {
        float sizePx;
        bool bold;
        GdipFontHandle font;
    };

    GraphicsHandle owned;
    Gdiplus::GpGraphics* graphics = nullptr;
    FontFamilyHandle family;
    StringFormatHandle format;
    std::vector<CachedFont> fonts;
};

} // namespace

void startDrawing() {
    const Gdiplus::GdiplusStartupInput input(nullptr, FALSE, FALSE);
    ULONG_PTR token = 0;
    Gdiplus::GdiplusStartup(&token, &input, nullptr);
}

void drawPicture(HDC surface, const Picture& picture) {
    PictureReplay replay(surface);
    for (const DrawCommand& command : picture.commands) {
        std::visit(replay, command);
    }
}

} // namespace rotika
