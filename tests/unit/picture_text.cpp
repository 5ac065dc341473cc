#include "picture_text.h"

#include "core/text.h"

#include "platform/simulated/simulated_desktop.h"

#include <cstdio>

namespace {

std::string text(float number) {
    char digits[32];
    std::snprintf(digits, sizeof digits, "%g", static_cast<double>(number));
    return digits;
}

std::string text(const PictureBox& box) {
    return " " + text(box.x) + "," + text(box.y) + " " + text(box.width) + "x" + text(box.height);
}

std::string text(const PictureColor& color) {
    char digits[32];
    std::snprintf(digits, sizeof digits, " of %02X %02X %02X %02X", color.alpha, color.red, color.green,
                  color.blue);
    return digits;
}

std::string angles(float start, float sweep) {
    return " from " + text(start) + " by " + text(sweep);
}

std::string pen(float width) {
    return " pen " + text(width);
}

struct CommandText {
    std::string operator()(const FilledPie& c) const {
        return "pie" + text(c.box) + angles(c.startAngle, c.sweepAngle) + text(c.color);
    }
    std::string operator()(const OutlinedPie& c) const {
        return "pie outline" + text(c.box) + angles(c.startAngle, c.sweepAngle) + text(c.color) +
               pen(c.penWidth);
    }
    std::string operator()(const OutlinedArc& c) const {
        return "arc" + text(c.box) + angles(c.startAngle, c.sweepAngle) + text(c.color) + pen(c.penWidth);
    }
    std::string operator()(const CutOutEllipse& c) const { return "cut-out" + text(c.box); }
    std::string operator()(const OutlinedEllipse& c) const {
        return "ellipse" + text(c.box) + text(c.color) + pen(c.penWidth);
    }
    std::string operator()(const FilledRectangle& c) const {
        return "rectangle" + text(c.box) + text(c.color);
    }
    std::string operator()(const OutlinedRectangle& c) const {
        return "rectangle outline" + text(c.box) + text(c.color) + pen(c.penWidth);
    }
    std::string operator()(const Polygon& c) const {
        std::string line = c.penWidth > 0 ? "polygon outline" : "polygon";
        for (std::size_t i = 0; i < c.count; ++i)
            line += " " + text(c.points[i].x) + "," + text(c.points[i].y);
        return line + text(c.color) + (c.penWidth > 0 ? pen(c.penWidth) : "");
    }
    std::string operator()(const TextInBox& c) const {
        return "text '" + utf8FromUtf16(c.text) + "'" + text(c.box) + " size " + text(c.sizePx) +
               (c.bold ? " bold" : "") + text(c.color);
    }
    std::string operator()(const ImageInBox& c) const {
        return "image " + utf8FromUtf16(c.image->path) + text(c.box) + " opacity " + text(c.opacity);
    }
};

} // namespace

std::vector<std::string> pictureLines(const Picture& picture) {
    std::vector<std::string> lines;
    for (const DrawCommand& command : picture.commands)
        lines.push_back(std::visit(CommandText{}, command));
    return lines;
}

std::vector<std::string> linesOf(const std::vector<std::string>& lines, const std::string& word) {
    std::vector<std::string> chosen;
    for (const std::string& line : lines)
        if (line.starts_with(word))
            chosen.push_back(line);
    return chosen;
}
