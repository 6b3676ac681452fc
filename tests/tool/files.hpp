#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

// The whole content of a file, as bytes.
inline std::string slurp(const std::filesystem::path &path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
