#pragma once

#include "../double_script.h"

#include <windows.h>

#include <string>
#include <vector>

/// An element as the automation double serves it.
struct TreeNode {
    int depth = 0;
    std::string name; // of a window, its class
    LONG type = 0;
    LONG left = 0, top = 0, right = 0, bottom = 0; // on the screen
    bool isEnabled = false;
    bool isFocusable = false;
    bool isOffscreen = false;
};

std::string classOf(HWND window);

/// What the script puts below windows of this one's class, in the order of the tree.
std::vector<TreeNode> nodesBelow(DoubleScript& script, HWND window);
