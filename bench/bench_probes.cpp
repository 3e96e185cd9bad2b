// Cost of the loops' probe sets in both input modes, on the "good" fixture
// box: calls per second, processes spawned and CPU time per call (this
// process and its children). Run as root it counts every process exactly
// from inside a fresh PID namespace; otherwise it counts shells started.
#include <sched.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "box_root.h"
#include "line_source.h"
#include "probes.h"
#include "shell_launch.h"

namespace {

typedef std::string (*Probe)();

struct ProbeSet {
    const char* name;
    std::vector<Probe> probes;
};

const ProbeSet kSets[] = {
    {"led", {CheckCpuFile, CheckTemperature, CheckHDMIFile, CheckViFile, CheckVi1File}},
    {"screen",
     {CheckCpuFile, CheckTimeFile, CheckTemperature, CheckVencFile, CheckViFile, CheckVi1File, CheckIOFile,
      CheckIO1File, CheckEthspeedFile, CheckAiFile}},
    {"files-only",
     {CheckHDMIFile, CheckVencFile, CheckViFile, CheckVi1File, CheckIOFile, CheckIO1File, CheckEthspeedFile,
      CheckAiFile}},
};

bool g_exact_processes = false;

double seconds_now()
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

double cpu_seconds()
{
    double total = 0;
    for (int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        struct rusage usage;
        getrusage(who, &usage);
        total += static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                 static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    }
    return total;
}

// The last process id handed out in this PID namespace.
long last_pid()
{
    long pid = 0;
    std::ifstream("/proc/sys/kernel/ns_last_pid") >> pid;
    return pid;
}

void measure(ProbeInput input, const ProbeSet& set, int passes)
{
    set_probe_input(input);
    const unsigned long shells = shells_launched();
    const long pid = last_pid();
    const double cpu = cpu_seconds();
    const double start = seconds_now();
    for (int pass = 0; pass < passes; ++pass) {
        for (Probe probe : set.probes) {
            probe_text(probe);
        }
    }
    const double wall = seconds_now() - start;
    const double calls = static_cast<double>(passes) * static_cast<double>(set.probes.size());
    char processes[32] = "n/a";
    if (g_exact_processes) {
        snprintf(processes, sizeof processes, "%.2f", static_cast<double>(last_pid() - pid) / passes);
    }
    printf("%-10s  %-10s  %6.0f  %10.0f  %12.2f  %14s  %12.1f\n",
           input == ProbeInput::in_process ? "in-process" : "literal", set.name, calls, calls / wall,
           static_cast<double>(shells_launched() - shells) / passes, processes, (cpu_seconds() - cpu) / calls * 1e6);
}

int run(int passes)
{
    printf("%-10s  %-10s  %6s  %10s  %12s  %14s  %12s\n", "mode", "set", "calls", "calls/s", "shells/pass",
           "processes/pass", "cpu us/call");
    for (ProbeInput input : {ProbeInput::in_process, ProbeInput::literal_shell}) {
        for (const ProbeSet& set : kSets) {
            measure(input, set, passes);
        }
    }
    return 0;
}

// Copies the fixture box and enters it as oledd-sim does.
std::string enter_box()
{
    namespace fs = std::filesystem;
    char pattern[] = "/tmp/bench-probes-XXXXXX";
    if (mkdtemp(pattern) == nullptr) {
        perror("bench_probes: mkdtemp");
        exit(1);
    }
    const std::string root = pattern;
    fs::copy(fs::path(OLED_FIXTURES) / "good", root, fs::copy_options::recursive);
    fs::create_directories(root + "/tmp");
    set_box_root(root);
    fs::current_path(root + "/home/public");
    const char* path = getenv("PATH");
    setenv("PATH", (root + "/bin:" + (path != nullptr ? path : "/usr/bin:/bin")).c_str(), 1);
    setenv("LC_ALL", "C", 1);
    return root;
}

}  // namespace

int main(int argc, char** argv)
{
    int passes = 200;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            printf(
                "usage: bench_probes [--passes N]\n\n"
                "Runs the LED loop's and the screen loop's probe sets N times (default 200)\n"
                "in the in-process and the literal shell mode on a copy of the good fixture\n"
                "box, and prints calls per second, shells and processes spawned per pass and\n"
                "CPU time per call (this process and its children).\n");
            return 0;
        } else if (arg == "--passes" && i + 1 < argc && atoi(argv[i + 1]) > 0) {
            passes = atoi(argv[++i]);
        } else {
            fprintf(stderr, "bench_probes: bad option '%s' (try --help)\n", arg.c_str());
            return 2;
        }
    }
    const std::string root = enter_box();
    int status = 0;
    if (unshare(CLONE_NEWPID) == 0) {
        // The first child is process 1 of the new namespace: every process
        // it spawns moves that namespace's last id on by one.
        g_exact_processes = true;
        const pid_t child = fork();
        if (child == 0) {
            const int result = run(passes);
            fflush(stdout);
            _exit(result);
        }
        waitpid(child, &status, 0);
        status = WIFEXITED(status) ? WEXITSTATUS(status) : 1;
    } else {
        status = run(passes);
    }
    std::filesystem::remove_all(root);
    return status;
}
