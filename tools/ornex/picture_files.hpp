#pragma once

// What reading and writing pictures share: temporary files and messages.

#include <string>

namespace ornex::tool {

// strerror(error), or the fallback when error is 0.
std::string systemMessage(int error, const char *fallback);

// OpenImageIO's message, or a fallback when it has none (its netpbm reader
// fails on truncated data without one).
std::string oiioMessage(std::string message, const char *fallback);

// A file removed when this goes out of scope, unless released.
class FileRemover {
public:
    explicit FileRemover(std::string path) : path_(std::move(path)) {}
    FileRemover(const FileRemover &) = delete;
    FileRemover &operator=(const FileRemover &) = delete;
    ~FileRemover();
    const std::string &path() const { return path_; }
    void release() { path_.clear(); }

private:
    std::string path_;
};

// A new empty file in the system's temporary folder, open as descriptor.
std::string makeTemporaryFile(const char *stem, int &descriptor);

} // namespace ornex::tool
