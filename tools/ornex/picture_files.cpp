#include "picture_files.hpp"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "tool_error.hpp"

namespace ornex::tool {

std::string systemMessage(int error, const char *fallback)
{
    return error != 0 ? std::string(std::strerror(error)) : std::string(fallback);
}

std::string oiioMessage(std::string message, const char *fallback)
{
    while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) {
        message.pop_back();
    }
    return message.empty() ? std::string(fallback) : message;
}

FileRemover::~FileRemover()
{
    if (!path_.empty()) {
        ::unlink(path_.c_str());
    }
}

std::string makeTemporaryFile(const char *stem, int &descriptor)
{
    std::string name = (std::filesystem::temp_directory_path() / (std::string(stem) + "-XXXXXX")).string();
    descriptor = ::mkstemp(name.data());
    if (descriptor < 0) {
        throw ToolError(std::string("cannot create a temporary file: ") + std::strerror(errno));
    }
    return name;
}

} // namespace ornex::tool
