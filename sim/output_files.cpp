#include "output_files.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <chrono>

namespace {

const std::chrono::milliseconds kCoalesce(50);

bool replace_file(const std::string& path, const std::string& bytes)
{
    const std::string temporary = path + ".tmp";
    FILE* f = fopen(temporary.c_str(), "wb");
    if (f == nullptr) {
        return false;
    }
    bool ok = fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    ok = fclose(f) == 0 && ok;
    if (!ok || rename(temporary.c_str(), path.c_str()) != 0) {
        unlink(temporary.c_str());
        return false;
    }
    return true;
}

}  // namespace

const int OutputFiles::kLastRoundWaitMs;

OutputFiles& OutputFiles::instance()
{
    static OutputFiles* files = new OutputFiles;
    return *files;
}

void OutputFiles::set_folder(const std::string& folder)
{
    folder_ = folder;
}

int OutputFiles::add(const std::string& name, Renderer render)
{
    std::lock_guard<std::mutex> lock(write_mutex_);
    Entry entry;
    entry.name = name;
    entry.render = render;
    entry.written = false;
    entry.dirty.reset(new std::atomic<bool>(true));
    entries_.push_back(std::move(entry));
    return static_cast<int>(entries_.size() - 1);
}

void OutputFiles::mark_dirty(int id)
{
    if (id >= 0 && static_cast<size_t>(id) < entries_.size()) {
        entries_[static_cast<size_t>(id)].dirty->store(true, std::memory_order_relaxed);
    }
}

void OutputFiles::write_file(size_t index)
{
    Entry& entry = entries_[index];
    if (!entry.dirty->exchange(false)) {
        return;
    }
    std::string bytes = entry.render();
    if (entry.written && bytes == entry.last) {
        return;
    }
    if (replace_file(folder_ + "/" + entry.name, bytes)) {
        entry.last.swap(bytes);
        entry.written = true;
    }
}

void OutputFiles::flush()
{
    if (folder_.empty()) {
        return;
    }
    std::lock_guard<std::mutex> lock(write_mutex_);
    for (size_t i = 0; i < entries_.size(); ++i) {
        write_file(i);
    }
}

void OutputFiles::run()
{
    {
        std::unique_lock<std::mutex> lock(wake_mutex_);
        while (running_.load()) {
            wake_.wait_for(lock, kCoalesce);
            lock.unlock();
            writing_.store(true);
            flush();
            writing_.store(false);
            lock.lock();
        }
    }
    flush();
    std::lock_guard<std::mutex> lock(done_mutex_);
    last_round_done_ = true;
    done_.notify_all();
}

void OutputFiles::start()
{
    if (started_ || folder_.empty()) {
        return;
    }
    started_ = true;
    running_.store(true);
    std::thread writer(&OutputFiles::run, this);
    writer_ = writer.get_id();
    writer.detach();
}

void OutputFiles::stop()
{
    running_.store(false);
    if (!started_) {
        flush();
        return;
    }
    if (std::this_thread::get_id() == writer_) {
        // The process ends on the writer's own thread: it cannot wait for
        // itself, and may be in the middle of a round.
        if (!writing_.load()) {
            flush();
        }
        return;
    }
    // No lock: a wake-up lost here only costs the writer its 50 ms.
    wake_.notify_all();
    std::unique_lock<std::mutex> lock(done_mutex_);
    done_.wait_for(lock, std::chrono::milliseconds(kLastRoundWaitMs), [this] { return last_round_done_; });
}
