#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "arguments.hpp"

namespace ornex::tool {

// One input and the output a single-image command makes of it; "-" stands
// for standard input or output. With several files `index` counts them;
// `folder` is the --out-dir that holds the output, if any.
struct FileJob {
    std::string input, output;
    size_t index = 0, count = 1;
    std::string folder;

    // Reports a stage of the work on this file, led by "[3/10] " when there
    // are several.
    void stage(const std::string &what) const;
    // Where the command's report goes: stdout, unless the image does.
    std::FILE *report() const;
};

// The options every single-image command has for its files.
const Option outDirOption{"out-dir", true, "write each output there, named after its input with .png (INPUT... form)"};

// The files of a single-image command: INPUT OUTPUT, or INPUT... with
// --out-dir DIR, where each output is DIR/NAME.png for an input NAME.EXT.
std::vector<FileJob> fileJobs(const std::vector<std::string> &inputs, const std::optional<std::string> &outDir,
                              const std::string &synopsis);
// The same from a command's positional arguments and its --out-dir.
std::vector<FileJob> fileJobs(const Arguments &arguments, const std::string &synopsis);

// Runs `work` on each job, creating the output folder first when there is
// one. With several files a failure on one is reported on stderr under the
// command's name and the others still run; the result is the exit code.
// A usage error stops everything.
int runJobs(const std::string &command, const std::vector<FileJob> &jobs,
            const std::function<void(const FileJob &)> &work);

} // namespace ornex::tool
