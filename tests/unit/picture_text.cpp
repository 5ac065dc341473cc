#include "picture_text.h"

#include "core/text.h"

#include "platform/simulated/simulated_desktop.h"

#include <cstdio>
#include <sstream>

namespace {

std::ostream& operator<<(std::ostream& out, const PictureBox& box) {
    return out << " " << box.x << "," << box.y << " " << box.width << "x" << box.height;
}

std::ostream& operator<<(std::ostream& out, const PictureColor& color) {
    char digits[32];
    std::snprintf(digits, sizeof digits, " of %02X %02X %02X %02X", color.alpha, color.red, color.green,
                  color.blue);
    return out << digits;
}

/// Writes one command into the stream.
struct CommandText {
    std::ostringstream& out;

    void operator()(const FilledPie& c) const {
        out << "pie" << c.box << " from " << c.startAngle << " by " << c.sweepAngle << c.color;
    }
    void operator()(const OutlinedPie& c) const {
        out << "pie outline" << c.box << " from " << c.startAngle << " by " << c.sweepAngle << c.color
            << " pen " << c.penWidth;
    }
    void operator()(const OutlinedArc& c) const {
        out << "arc" << c.box << " from " << c.startAngle << " by " << c.sweepAngle << c.color << " pen "
            << c.penWidth;
    }
    void operator()(const CutOutEllipse& c) const { out << "cut-out" << c.box; }
    void operator()(const OutlinedEllipse& c) const {
        out << "ellipse" << c.box << c.color << " pen " << c.penWidth;
    }
    void operator()(const FilledRectangle& c) const { out << "rectangle" << c.box << c.color; }
    void operator()(const OutlinedRectangle& c) const {
        out << "rectangle outline" << c.box << c.color << " pen " << c.penWidth;
    }
    void operator()(const Polygon& c) const {
        out << (c.penWidth > 0 ? "polygon outline" : "polygon");
        for (std::size_t i = 0; i < c.count; ++i)
            out << " " << c.points[i].x << "," << c.points[i].y;
        out << c.color;
        if (c.penWidth > 0)
            out << " pen " << c.penWidth;
    }
    void operator()(const TextInBox& c) const {
        out << "text '" << utf8FromUtf16(c.text) << "'" << c.box << " size " << c.sizePx
            << (c.bold ? " bold" : "") << c.color;
    }
    void operator()(const ImageInBox& c) const {
        out << "image " << utf8FromUtf16(c.image->path) << c.box << " opacity " << c.opacity;
    }
};

} // namespace

std::vector<std::string> pictureLines(const Picture& picture) {
    std::vector<std::string> lines;
    for (const DrawCommand& command : picture.commands) {
        std::ostringstream line;
        std::visit(CommandText{line}, command);
        lines.push_back(line.str());
    }
    return lines;
}

std::vector<std::string> linesOf(std::vector<std::string> lines, const std::string& word) {
    std::erase_if(lines, [&word](const std::string& line) { return !line.starts_with(word); });
    return lines;
}
