// What one paced register write costs on the simulated SoC, against the
// bare one-microsecond spin that paces it. The spin quantises every write
// to the next microsecond tick, so as long as the look-up and the store fit
// into what is left of the tick the ratio stays near 1; what shows above it
// is the cost the SoC adds to every bit of a panel bus.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

#include "register_access.h"
#include "soc.h"

namespace {

const unsigned int kDataAlias = 0x12190010;  // pin 4_2's single-bit alias
const unsigned int kDirection = 0x12190400;

long long now_ns()
{
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<long long>(ts.tv_sec) * 1000000000LL + ts.tv_nsec;
}

long long now_us()
{
    return now_ns() / 1000;
}

// The pacing rule of set_reg on its own: wait until the microsecond count
// has visibly moved on.
void bare_spin()
{
    const long long start = now_us();
    while (now_us() - start <= 0) {
    }
}

// The host is shared: the best of a few rounds shows the cost of the code
// rather than the time the process was not running.
const int kRounds = 20;

template <typename Step>
double ns_per_step(long steps, Step step)
{
    const long per_round = steps / kRounds > 0 ? steps / kRounds : 1;
    double best = 0;
    for (int round = 0; round < kRounds; ++round) {
        const long long begin = now_ns();
        for (long i = 0; i < per_round; ++i) {
            step(i);
        }
        const double ns = static_cast<double>(now_ns() - begin) / static_cast<double>(per_round);
        best = round == 0 || ns < best ? ns : best;
    }
    return best;
}

void report_paced(const char* what, double ns)
{
    printf("%-52s %8.1f ns per write  %.3f x the 1 us floor\n", what, ns, ns / 1000.0);
}

void report_unpaced(const char* what, double ns, const char* unit = "store")
{
    printf("%-52s %8.1f ns per %s\n", what, ns, unit);
}

void toggle(long i)
{
    set_reg(kDataAlias, (i & 1) != 0 ? 4u : 0u);
}

// On the appliance every access first walks the mapping list. Here the
// device is a sparse file; the set-up maps the multiplexing page and four
// GPIO groups, and the look-up asks for the last of them.
void report_mapping_lookup(long lookups)
{
    char path[] = "/tmp/bench-pacing-XXXXXX";
    const int fd = mkstemp(path);
    if (fd < 0 || ftruncate(fd, 0x12200000) != 0) {
        printf("mapping look-up: no temporary file\n");
        return;
    }
    set_memmap_device(path);
    const unsigned int pages[] = {0x120F0000, 0x12150000, 0x12180000, 0x12190000, 0x121A0000};
    for (unsigned int page : pages) {
        memmap(page, 128);
    }
    volatile uintptr_t sink = 0;
    report_unpaced(
        "memmap look-up, hit on the fifth record",
        ns_per_step(lookups, [&sink](long) { sink = sink + reinterpret_cast<uintptr_t>(memmap(0x121A0010, 128)); }),
        "look-up");
    close(fd);
    unlink(path);
}

void usage(FILE* to)
{
    fprintf(to,
            "usage: bench_pacing [--writes N]\n"
            "\n"
            "Times N paced register writes (default 1000000) on the simulated SoC\n"
            "and the bare pacing spin, N unpaced stores into the SoC and N look-ups\n"
            "in the register mapping list (on a temporary sparse file); each\n"
            "figure is the best of twenty rounds.\n");
}

}  // namespace

int main(int argc, char** argv)
{
    long writes = 1000000;
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--help") == 0 || strcmp(argv[i], "-h") == 0) {
            usage(stdout);
            return 0;
        } else if (strcmp(argv[i], "--writes") == 0 && i + 1 < argc && atol(argv[i + 1]) > 0) {
            writes = atol(argv[++i]);
        } else {
            fprintf(stderr, "bench_pacing: unknown or incomplete option '%s'\n", argv[i]);
            usage(stderr);
            return 2;
        }
    }

    SimSoc& soc = SimSoc::instance();
    soc.reset();
    soc.store(kDirection, 0x04);  // 4_2 is an output, so every write is an edge

    printf("%ld writes each, best of %d rounds\n", writes, kRounds);
    report_paced("bare spin, no register", ns_per_step(writes, [](long) { bare_spin(); }));
    report_paced("set_reg on the simulated SoC", ns_per_step(writes, toggle));
    report_unpaced("SoC store alone, no device",
                   ns_per_step(writes, [&soc](long i) { soc.store(kDataAlias, (i & 1) != 0 ? 4u : 0u); }));

    // As oledd-sim runs with an output folder: a device on the pin and a
    // change callback that schedules the output files.
    std::atomic<long> edges(0);
    std::atomic<long> changes(0);
    soc.watch(4, 2, [&edges](int, int, int) { edges.fetch_add(1, std::memory_order_relaxed); });
    soc.on_change([&changes]() { changes.fetch_add(1, std::memory_order_relaxed); });
    report_paced("set_reg, SoC with a pin device and a change callback", ns_per_step(writes, toggle));
    report_unpaced("SoC store alone, pin device and change callback",
                   ns_per_step(writes, [&soc](long i) { soc.store(kDataAlias, (i & 1) != 0 ? 4u : 0u); }));
    printf("(%ld edges and %ld change calls seen)\n", edges.load(), changes.load());
    soc.reset();
    report_mapping_lookup(writes);
    return 0;
}
