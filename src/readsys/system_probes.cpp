#include "system_probes.h"

#include <sys/sysinfo.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <mutex>

#include "line_source.h"
#include "number_format.h"
#include "path_on_box.h"

namespace {

// The first word of the values line, copied until a character is followed
// by a blank. The finished flag is never cleared again: at most one word is
// taken per call.
void take_first_word(const char* values, char (&word)[64], size_t& used, bool& finished)
{
    for (size_t i = 0; values[i] != '\0' && !finished; ++i) {
        if (values[i] == ' ') {
            continue;
        }
        if (used + 1 < sizeof word) {
            word[used++] = values[i];
        }
        if (values[i + 1] == ' ') {
            finished = true;
        }
    }
}

// The LED loop and a screen loop both run the temperature tool into the
// same file: one at a time, or one reads what the other has just
// truncated. Never destroyed: a loop may hold it while exit() runs.
std::mutex& temperature_file_lock()
{
    static std::mutex* lock = new std::mutex;
    return *lock;
}

}  // namespace

std::string CheckCpuFile()
{
    // The audio page's heading, handed back when iostat cannot start.
    const std::string spare = "AI DEV ATTR";
    LineSource in;
    if (!in.open("iostat -c")) {
        return spare;
    }
    char line[1024];
    char values[1024];
    char word[64];
    memset(line, 0, sizeof line);
    memset(word, 0, sizeof word);
    size_t used = 0;
    bool finished = false;
    while (in.gets(line, sizeof line) != nullptr) {
        if (strstr(line, "avg-cpu") == nullptr) {
            continue;
        }
        memset(word, 0, sizeof word);
        used = 0;
        memset(values, 0, sizeof values);
        in.gets(values, sizeof values);
        in.gets(line, sizeof line);  // the blank line after the values
        take_first_word(values, word, used, finished);
    }
    in.close();
    if (strlen(word) > 3) {
        return "CPU:" + std::string(word) + "%";
    }
    return std::string();
}

std::string format_uptime(long seconds)
{
    char text[64];
    const long rest = seconds % 86400;
    snprintf(text, sizeof text, "TIM:%d.%d.%d.%dS", static_cast<int>(seconds / 86400), static_cast<int>(rest / 3600),
             static_cast<int>(rest % 3600 / 60), static_cast<int>(rest % 3600 % 60));
    return text;
}

std::string CheckTimeFile()
{
    struct sysinfo info;
    memset(&info, 0, sizeof info);
    sysinfo(&info);
    return format_uptime(info.uptime);
}

std::string CheckTemperature()
{
    // The tool is looked for in /home/public but started from the working
    // directory: the daemon is installed and started there.
    const char* command = nullptr;
    if (access(path_on_box("/home/public/get_temperature").c_str(), F_OK) == 0) {
        command = "./get_temperature > /tmp/temperature \n";
    } else if (access(path_on_box("/home/public/get_temperature.sh").c_str(), F_OK) == 0) {
        command = "./get_temperature.sh > /tmp/temperature \n";
    } else {
        return std::string();
    }
    std::lock_guard<std::mutex> one_at_a_time(temperature_file_lock());
    run_command(command);
    LineSource in;
    if (!in.open("cat /tmp/temperature")) {
        return std::string();
    }
    char line[100];
    memset(line, 0, sizeof line);
    in.gets(line, sizeof line);
    in.close();
    std::string reading(line);
    blank_non_digits(reading);
    return "TEMP:" + reading;
}
