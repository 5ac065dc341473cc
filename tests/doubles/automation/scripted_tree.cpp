#include "scripted_tree.h"

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
            isWanted = line.rest == wanted;
        } else if (isWanted) {
            nodes.push_back(parsedNode(line.rest));
        }
    }
}
