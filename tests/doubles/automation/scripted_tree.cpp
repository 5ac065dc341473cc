#include "scripted_tree.h"

#include <map>
#include <sstream>

namespace {

/// "DEPTH NAME TYPE LEFT TOP RIGHT BOTTOM [enabled] [focusable] [offscreen]"
TreeNode parsedNode(const std::string& text) {
    std::istringstream words(text);
    TreeNode node;
    words >> node.depth >> node.name >> node.type >> node.left >> node.top >> node.right >> node.bottom;
    for (std::string flag; words >> flag;) {
        node.isEnabled = node.isEnabled || flag == "enabled";
        node.isFocusable = node.isFocusable || flag == "focusable";
        node.isOffscreen = node.isOffscreen || flag == "offscreen";
    }
    return node;
}

LONG typeOf(HWND control) {
    static const std::map<std::string, LONG> types = {
        {"Button", 50000}, {"Edit", 50004}, {"ComboBox", 50003}, {"ListBox", 50008}, {"Static", 50020}};
    const auto known = types.find(classOf(control));
    const LONG type = known == types.end() ? 50033 : known->second;
    const LONG_PTR kind = GetWindowLongPtrW(control, GWL_STYLE) & BS_TYPEMASK;
    if (type != 50000)
        return type;
    if (kind == BS_GROUPBOX)
        return 50026;
    return kind == BS_AUTOCHECKBOX ? 50002 : kind == BS_AUTORADIOBUTTON ? 50013 : type;
}

BOOL CALLBACK addControl(HWND control, LPARAM out) {
    RECT rect{};
    GetWindowRect(control, &rect);
    TreeNode node{1, classOf(control), typeOf(control), rect.left, rect.top, rect.right, rect.bottom};
    node.isEnabled = IsWindowEnabled(control) != 0;
    node.isFocusable = (GetWindowLongPtrW(control, GWL_STYLE) & WS_TABSTOP) != 0;
    node.isOffscreen = IsWindowVisible(control) == 0;
    reinterpret_cast<std::vector<TreeNode>*>(out)->push_back(node);
    return TRUE;
}

} // namespace

std::string classOf(HWND window) {
    char name[128] = {};
    GetClassNameA(window, name, sizeof(name));
    return name;
}

std::vector<TreeNode> nodesBelow(DoubleScript& script, HWND window) {
    const std::string wanted = classOf(window);
    std::vector<TreeNode> nodes;
    bool isWanted = false;
    for (std::size_t i = 0;; ++i) {
        const DoubleScript::Event line = script.event(i);
        if (line.word.empty())
            return nodes;
        if (line.word == "root") {
            isWanted = line.rest == wanted || line.rest == wanted + " controls";
            if (isWanted && line.rest != wanted)
                EnumChildWindows(window, addControl, reinterpret_cast<LPARAM>(&nodes));
        } else if (isWanted) {
            nodes.push_back(parsedNode(line.rest));
        }
    }
}
