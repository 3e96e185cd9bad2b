#include "shell_launch.h"

#include <stdlib.h>

#include <atomic>
#include <string>

#include "path_on_box.h"

namespace {
std::atomic<unsigned long> g_launched(0);
}

FILE* launch_reader(const char* command)
{
    g_launched.fetch_add(1);
    return popen(command_on_box(command).c_str(), "re");
}

int close_reader(FILE* stream)
{
    return pclose(stream);
}

int launch_and_wait(const char* command)
{
    g_launched.fetch_add(1);
    return system(command_on_box(command).c_str());
}

unsigned long shells_launched()
{
    return g_launched.load();
}
