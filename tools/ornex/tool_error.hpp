#pragma once

#include <stdexcept>

namespace ornex::tool {

// A failure on the user's data or files (unreadable input, a picture the
// kernels refuse): one line on stderr and exit code 1.
struct ToolError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A command line the tool cannot run (unknown option, missing or bad value,
// wrong number of files, options that contradict each other): one line on
// stderr and exit code 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The C++ layer refuses an argument as "argument: constraint". When an
// option sets that argument this throws a UsageError naming the option
// ("--theta-step: must divide 90 degrees into whole steps"); otherwise the
// refusal is about the data and becomes a ToolError with the same message.
[[noreturn]] void rethrowRefusal(const std::invalid_argument &refusal);

} // namespace ornex::tool
