#pragma once

#include <optional>
#include <string>
#include <vector>

#include "arguments.hpp"
#include "ornex/geometry.hpp"

namespace ornex::tool {

// Parses a command's words, adding the options every command has; prints
// the usage and returns nothing for --help. `positionalCount` file names
// are expected unless it is zero.
std::optional<Arguments> parse(const std::vector<std::string> &words, const std::string &synopsis,
                               const std::string &description, std::vector<Option> options,
                               size_t positionalCount);

// The same for a command on single images: INPUT OUTPUT, or INPUT... with
// --out-dir.
std::optional<Arguments> parseFiles(const std::vector<std::string> &words, const std::string &synopsis,
                                    const std::string &description, std::vector<Option> options);

Interpolation interpolationOption(const Arguments &arguments);

// A whole number within [low, high], for options that size things.
int32_t countOption(const Arguments &arguments, const std::string &name, int32_t fallback, int32_t low, int32_t high);

} // namespace ornex::tool
