#pragma once

#include <string>
#include <vector>

#include "font.hpp"
#include "ornex/ornex.hpp"

namespace ornex::tool {

// Pictures in the tool are doubles in [0, 1]: one plane (grey) or three
// (red, green, blue).
using Picture = Image<double>;

// Luma of sRGB values, 0.299 R + 0.587 G + 0.114 B (as OpenCV and
// ImageMagick do); a grey picture is copied.
Picture toGrey(ImageView<const double> picture);
Picture toColour(ImageView<const double> picture);
RgbView<double> colourPlanes(Picture &colour);

// Each plane smoothed with the binomial filter 1 4 6 4 1 (over 16) along
// both axes, edges repeated.
Picture smoothed(ImageView<const double> picture);

// Scales a picture to rows x cols with the library's projective warp.
Picture resized(ImageView<const double> picture, int32_t rows, int32_t cols);

// A panel of the contact sheet: a picture and the label above it.
struct Panel {
    std::string label;
    Picture picture;
};

// Panels scaled to panelRows x panelCols in a grid of `columns`, each with
// its label set in `font` on a dark band above it.
Picture contactSheet(const std::vector<Panel> &panels, int32_t columns, int32_t panelRows, int32_t panelCols,
                     const Font &font);

} // namespace ornex::tool
