#pragma once

#include "platform/geometry_types.h"
#include "platform/picture.h"

#include <vector>

/// The pixels of a part of the screen as a person sees it, row by row; alpha is 255. Once per platform.
std::vector<PictureColor> screenPixels(const Rect& part);
