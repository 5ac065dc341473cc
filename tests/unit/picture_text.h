#pragma once

#include "platform/picture.h"

#include <string>
#include <vector>

/// The draw commands in painting order as lines that a test can hold against its own, for example
/// "pie 70,6 448x448 from -90 by 180 of 87 34 98 DB" (colours as alpha, red, green, blue).
std::vector<std::string> pictureLines(const Picture& picture);

/// Those lines that begin with `word`.
std::vector<std::string> linesOf(std::vector<std::string> lines, const std::string& word);
