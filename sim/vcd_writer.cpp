#include "vcd_writer.h"

#include <inttypes.h>
#include <time.h>

#include <algorithm>

#include "soc.h"

namespace {

// One printable character per line, as the format allows.
const char kFirstId = '!';
const size_t kMaxLines = '~' - kFirstId + 1;

int64_t monotonic_us()
{
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<int64_t>(ts.tv_sec) * 1000000 + ts.tv_nsec / 1000;
}

}  // namespace

const uint64_t VcdWriter::kDefaultMaxBytes;
const int64_t VcdWriter::kShortestPauseUs;
const int VcdWriter::kFinishWaitMs;

VcdWriter::VcdWriter(FILE* file, const std::string& path, const std::vector<NamedPin>& lines, uint64_t max_bytes,
                     Clock clock)
    : finished_(false),
      file_(file),
      path_(path),
      lines_(lines.begin(), lines.begin() + static_cast<long>(std::min(lines.size(), kMaxLines))),
      max_bytes_(max_bytes),
      clock_(clock ? clock : Clock(monotonic_us)),
      written_(0),
      full_(false),
      last_write_us_(clock_()),
      time_us_(0),
      stamped_us_(0)
{
    std::string header =
        "$version oledd-sim $end\n"
        "$timescale 1us $end\n"
        "$scope module box $end\n";
    for (size_t i = 0; i < lines_.size(); ++i) {
        header += "$var wire 1 " + std::string(1, static_cast<char>(kFirstId + i)) + " " + lines_[i].name + " $end\n";
    }
    header += "$upscope $end\n$enddefinitions $end\n#0\n$dumpvars\n";
    SimSoc& soc = SimSoc::instance();
    for (size_t i = 0; i < lines_.size(); ++i) {
        header += soc.level(lines_[i].pin.group, lines_[i].pin.bit) != 0 ? '1' : '0';
        header += static_cast<char>(kFirstId + i);
        header += '\n';
    }
    header += "$end\n";
    put(header.data(), static_cast<int>(header.size()));
}

void VcdWriter::attach()
{
    SimSoc& soc = SimSoc::instance();
    soc.on_store([this] { count_write(); });
    for (size_t i = 0; i < lines_.size(); ++i) {
        soc.watch(lines_[i].pin.group, lines_[i].pin.bit, [this, i](int, int, int level) { changed(i, level); });
    }
}

void VcdWriter::finish()
{
    // Polled rather than a timed lock: ThreadSanitizer's runtime does not
    // see the clock-based lock that timed_mutex uses and reports its unlock.
    for (int waited = 0; waited <= kFinishWaitMs; ++waited) {
        if (mutex_.try_lock()) {
            finished_ = true;
            fflush(file_);
            mutex_.unlock();
            return;
        }
        const timespec pause = {0, 1000 * 1000};
        nanosleep(&pause, nullptr);
    }
}

void VcdWriter::count_write()
{
    std::lock_guard<std::mutex> lock(mutex_);
    const int64_t now = clock_();
    const int64_t gap = now - last_write_us_;
    last_write_us_ = now;
    time_us_ += gap >= kShortestPauseUs ? static_cast<uint64_t>(gap) : 1;
}

void VcdWriter::changed(size_t line, int level)
{
    std::lock_guard<std::mutex> lock(mutex_);
    char text[48];
    int length = 0;
    if (time_us_ != stamped_us_) {
        stamped_us_ = time_us_;
        length = snprintf(text, sizeof(text), "#%" PRIu64 "\n", time_us_);
    }
    length += snprintf(text + length, sizeof(text) - static_cast<size_t>(length), "%d%c\n", level != 0 ? 1 : 0,
                       static_cast<char>(kFirstId + line));
    put(text, length);
}

void VcdWriter::put(const char* text, int length)
{
    if (full_ || finished_) {
        return;
    }
    if (written_ + static_cast<uint64_t>(length) > max_bytes_) {
        full_ = true;
        fprintf(file_, "$comment oledd-sim stopped recording here: the file reached its size limit $end\n");
        fflush(file_);
        fprintf(stderr, "oledd-sim: %s reached %" PRIu64 " bytes; nothing more is recorded\n", path_.c_str(), written_);
        return;
    }
    written_ += fwrite(text, 1, static_cast<size_t>(length), file_);
}
