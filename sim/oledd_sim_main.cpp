// oledd-sim: the appliance daemon on a simulated box. Prepares the box
// (root folder, working directory, tool path) and then runs the daemon's
// own start-up sequence unchanged.
#include <errno.h>
#include <getopt.h>
#include <limits.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "box_root.h"
#include "box_settings.h"
#include "box_waveform.h"
#include "led_board.h"
#include "output_files.h"
#include "panel_outputs.h"
#include "soc.h"
#include "startup.h"

namespace {

void write_outputs_at_exit()
{
    OutputFiles::instance().stop();
}

void usage(FILE* to)
{
    fprintf(to,
            "usage: oledd-sim --root DIR [options]\n"
            "\n"
            "Runs the front-panel daemon on a simulated box. The box's files\n"
            "(/data/oled.ini, /version/hardware_info, /proc/umap/..., /tmp/...)\n"
            "live under DIR; the daemon runs in DIR/home/public, and DIR/bin comes\n"
            "first on the PATH of the tools it starts (iostat, get_temperature).\n"
            "Its threads take oledd-sim's own scheduling: normal priority unless\n"
            "started real-time (chrt -f 10 oledd-sim ...), as the daemon on the box.\n"
            "\n"
            "options:\n"
            "  --root DIR   the box's root folder (required)\n"
            "  --out DIR    where the simulated panel and LEDs are written\n"
            "               (leds.json: each LED setting's pin and level)\n"
            "  --switch 0|1 level of the mode switch input (default 1; the\n"
            "               daemon takes 0 as the video input ports, 1 as HDMI)\n"
            "  --trace FILE every register write as a line \"ADDR VALUE\" in hex\n"
            "  --vcd FILE   the panel's bus lines and the LED pins as a Value Change\n"
            "               Dump (PulseView, GTKWave): 1 us per register write\n"
            "  --help       this text\n"
            "\n"
            "Relative paths are taken from the folder oledd-sim is started in.\n"
            "SIGUSR1 fills the panel's memory with noise, as a brown-out does; the\n"
            "daemon sends its whole screen again within a minute.\n");
}

bool make_folders(const std::string& path)
{
    std::string::size_type pos = 1;
    while (pos != std::string::npos) {
        pos = path.find('/', pos + 1);
        std::string part = path.substr(0, pos);
        if (mkdir(part.c_str(), 0777) != 0 && errno != EEXIST) {
            return false;
        }
    }
    return true;
}

// The output folder as an absolute path, since the daemon changes folder
// before it writes there; made if missing, and proved writable by making a
// file in it (for root, only that catches a read-only mount).
bool prepare_output_folder(const std::string& out, std::string* absolute)
{
    char real[PATH_MAX];
    if (!make_folders(out) || realpath(out.c_str(), real) == nullptr) {
        fprintf(stderr, "oledd-sim: cannot make output folder %s: %s\n", out.c_str(), strerror(errno));
        return false;
    }
    std::string probe = std::string(real) + "/.oledd-sim-XXXXXX";
    const int fd = mkstemp(&probe[0]);
    if (fd < 0) {
        fprintf(stderr, "oledd-sim: cannot write in output folder %s: %s\n", out.c_str(), strerror(errno));
        return false;
    }
    close(fd);
    unlink(probe.c_str());
    *absolute = real;
    return true;
}

// Opened before the daemon changes folder, so a relative path is the
// starting folder's; flushed by exit().
FILE* open_output_file(const std::string& path, const char* what)
{
    FILE* file = fopen(path.c_str(), "w");
    if (file == nullptr) {
        fprintf(stderr, "oledd-sim: cannot write %s %s: %s\n", what, path.c_str(), strerror(errno));
    }
    return file;
}

// SIGUSR1 is blocked in every thread (the daemon's threads inherit the
// mask) and taken here, where locking the panel is allowed.
void scramble_on_signal(const std::function<void(uint32_t)>& scramble)
{
    sigset_t usr1;
    sigemptyset(&usr1);
    sigaddset(&usr1, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &usr1, nullptr);
    std::thread([scramble, usr1] {
        for (uint32_t seed = 1;; ++seed) {
            int taken = 0;
            if (sigwait(&usr1, &taken) == 0 && scramble) {
                scramble(seed);
                fprintf(stderr, "oledd-sim: panel memory scrambled\n");
            }
        }
    }).detach();
}

}  // namespace

int main(int argc, char** argv)
{
    std::string root;
    std::string out;
    std::string trace;
    std::string vcd;
    int switch_level = 1;
    static const option kOptions[] = {
        {"help", no_argument, nullptr, 'h'},
        {"root", required_argument, nullptr, 'r'},
        {"out", required_argument, nullptr, 'o'},
        {"switch", required_argument, nullptr, 's'},
        {"trace", required_argument, nullptr, 't'},
        {"vcd", required_argument, nullptr, 'v'},
        {nullptr, 0, nullptr, 0},
    };
    opterr = 0;  // the reasons below are ours
    for (int given; (given = getopt_long(argc, argv, ":h", kOptions, nullptr)) != -1;) {
        const std::string value = optarg != nullptr ? optarg : "";
        switch (given) {
            case 'h':
                usage(stdout);
                return 0;
            case 'r':
                root = value;
                break;
            case 'o':
                out = value;
                break;
            case 's':
                if (value != "0" && value != "1") {
                    fprintf(stderr, "oledd-sim: --switch takes 0 or 1, not '%s'\n", value.c_str());
                    return 2;
                }
                switch_level = value[0] - '0';
                break;
            case 't':
                trace = value;
                break;
            case 'v':
                vcd = value;
                break;
            default:
                fprintf(stderr, "oledd-sim: unknown or incomplete option '%s'\n", argv[optind - 1]);
                usage(stderr);
                return 2;
        }
    }
    if (optind < argc) {
        fprintf(stderr, "oledd-sim: unexpected argument '%s'\n", argv[optind]);
        usage(stderr);
        return 2;
    }
    if (root.empty()) {
        fprintf(stderr, "oledd-sim: --root DIR is required\n");
        usage(stderr);
        return 2;
    }
    char real[PATH_MAX];
    if (realpath(root.c_str(), real) == nullptr) {
        fprintf(stderr, "oledd-sim: root folder %s: %s\n", root.c_str(), strerror(errno));
        return 2;
    }
    set_box_root(real);
    if (!out.empty() && !prepare_output_folder(out, &out)) {
        return 2;
    }
    FILE* trace_file = nullptr;
    FILE* vcd_file = nullptr;
    if ((!trace.empty() && (trace_file = open_output_file(trace, "trace file")) == nullptr) ||
        (!vcd.empty() && (vcd_file = open_output_file(vcd, "waveform file")) == nullptr)) {
        return 2;
    }
    if (trace_file != nullptr) {
        SimSoc::instance().trace_to(trace_file);
    }

    const std::string work = std::string(real) + "/home/public";
    if (!make_folders(work) || chdir(work.c_str()) != 0) {
        fprintf(stderr, "oledd-sim: cannot enter %s: %s\n", work.c_str(), strerror(errno));
        return 2;
    }
    const char* old_path = getenv("PATH");
    std::string path = std::string(real) + "/bin:" + (old_path != nullptr ? old_path : "/usr/bin:/bin");
    setenv("PATH", path.c_str(), 1);

    // Whoever watches the simulated box reads its output live.
    setvbuf(stdout, nullptr, _IOLBF, 0);

    // Devices are wired from the settings the daemon is about to read;
    // their files are registered before the writer starts.
    if (!out.empty()) {
        OutputFiles::instance().set_folder(out);
    }
    const BoxSettings box = read_box_settings();
    scramble_on_signal(wire_panel_outputs(box));
    wire_led_board(box, switch_level);
    if (vcd_file != nullptr) {
        record_box_waveform(box, vcd_file, vcd);
    }
    // The daemon ends through exit() from its signal handler; the output
    // files are written one last time then.
    if (!out.empty()) {
        OutputFiles::instance().start();
        atexit(write_outputs_at_exit);
    }
    return oled_main();
}
