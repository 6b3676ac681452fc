#include "progress.hpp"

#include <atomic>

namespace ornex::tool {
namespace {

std::atomic<Progress *> running{nullptr};

} // namespace

Progress::Progress(std::string command, std::FILE *to, bool shown, std::chrono::milliseconds delay)
    : command_(std::move(command)), to_(to), shownFrom_(std::chrono::steady_clock::now() + delay), silent_(!shown)
{
    if (shown) {
        watcher_ = std::thread(&Progress::watch, this);
    }
    running = this;
}

Progress::~Progress()
{
    running = nullptr;
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    if (watcher_.joinable()) {
        watcher_.join();
    }
}

void Progress::stage(const std::string &text)
{
    {
        const std::lock_guard lock(mutex_);
        current_ = text;
    }
    changed_.notify_all();
}

void Progress::silence()
{
    const std::lock_guard lock(mutex_);
    silent_ = true;
}

void Progress::watch()
{
    std::unique_lock lock(mutex_);
    if (changed_.wait_until(lock, shownFrom_, [this] { return stopping_; })) {
        return;
    }
    while (!stopping_) {
        if (!silent_ && !current_.empty() && current_ != printed_) {
            std::fprintf(to_, "ornex %s: %s...\n", command_.c_str(), current_.c_str());
            std::fflush(to_);
            printed_ = current_;
        }
        changed_.wait(lock);
    }
}

void reportStage(const std::string &text)
{
    if (Progress *progress = running) {
        progress->stage(text);
    }
}

void silenceProgress()
{
    if (Progress *progress = running) {
        progress->silence();
    }
}

} // namespace ornex::tool
