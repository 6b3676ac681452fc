#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "commands.hpp"
#include "ornex_rt.h"
#include "progress.hpp"
#include "tool_error.hpp"

namespace {

using namespace ornex::tool;

struct Command {
    const char *name;
    int (*run)(const std::vector<std::string> &);
    const char *summary;
};

const Command commands[] = {
    {"demo", runDemo, "run every family on a built-in scene and write a contact sheet"},
    {"edges", runEdges, "Canny edges of images"},
    {"lines", runLines, "the strongest straight lines (Hough), drawn over images"},
    {"motion", runMotion, "block-matching motion between two frames"},
    {"flow", runFlow, "dense optical flow between two frames"},
    {"warp", runWarp, "projective warp of images onto four corners"},
    {"shear", runShear, "shear images horizontally or vertically"},
    {"draw", runDraw, "draw lines, circles, polygons and text"},
};

void printUsage(std::FILE *to)
{
    std::fputs("usage: ornex COMMAND [ARGUMENTS]   (ornex COMMAND --help for its options)\n"
               "       ornex --version\n"
               "Options are written --name VALUE or --name=VALUE, and '--' ends them; '-' as a file is standard\n"
               "input or output.\n"
               "Exit codes: 0 done, 1 a failure on the data or files, 2 a command line the tool cannot run.\n"
               "commands:\n",
               to);
    for (const Command &command : commands) {
        std::fprintf(to, "  %-8s %s\n", command.name, command.summary);
    }
}

int run(const Command &command, const std::vector<std::string> &words)
{
    const Progress progress(command.name, stderr, isatty(STDERR_FILENO) == 1);
    try {
        try {
            return command.run(words);
        } catch (const std::invalid_argument &refusal) {
            rethrowRefusal(refusal);
        }
    } catch (const UsageError &error) {
        std::fprintf(stderr, "ornex %s: %s\n", command.name, error.what());
        return 2;
    } catch (const ToolError &error) {
        std::fprintf(stderr, "ornex %s: %s\n", command.name, error.what());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "ornex %s: unexpected failure: %s\n", command.name, error.what());
    }
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    const std::string first = argc < 2 ? "" : argv[1];
    if (first == "--help" || first == "-h") {
        printUsage(stdout);
        return 0;
    }
    if (first == "--version") {
        std::printf("ornex %s (ornex_rt built %s)\n", ornex_rt_version, ornex_rt_build_date);
        return 0;
    }
    if (argc < 2) {
        printUsage(stderr);
        return 2;
    }
    for (const Command &command : commands) {
        if (first == command.name) {
            return run(command, {argv + 2, argv + argc});
        }
    }
    std::fprintf(stderr, "ornex: unknown command '%s' (ornex --help lists the commands)\n", first.c_str());
    return 2;
}
