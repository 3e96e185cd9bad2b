// Control datagrams per second through the daemon's own handler, on a
// scratch box root: datagrams that change a setting (each ends in a durable
// save), and queries (replyoled alone), whose saves must not rewrite the
// file. Rewrites are counted by the file's identity: every save that writes
// replaces the file by a new one.
#include <fcntl.h>
#include <ftw.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <string>

#include "box_root.h"
#include "control_datagram.h"
#include "control_stats.h"
#include "runtime_settings.h"
#include "settings_saver.h"
#include "singleton.h"
#include "software_config.h"

#ifdef OLED_LITERAL_SAVE
long literal_saves();  // literal_save.cpp
#else
long literal_saves()
{
    return 0;
}
#endif

namespace {

class CountReplies : public ReplySender {
public:
    void send(const char*, unsigned int, const std::string& payload, bool) override
    {
        ++count;
        bytes += payload.size();
    }
    long count = 0;
    size_t bytes = 0;
};

double now_seconds()
{
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

// Tells whether the settings file was replaced since the last look. The
// last file seen is kept open, so its inode cannot be reused by the next.
class RewriteCounter {
public:
    explicit RewriteCounter(const std::string& path) : path_(path), held_(-1), rewrites_(0) { look(); }
    ~RewriteCounter()
    {
        if (held_ >= 0) {
            close(held_);
        }
    }
    void look()
    {
        struct stat st;
        if (stat(path_.c_str(), &st) != 0) {
            return;
        }
        if (held_ >= 0) {
            struct stat old;
            fstat(held_, &old);
            if (old.st_ino == st.st_ino && old.st_dev == st.st_dev) {
                return;
            }
            ++rewrites_;
            close(held_);
        }
        held_ = open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    }
    long rewrites() const { return rewrites_; }

private:
    std::string path_;
    int held_;
    long rewrites_;
};

struct Run {
    double seconds;
    long rewrites;
};

#ifdef OLED_LITERAL_SAVE
// The baseline build saves in place, which keeps the file's identity: its
// saves are counted where they happen.
const bool kLiteral = true;
#else
const bool kLiteral = false;
#endif

Run run(const char* const* datagrams, int kinds, long count, const std::string& file, ReplySender& reply)
{
    RewriteCounter counter(file);
    const long saves = literal_saves();
    const ControlPeer sender = {"192.168.1.1", 40000};
    SettingsSaver saver;
    ControlStats stats;
    ControlContext context = {"192.168.1.20", pins_at_start(), &reply, &saver, nullptr, {}, &stats, 0};
    const double start = now_seconds();
    for (long i = 0; i < count; ++i) {
        const char* text = datagrams[i % kinds];
        // A quiet second between datagrams: every change is saved at once.
        const int64_t now_ms = i * 2 * SettingsSaver::kQuietMs;
        handle_control_datagram(text, static_cast<long>(strlen(text)), sender, "192.168.1.20", context, now_ms);
        counter.look();
    }
    return Run{now_seconds() - start, kLiteral ? literal_saves() - saves : counter.rewrites()};
}

int remove_entry(const char* path, const struct stat*, int, struct FTW*)
{
    return remove(path);
}

void usage(FILE* to)
{
    fprintf(to,
            "usage: bench_control [--changes N] [--queries N]\n"
            "\n"
            "Feeds control datagrams to the daemon's handler on a scratch box root\n"
            "(under $TMPDIR or /tmp) and prints datagrams per second: N datagrams\n"
            "that change a setting (durable save each; default 300) and N queries\n"
            "(replyoled alone; default 3000) with the number of file rewrites,\n"
            "which must be 0 for queries (exit status 1 otherwise).\n"
            "bench_control_literal saves as the plain design does instead: the\n"
            "file truncated and rewritten in place, then system(\"sync\"), for\n"
            "every datagram.\n");
}

}  // namespace

int main(int argc, char** argv)
{
    long changes = 300;
    long queries = 3000;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            usage(stdout);
            return 0;
        }
        char* end = nullptr;
        const long value = i + 1 < argc ? strtol(argv[i + 1], &end, 10) : 0;
        if ((arg != "--changes" && arg != "--queries") || end == nullptr || *end != '\0' || value < 1) {
            fprintf(stderr, "bench_control: bad option '%s' (see --help)\n", arg.c_str());
            return 2;
        }
        (arg == "--changes" ? changes : queries) = value;
        ++i;
    }

    const char* base = getenv("TMPDIR");
    std::string root = std::string(base != nullptr ? base : "/tmp") + "/oled-bench-XXXXXX";
    if (mkdtemp(&root[0]) == nullptr) {
        perror("bench_control: mkdtemp");
        return 2;
    }
    set_box_root(root);
    mkdir((root + "/data").c_str(), 0777);
    const std::string file = root + "/data/oled.ini";

    // The handler prints the whole settings after every datagram; the
    // figures go to standard error.
    fflush(stdout);
    const int saved_stdout = dup(STDOUT_FILENO);
    const int null_fd = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(null_fd, STDOUT_FILENO);
    close(null_fd);

    Singleton<SoftwareConfig>::instance()->SaveConfig();
    CountReplies replies;
    const char* const change_datagrams[] = {"cpu=0|sleep=5", "cpu=1|sleep=3"};
    const char* const query_datagrams[] = {"replyoled"};
    const Run changed = run(change_datagrams, 2, changes, file, replies);
    const Run queried = run(query_datagrams, 1, queries, file, replies);

    fflush(stdout);
    dup2(saved_stdout, STDOUT_FILENO);
    close(saved_stdout);
    fprintf(stderr, "changes: %ld datagrams in %.3f s = %.0f datagrams/s, file rewrites %ld (%s)\n", changes,
            changed.seconds, static_cast<double>(changes) / changed.seconds, changed.rewrites,
            kLiteral ? "in-place save and sync each" : "durable save each");
    fprintf(stderr,
            "queries: %ld datagrams in %.3f s = %.0f datagrams/s, file rewrites %ld, replies %ld of %zu bytes\n",
            queries, queried.seconds, static_cast<double>(queries) / queried.seconds, queried.rewrites, replies.count,
            replies.count > 0 ? replies.bytes / static_cast<size_t>(replies.count) : static_cast<size_t>(0));

    set_box_root("");
    nftw(root.c_str(), remove_entry, 8, FTW_DEPTH | FTW_PHYS);
    return queried.rewrites == (kLiteral ? queries : 0) && changed.rewrites == changes ? 0 : 1;
}
