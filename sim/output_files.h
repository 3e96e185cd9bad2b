#ifndef OLED_SIM_OUTPUT_FILES_H
#define OLED_SIM_OUTPUT_FILES_H

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// The files oledd-sim keeps in its --out folder (panel.pgm, leds.json, ...).
// A device marks its file dirty on every change; a writer thread renders
// and replaces dirty files at most every 50 ms (changes are coalesced), and
// stop() writes whatever is still dirty, so the files are right at exit.
// Files are replaced by rename: a reader never sees half a file.
// Never destroyed: daemon threads still mark files while the process exits.
class OutputFiles {
public:
    typedef std::function<std::string()> Renderer;

    static OutputFiles& instance();

    void set_folder(const std::string& folder);
    const std::string& folder() const { return folder_; }
    // Registers a file; render() is called on the writer thread and must
    // lock whatever state it reads. Returns the id for mark_dirty. Every
    // file is registered before start().
    int add(const std::string& name, Renderer render);
    // Cheap and lock-free: callable from SoC listeners.
    void mark_dirty(int id);

    void start();
    // Stops the writer and has every dirty file written one last time. It
    // runs at exit on whichever thread ends the process, which may hold the
    // SoC or a panel (a fault in the middle of a store) or be the writer
    // itself: so it never joins and waits for that last round at most
    // kLastRoundWaitMs; the files may then miss the final 50 ms.
    void stop();
    static const int kLastRoundWaitMs = 500;
    // Writes every dirty file now, on the calling thread.
    void flush();

private:
    OutputFiles() : running_(false), writing_(false), started_(false), last_round_done_(false) {}
    void run();
    void write_file(size_t index);

    struct Entry {
        std::string name;
        Renderer render;
        std::string last;
        bool written;
        std::unique_ptr<std::atomic<bool>> dirty;
    };

    std::string folder_;
    std::vector<Entry> entries_;
    std::mutex write_mutex_;
    std::mutex wake_mutex_;
    std::condition_variable wake_;
    std::atomic<bool> running_;
    std::atomic<bool> writing_;  // the writer is inside flush()
    bool started_;
    std::thread::id writer_;
    std::mutex done_mutex_;
    std::condition_variable done_;
    bool last_round_done_;
};

#endif
