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

OutputFiles& OutputFiles::instance()
{
    static OutputFiles files;
    return files;
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
    std::unique_lock<std::mutex> lock(wake_mutex_);
    while (running_) {
        wake_.wait_for(lock, kCoalesce);
        lock.unlock();
        flush();
        lock.lock();
    }
}

void OutputFiles::start()
{
    std::lock_guard<std::mutex> lock(wake_mutex_);
    if (running_ || folder_.empty()) {
        return;
    }
    running_ = true;
    thread_ = std::thread(&OutputFiles::run, this);
}

void OutputFiles::stop()
{
    {
        std::lock_guard<std::mutex> lock(wake_mutex_);
        running_ = false;
    }
    wake_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
    flush();
}
