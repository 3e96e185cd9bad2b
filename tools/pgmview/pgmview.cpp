// pgmview: shows the simulated panel (panel.pgm) in a terminal.
#include <getopt.h>
#include <stdio.h>
#include <sys/stat.h>
#include <time.h>

#include <fstream>
#include <iterator>
#include <string>

#include "pgm_render.h"

namespace {

void usage(FILE* to)
{
    fprintf(to,
            "usage: pgmview [--follow] [--plain] [--leds LEDS.json] FILE\n"
            "\n"
            "Prints a binary PGM (the simulator's panel.pgm) in the terminal, two\n"
            "pixel rows per line in half-block characters, in greys.\n"
            "\n"
            "  --follow  redraw whenever the file is replaced, until interrupted\n"
            "  --plain   no colours: a pixel is lit when its level is above zero\n"
            "  --leds F  also show the LEDs of the simulator's leds.json under the panel\n"
            "  --help    this text\n");
}

bool read_file(const std::string& path, std::string* bytes)
{
    std::ifstream in(path.c_str(), std::ios::binary);
    if (!in.is_open()) {
        return false;
    }
    bytes->assign((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return true;
}

// Prints the file once (and the LED line when leds is set); false with a
// message on stderr when it cannot.
bool show(const std::string& path, bool plain, bool clear_first, const std::string& leds)
{
    std::string bytes;
    if (!read_file(path, &bytes)) {
        fprintf(stderr, "pgmview: cannot read %s\n", path.c_str());
        return false;
    }
    GreyImage image;
    std::string error;
    if (!parse_pgm(bytes, &image, &error)) {
        fprintf(stderr, "pgmview: %s: %s\n", path.c_str(), error.c_str());
        return false;
    }
    const std::string text = render_half_blocks(image, plain);
    if (clear_first) {
        fputs("\x1b[H\x1b[2J", stdout);
    }
    fwrite(text.data(), 1, text.size(), stdout);
    std::string led_json;
    if (!leds.empty() && read_file(leds, &led_json)) {
        const std::string line = render_led_line(led_json);
        fwrite(line.data(), 1, line.size(), stdout);
    }
    fflush(stdout);
    return true;
}

// Identity of the file's current version: the simulator replaces it by
// rename, so the inode changes with every write.
std::string version_of(const std::string& path)
{
    struct stat st;
    if (stat(path.c_str(), &st) != 0) {
        return std::string();
    }
    return std::to_string(st.st_ino) + ":" + std::to_string(st.st_mtim.tv_sec) + "." +
           std::to_string(st.st_mtim.tv_nsec) + ":" + std::to_string(st.st_size);
}

}  // namespace

int main(int argc, char** argv)
{
    bool follow = false;
    bool plain = false;
    std::string path;
    std::string leds;
    static const option kOptions[] = {
        {"help", no_argument, nullptr, 'h'},
        {"follow", no_argument, nullptr, 'f'},
        {"plain", no_argument, nullptr, 'p'},
        {"leds", required_argument, nullptr, 'l'},
        {nullptr, 0, nullptr, 0},
    };
    opterr = 0;  // the reasons below are ours
    for (int given; (given = getopt_long(argc, argv, ":h", kOptions, nullptr)) != -1;) {
        switch (given) {
            case 'h':
                usage(stdout);
                return 0;
            case 'f':
                follow = true;
                break;
            case 'p':
                plain = true;
                break;
            case 'l':
                leds = optarg;
                break;
            default:
                fprintf(stderr, "pgmview: unknown option or extra argument '%s'\n", argv[optind - 1]);
                usage(stderr);
                return 2;
        }
    }
    if (optind + 1 < argc) {
        fprintf(stderr, "pgmview: unknown option or extra argument '%s'\n", argv[optind + 1]);
        usage(stderr);
        return 2;
    }
    path = optind < argc ? argv[optind] : "";
    if (path.empty()) {
        fprintf(stderr, "pgmview: no file given\n");
        usage(stderr);
        return 2;
    }
    if (!follow) {
        return show(path, plain, false, leds) ? 0 : 1;
    }
    std::string shown;
    for (;;) {
        const std::string version = version_of(path) + "|" + version_of(leds);
        if (version[0] != '|' && version != shown) {
            show(path, plain, true, leds);
            shown = version;
        }
        const timespec pause = {0, 100 * 1000 * 1000};
        nanosleep(&pause, nullptr);
    }
}
