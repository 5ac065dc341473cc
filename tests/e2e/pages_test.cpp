#include "scenario.h"

namespace e2e {

namespace {

const std::vector<std::string> pageColors = {"#E03030", "#30C030", "#3040E0"};

class Pages : public Scenario {
protected:
    /// A wheel for each count, all of one plain colour.
    static std::string wheelsText(const std::vector<int>& fieldCounts) {
        std::string text;
        for (std::size_t page = 0; page < fieldCounts.size(); ++page) {
            std::string fields;
            for (int i = 0; i < fieldCounts[page]; ++i) {
                fields += std::string(i == 0 ? "" : ", ") + "{ \"name\": \"" + std::to_string(i + 1) +
                          "\", \"color\": \"" + pageColors[page] + "\", \"key\": \"" +
                          static_cast<char>('a' + static_cast<int>(page)) + "\" }";
            }
            text += std::string(page == 0 ? "" : ",\n") + "{ \"name\": \"Koło " + std::to_string(page + 1) +
                    "\", \"actions\": [ " + fields + " ] }";
        }
        return "{ \"wheels\": [\n" + text + "\n] }\n";
    }

    Stage& wheels(const std::vector<int>& fieldCounts) {
        Stage& s = stage();
        s.writeFile("default.json", wheelsText(fieldCounts));
        s.startAll();
        s.recording.mark();
        s.openWheel();
        return s;
    }

    /// By the colour of a resting field near the hole, where no label is: the channel that stands out.
    int shownPage() {
        const PixelColor color = stage().wheel.pixel(fieldPoint(0, 4, 75));
        if (color.red > color.green && color.red > color.blue)
            return 0;
        return color.green > color.blue ? 1 : 2;
    }
};

} // namespace

} // namespace e2e
