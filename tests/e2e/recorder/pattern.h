#pragma once

// The background that the recorder shows: cells of one plain colour, each unlike its neighbours, so that a
// picture laid over it can be told apart from it at every point.

struct PatternColor {
    int red = 0;
    int green = 0;
    int blue = 0;
};

constexpr int patternCell = 16;

constexpr PatternColor patternColor(int x, int y) {
    const int column = x / patternCell;
    const int row = y / patternCell;
    return {40 + column * 37 % 160, 40 + row * 53 % 160, 40 + (column + row) * 29 % 160};
}
