#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "ornex/image.hpp"

namespace ornex::tool {

// Images on disk go through OpenImageIO: PNG, JPEG, TIFF, WebP, PGM and PPM
// in and out. In memory a picture is doubles in [0, 1], column-major like the
// library, one plane for grey or three for colour (red, green, blue), with an
// optional alpha plane of its own.
//
// Reading: the format comes from the file's first bytes, never from its name.
// 8-bit files read as v / 255, 16-bit ones as v / 65535, float TIFFs as they
// are (and count as 16-bit). A stored EXIF orientation is applied, so rows
// and columns are as a viewer shows them. Grey+alpha and RGBA keep their
// alpha, unassociated (colours are not multiplied by it); files that store
// associated alpha are divided back (OpenImageIO 2.4 hands WebP over that
// way, rounded to 8 bits, so WebP colours under partial transparency come
// back within about 1 / (255 alpha)). Extra channels past RGBA are dropped.
// The path "-" reads the whole of standard input.
//
// Writing: the format comes from the `format` argument when given (png, jpg
// or jpeg, tif or tiff, webp, pgm, ppm; any case), else from the path's
// extension, else PNG for "-" (standard output). Values are clamped to
// [0, 1] (NaN as 0), scaled and rounded half away from zero. Each format
// takes what it can:
//   PNG, TIFF   8 or 16 bits (as asked), grey or RGB, with alpha
//   JPEG        8 bits, grey or RGB, quality 95 without chroma subsampling,
//               at most 65500 pixels a side; alpha is dropped
//   WebP        8 bits, RGB (grey is repeated), lossy at quality 100; alpha
//               is dropped: Debian 12's OpenImageIO 2.4 writes RGBA WebP
//               through an 8-bit gamma un-premultiply that darkens colours,
//               and has no lossless WebP
//   PGM         8 bits, grey only (a colour picture is refused)
//   PPM         8 bits, RGB (grey is repeated)
// PGM and PPM stay 8-bit because OpenImageIO 2.4 writes 16-bit netpbm samples
// wrongly. A file appears whole or not at all: the data goes to a temporary
// file in the same folder that is renamed over the target at the end and
// removed on any failure. "-" writes to standard output, encoded whole before
// the first byte goes out.

struct LoadedImage {
    Image<double> pixels;               // 1 plane (grey) or 3 (RGB)
    std::optional<Image<double>> alpha; // 1 plane, pixels' rows and cols; 0 transparent, 1 opaque
    int bitDepth = 8;                   // of the file read: 8 or 16
};

LoadedImage readPicture(const std::string &path);

// The pixels of readPicture(path), alpha dropped.
Image<double> readImage(const std::string &path);

// bitDepth is 8 or 16: the depth the caller would like (usually the input's);
// formats that hold only 8 bits get 8. alpha, when given, has the pixels'
// rows and cols and one plane.
void writePicture(const std::string &path, ImageView<const double> pixels,
                  std::optional<ImageView<const double>> alpha = std::nullopt, int bitDepth = 8,
                  const std::string &format = "");
void writePicture(const std::string &path, const LoadedImage &picture, const std::string &format = "");

// 8 bits, no alpha.
void writeImage(const std::string &path, ImageView<const double> image, const std::string &format = "");

// Where a command prints its report when its output goes to outputPath:
// stderr when that is "-" (standard output carries the picture), else stdout.
std::FILE *reportStreamFor(const std::string &outputPath);

} // namespace ornex::tool
