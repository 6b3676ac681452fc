#include "file_jobs.hpp"

#include <cstdio>
#include <filesystem>
#include <map>

#include "progress.hpp"
#include "tool_error.hpp"

namespace ornex::tool {

namespace fs = std::filesystem;

void FileJob::stage(const std::string &what) const
{
    char counter[48] = "";
    if (count > 1) {
        std::snprintf(counter, sizeof counter, "[%zu/%zu] ", index + 1, count);
    }
    reportStage(counter + what);
}

std::FILE *FileJob::report() const { return output == "-" ? stderr : stdout; }

std::vector<FileJob> fileJobs(const std::vector<std::string> &inputs, const std::optional<std::string> &outDir,
                              const std::string &synopsis)
{
    if (!outDir) {
        if (inputs.size() > 2) {
            throw UsageError("several inputs need --out-dir DIR for their outputs; usage: " + synopsis);
        }
        if (inputs.size() != 2) {
            throw UsageError("expects INPUT OUTPUT, or INPUT... with --out-dir DIR; usage: " + synopsis);
        }
        return {{inputs[0], inputs[1], 0, 1, ""}};
    }
    if (inputs.empty()) {
        throw UsageError("--out-dir: expects at least one INPUT; usage: " + synopsis);
    }
    std::vector<FileJob> jobs;
    std::map<std::string, std::string> inputOf;
    for (const std::string &input : inputs) {
        if (input == "-") {
            throw UsageError("--out-dir: standard input ('-') has no name to give its output; use INPUT OUTPUT");
        }
        const std::string output = (fs::path(*outDir) / fs::path(input).stem()).string() + ".png";
        if (const auto [other, added] = inputOf.emplace(output, input); !added) {
            throw UsageError("--out-dir: '" + other->second + "' and '" + input + "' would both be written to '" +
                             output + "'");
        }
        jobs.push_back({input, output, jobs.size(), inputs.size(), *outDir});
    }
    return jobs;
}

std::vector<FileJob> fileJobs(const Arguments &arguments, const std::string &synopsis)
{
    const auto outDir = arguments.has("out-dir") ? std::optional(arguments.text("out-dir", "")) : std::nullopt;
    return fileJobs(arguments.positional(), outDir, synopsis);
}

namespace {

void runOne(const FileJob &job, const std::function<void(const FileJob &)> &work)
{
    try {
        work(job);
    } catch (const std::invalid_argument &refusal) {
        rethrowRefusal(refusal);
    }
}

} // namespace

int runJobs(const std::string &command, const std::vector<FileJob> &jobs,
            const std::function<void(const FileJob &)> &work)
{
    const std::string &folder = jobs.at(0).folder;
    std::error_code error;
    if (!folder.empty() && !fs::create_directories(folder, error) && error) {
        throw ToolError("cannot create '" + folder + "': " + error.message());
    }
    if (jobs.size() == 1) {
        runOne(jobs[0], work);
        return 0;
    }
    int failures = 0;
    for (const FileJob &job : jobs) {
        try {
            runOne(job, work);
        } catch (const ToolError &failure) {
            std::fprintf(stderr, "ornex %s: %s: %s\n", command.c_str(), job.input.c_str(), failure.what());
            ++failures;
        }
    }
    return failures == 0 ? 0 : 1;
}

} // namespace ornex::tool
