#include "tool_error.hpp"

#include <string>
#include <utility>

namespace ornex::tool {

void rethrowRefusal(const std::invalid_argument &refusal)
{
    // The C++ layer's argument names and the options that set them.
    static const std::pair<const char *, const char *> optionOf[] = {
        {"sigma", "--sigma"},
        {"thresholds", "--low/--high"},
        {"nonEdgePercent", "--auto"},
        {"thetaResolution", "--theta-step"},
        {"smoothness", "--smoothness"},
        {"maxIterations", "--iterations"},
        {"threshold", "--threshold"},
        {"blockSize", "--block"},
        {"maxDisplacement", "--range"},
        {"subdivisions", "--subdivisions"},
        {"to", "--to"},
        {"outputRows", "--size"},
        {"outputCols", "--size"},
        {"amount", "--amount"},
        {"background", "--background"},
    };
    const std::string message = refusal.what();
    const size_t colon = message.find(": ");
    const std::string argument = message.substr(0, colon);
    for (const auto &[name, option] : optionOf) {
        if (colon != std::string::npos && argument == name) {
            throw UsageError(option + message.substr(colon));
        }
    }
    throw ToolError(message);
}

} // namespace ornex::tool
