#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>

namespace ornex::tool {

// Tells a person waiting at a terminal what a long command is doing: once
// the command has run for `delay`, the stage it is in and every later one
// are printed as "ornex COMMAND: STAGE..." lines. While it lives it is the
// running command's progress, which reportStage() and silenceProgress()
// reach.
class Progress {
public:
    // Prints to `to` only when `shown`; main() shows it when stderr is a
    // terminal.
    Progress(std::string command, std::FILE *to, bool shown, std::chrono::milliseconds delay = std::chrono::seconds(1));
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    void stage(const std::string &text);
    void silence();

private:
    void watch();

    std::string command_;
    std::FILE *to_;
    std::chrono::steady_clock::time_point shownFrom_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::string current_, printed_;
    bool silent_ = false, stopping_ = false;
    std::thread watcher_;
};

// The running command's stages; nothing happens without a running Progress.
void reportStage(const std::string &text);
void silenceProgress();

} // namespace ornex::tool
