#include "engine_test.h"
#include "pointing/element_filter.h"

#include <iterator>
#include <sstream>

using namespace rotika;

namespace {

std::vector<std::int32_t> numbersOf(const std::string& text) {
    std::istringstream words(text);
    return {std::istream_iterator<std::int32_t>(words), {}};
}

TEST(ElementFilter, KeepsClickableElementsWithinLimitsWithoutDuplicates) {
    const auto button = [](const Rect& rect) {
        return ScreenElement{rect, ControlType::button, true, false, false};
    };
    const auto kept = [](const std::vector<ScreenElement>& elements, ElementScope scope) {
        return std::to_string(filterElements({{0, 0, 1000, 1000}, {elements}}, scope).rects.size());
    };
    // one or two rectangles, and how many are kept in a window and in a page; the row with 600 is a toolbar
    // and its button
    for (const auto& [where, expected] : rowsOf(R"(
        0 0 8 8 -> 1 1  0 0 7 8 -> 0 0  0 0 8 7 -> 0 0  0 0 900 700 -> 1 1  0 0 901 700 -> 0 1
        0 0 900 701 -> 0 1  0 0 1400 1000 -> 0 1  0 0 1401 9 -> 0 0  0 0 9 1001 -> 0 0  -40 0 1 50 -> 1 1
        -40 0 0 50 -> 0 0  1000 0 1040 50 -> 0 0  50 50 0 0 -> 0 0  0 0 50 50 0 0 50 50 -> 1 1
        0 0 100 100 2 2 97 97 -> 1 1  0 0 600 600 0 0 100 100 -> 2 2  0 0 100 100 0 0 100 55 -> 2 2
        0 0 100 100 0 0 100 56 -> 1 1  0 0 100 100 0 15 100 115 -> 2 2  0 0 100 100 0 14 100 114 -> 1 1)")) {
        std::vector<ScreenElement> elements;
        const std::vector<std::int32_t> n = numbersOf(where);
        for (std::size_t i = 0; i < n.size(); i += 4)
            elements.push_back(button({n[i], n[i + 1], n[i + 2], n[i + 3]}));
        const std::string inPage = kept(elements, ElementScope::page);
        EXPECT_EQ(kept(elements, ElementScope::windowAndTaskbar) + " " + inPage, expected) << where;
    }
    // type, isEnabled, isOffscreen, isFocusable
    for (const auto& [kind, expected] : rowsOf(R"(
        50030 1 0 1 -> 0  50032 1 0 1 -> 0  50033 1 0 1 -> 0  0 1 0 1 -> 1  0 1 0 0 -> 0  50000 0 0 1 -> 0
        50000 1 1 1 -> 0  50000 1 0 0 -> 1  50031 1 0 0 -> 1  50002 1 0 0 -> 1  50013 1 0 0 -> 1  50003 1 0 0 -> 1
        50004 1 0 0 -> 1  50005 1 0 0 -> 1  50007 1 0 0 -> 1  50011 1 0 0 -> 1  50019 1 0 0 -> 1  50024 1 0 0 -> 1
        50015 1 0 0 -> 1  50016 1 0 0 -> 1)")) {
        const auto n = numbersOf(kind);
        const ScreenElement each{
            {0, 0, 50, 50}, static_cast<ControlType>(n[0]), n[1] != 0, n[2] != 0, n[3] != 0};
        EXPECT_EQ(kept({each}, ElementScope::page), expected) << kind;
    }
    FoundElements many{{0, 0, 2000, 2000}, {{}}};
    for (int i = 0; i < 120; ++i)
        many.roots[0].push_back(button({10 * i, 0, 10 * i + 9, 9}));
    const std::vector<Rect> most = filterElements(many, ElementScope::windowAndTaskbar).rects;
    ASSERT_EQ(most.size(), 99U);
    EXPECT_EQ(most.back(), (Rect{980, 0, 989, 9}));
}

} // namespace
