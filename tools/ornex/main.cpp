#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "commands.hpp"
#include "tool_error.hpp"

namespace {

struct Command {
    const char *name;
    int (*run)(const std::vector<std::string> &);
    const char *summary;
};

const Command commands[] = {
    {"demo", ornex::tool::runDemo, "run every family on a built-in scene and write a contact sheet"},
    {"edges", ornex::tool::runEdges, "Canny edges of an image"},
    {"lines", ornex::tool::runLines, "the strongest straight lines (Hough), drawn over the image"},
    {"motion", ornex::tool::runMotion, "block-matching motion between two frames"},
    {"flow", ornex::tool::runFlow, "dense optical flow between two frames"},
    {"warp", ornex::tool::runWarp, "projective warp of an image onto four corners"},
    {"shear", ornex::tool::runShear, "shear an image horizontally or vertically"},
    {"draw", ornex::tool::runDraw, "draw lines, circles, polygons and text"},
};

void printUsage(std::FILE *to)
{
    std::fputs("usage: ornex COMMAND [ARGUMENTS]   (ornex COMMAND --help for its options)\ncommands:\n", to);
    for (const Command &command : commands) {
        std::fprintf(to, "  %-8s %s\n", command.name, command.summary);
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2 || std::string(argv[1]) == "--help" || std::string(argv[1]) == "-h") {
        printUsage(argc < 2 ? stderr : stdout);
        return argc < 2 ? 2 : 0;
    }
    const std::string name = argv[1];
    const std::vector<std::string> words(argv + 2, argv + argc);
    for (const Command &command : commands) {
        if (name != command.name) {
            continue;
        }
        try {
            return command.run(words);
        } catch (const ornex::tool::ToolError &error) {
            std::fprintf(stderr, "ornex %s: %s\n", command.name, error.what());
        } catch (const std::invalid_argument &error) {
            std::fprintf(stderr, "ornex %s: %s\n", command.name, error.what());
        } catch (const std::exception &error) {
            std::fprintf(stderr, "ornex %s: unexpected failure: %s\n", command.name, error.what());
        }
        return 1;
    }
    std::fprintf(stderr, "ornex: unknown command '%s' (ornex --help lists the commands)\n", name.c_str());
    return 2;
}
