#include "pictures.hpp"

#include <algorithm>

namespace ornex::tool {

Picture toGrey(ImageView<const double> picture)
{
    Picture grey(picture.rows, picture.cols, 1);
    if (picture.planes < 3) {
        std::copy(picture.data, picture.data + picture.planeSize(), grey.data());
        return grey;
    }
    // 0.299 R + 0.587 G + 0.114 B, written around green so that R = G = B
    // gives that value exactly.
    for (int32_t c = 0; c < picture.cols; ++c) {
        for (int32_t r = 0; r < picture.rows; ++r) {
            const double green = picture(r, c, 1);
            grey(r, c) = green + 0.299 * (picture(r, c, 0) - green) + 0.114 * (picture(r, c, 2) - green);
        }
    }
    return grey;
}

Picture toColour(ImageView<const double> picture)
{
    if (picture.planes == 3) {
        Picture copy(picture.rows, picture.cols, 3);
        std::copy(picture.data, picture.data + picture.size(), copy.data());
        return copy;
    }
    Picture colour(picture.rows, picture.cols, 3);
    for (int32_t p = 0; p < 3; ++p) {
        std::copy(picture.data, picture.data + picture.planeSize(), colour.data() + p * picture.planeSize());
    }
    return colour;
}

RgbView<double> colourPlanes(Picture &colour)
{
    const ImageView<double> view = colour.view();
    return {view.plane(0), view.plane(1), view.plane(2)};
}

Picture smoothed(ImageView<const double> picture)
{
    const double taps[5] = {1 / 16.0, 4 / 16.0, 6 / 16.0, 4 / 16.0, 1 / 16.0};
    auto clampedAt = [](int32_t k, int32_t size) { return std::clamp(k, 0, size - 1); };
    Picture across(picture.rows, picture.cols, picture.planes), result(picture.rows, picture.cols, picture.planes);
    for (int32_t p = 0; p < picture.planes; ++p) {
        for (int32_t c = 0; c < picture.cols; ++c) {
            for (int32_t r = 0; r < picture.rows; ++r) {
                double sum = 0;
                for (int32_t k = -2; k <= 2; ++k) {
                    sum += taps[k + 2] * picture(r, clampedAt(c + k, picture.cols), p);
                }
                across(r, c, p) = sum;
            }
        }
        for (int32_t c = 0; c < picture.cols; ++c) {
            for (int32_t r = 0; r < picture.rows; ++r) {
                double sum = 0;
                for (int32_t k = -2; k <= 2; ++k) {
                    sum += taps[k + 2] * across(clampedAt(r + k, picture.rows), c, p);
                }
                result(r, c, p) = sum;
            }
        }
    }
    return result;
}

Picture resized(ImageView<const double> picture, int32_t rows, int32_t cols)
{
    const Quad to{Point{0, 0}, Point{0, cols - 1}, Point{rows - 1, cols - 1}, Point{rows - 1, 0}};
    const auto transform = homography<double>(Rect{0, 0, picture.rows, picture.cols}, to, picture.rows, picture.cols);
    WarpOptions options;
    options.interpolation = Interpolation::bilinear;
    return warp<double>(picture, rows, cols, transform, options);
}

Picture contactSheet(const std::vector<Panel> &panels, int32_t columns, int32_t panelRows, int32_t panelCols,
                     const Font &font)
{
    const int32_t band = font.pixelHeight() + 8, gap = 6;
    const int32_t gridRows = static_cast<int32_t>((panels.size() + columns - 1) / columns);
    const int32_t cellRows = band + panelRows + gap, cellCols = panelCols + gap;
    Picture sheet(gap + gridRows * cellRows, gap + columns * cellCols, 3, 0.12);
    RgbView<double> planes = colourPlanes(sheet);
    for (size_t k = 0; k < panels.size(); ++k) {
        const int32_t top = gap + static_cast<int32_t>(k / columns) * cellRows;
        const int32_t left = gap + static_cast<int32_t>(k % columns) * cellCols;
        const Picture scaled = resized(toColour(panels[k].picture.view()).view(), panelRows, panelCols);
        for (int32_t p = 0; p < 3; ++p) {
            for (int32_t c = 0; c < panelCols; ++c) {
                for (int32_t r = 0; r < panelRows; ++r) {
                    sheet(top + band + r, left + c, p) = scaled(r, c, p);
                }
            }
        }
        drawText(planes, panels[k].label, Point{top + band - 7, left + 2}, font, std::array<double, 3>{1.0, 0.9, 0.5});
    }
    return sheet;
}

} // namespace ornex::tool
