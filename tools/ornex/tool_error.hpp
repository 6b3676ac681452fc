#pragma once

#include <stdexcept>

namespace ornex::tool {

// A problem with the user's input or files: reported as one line on stderr
// and a non-zero exit.
struct ToolError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace ornex::tool
