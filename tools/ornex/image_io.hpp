#pragma once

#include <string>

#include "ornex/image.hpp"

namespace ornex::tool {

// Images on disk: PNG (8- or 16-bit grey, grey+alpha, RGB, RGBA, palette),
// PGM (P5) and PPM (P6), 8 or 16 bits. In memory: doubles in [0, 1],
// column-major like the library, one plane for grey images and three for
// colour ones (alpha is dropped).
Image<double> readImage(const std::string &path);

// Writes one plane as grey or three planes as RGB, 8 bits, the format chosen
// by the extension (.png, .pgm, .ppm; a grey image in a .ppm repeats its
// value in the three channels, a colour image cannot go to a .pgm); values
// are clamped to [0, 1] and rounded. The file appears whole or not at all: the data goes to a
// temporary file in the same folder that is renamed at the end.
void writeImage(const std::string &path, ImageView<const double> image);

} // namespace ornex::tool
