#include "command_options.hpp"

#include <cstdio>

#include "file_jobs.hpp"
#include "progress.hpp"
#include "tool_error.hpp"

namespace ornex::tool {

std::optional<Arguments> parse(const std::vector<std::string> &words, const std::string &synopsis,
                               const std::string &description, std::vector<Option> options,
                               size_t positionalCount)
{
    options.push_back({"quiet", false, "no progress lines on stderr for long work"});
    options.push_back({"help", false, "show this text"});
    Arguments arguments(words, options);
    if (arguments.has("help")) {
        std::fputs(usage(synopsis, description, options).c_str(), stdout);
        return std::nullopt;
    }
    if (arguments.has("quiet")) {
        silenceProgress();
    }
    if (positionalCount > 0 && arguments.positional().size() != positionalCount) {
        throw UsageError("expects " + std::to_string(positionalCount) + " file names; usage: " + synopsis);
    }
    return arguments;
}

std::optional<Arguments> parseFiles(const std::vector<std::string> &words, const std::string &synopsis,
                                    const std::string &description, std::vector<Option> options)
{
    options.push_back(outDirOption);
    return parse(words, synopsis, description, options, 0);
}

Interpolation interpolationOption(const Arguments &arguments)
{
    const std::string name = arguments.text("interpolation", "bilinear");
    if (name == "nearest") {
        return Interpolation::nearest;
    }
    if (name == "bilinear") {
        return Interpolation::bilinear;
    }
    if (name == "bicubic") {
        return Interpolation::bicubic;
    }
    throw UsageError("--interpolation: expects nearest, bilinear or bicubic, got '" + name + "'");
}

int32_t countOption(const Arguments &arguments, const std::string &name, int32_t fallback, int32_t low, int32_t high)
{
    const int32_t value = arguments.integer(name, fallback);
    if (value < low || value > high) {
        throw UsageError("--" + name + ": expects a whole number from " + std::to_string(low) + " to " +
                        std::to_string(high));
    }
    return value;
}

} // namespace ornex::tool
