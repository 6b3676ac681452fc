#pragma once

#include <string>

#include "ornex/ornex.hpp"

namespace ornex::tool {

// Motion as files other programs read. Each file is written whole or not at
// all; problems are ToolErrors naming the file.

enum class FlowFile { flo, npy };

// The format a --save-flow name asks for, by its extension (.flo or .npy).
FlowFile flowFileFormat(const std::string &path);

// Middlebury .flo: the float 202021.25 (the bytes "PIEH"), int32 width,
// int32 height, then row by row each pixel's u and v as float32; all
// little-endian.
// numpy .npy (format 1.0): float32 little-endian in C order, shape (rows,
// cols, 2) holding u then v.
void writeFlow(const std::string &path, const VelocityField<double> &flow);

// Checks that a --save-vectors name ends in .csv.
void requireCsvName(const std::string &path);

// CSV with the header row,col,u,v and one line per block, in row-major
// order: the block's centre (its top-left pixel plus (size - 1) / 2, so an
// 8-pixel block at the origin is centred at 3.5) and its vector.
void writeBlockVectors(const std::string &path, const Image<MotionVector<double>> &vectors,
                       BlockMatchingOptions::Extent blockSize, BlockMatchingOptions::Extent step);

} // namespace ornex::tool
