#include "io_probes.h"

#include <cstdio>
#include <cstring>

#include "line_source.h"

namespace {

struct IoKeys {
    const char* io[4];
    const char* relay;
    const char* relay_command;
    bool report_failure;
};

// Each key variable is overwritten by its value, and later lines are
// matched against that value: the I/O service's file is read this way.
bool line_matches(const char* line, const std::string& variable)
{
    return strstr(line, variable.c_str()) != nullptr && strchr(line, '=') != nullptr;
}

// The text after the first '=' up to, not including, the line's last
// character (normally its newline).
void take_value(const char* line, std::string& variable)
{
    const std::string text(line);
    const std::string::size_type eq = text.find('=');
    variable = text.substr(eq + 1, text.size() - 2 - eq);
}

std::string read_states(const IoKeys& keys)
{
    std::string io[4] = {keys.io[0], keys.io[1], keys.io[2], keys.io[3]};
    std::string relay = keys.relay;
    LineSource in;
    if (!in.open("cat /data/remserial.ini | grep kSet")) {
        if (keys.report_failure) {
            printf("read /data/remserial.ini failed\n");
        }
        return std::string();
    }
    char line[1024];
    memset(line, 0, sizeof line);
    while (in.gets(line, sizeof line) != nullptr) {
        if (!line_matches(line, io[0])) {
            continue;
        }
        take_value(line, io[0]);
        // The group's other three lines follow; at the end of the output
        // the buffer keeps the last line, which is tested again.
        for (int k = 1; k < 4; ++k) {
            in.gets(line, sizeof line);
            if (line_matches(line, io[k])) {
                take_value(line, io[k]);
            }
        }
    }
    in.close();
    if (!in.open(keys.relay_command)) {
        return std::string();
    }
    while (in.gets(line, sizeof line) != nullptr) {
        if (line_matches(line, relay)) {
            take_value(line, relay);
            relay = relay == "1" ? "5" : "0";
        }
    }
    in.close();
    char text[100];
    snprintf(text, sizeof text, "%s%s%s%s%s", io[0].c_str(), io[1].c_str(), io[2].c_str(), io[3].c_str(),
             relay.c_str());
    return text;
}

}  // namespace

std::string CheckIOFile()
{
    static const IoKeys keys = {
        {"kSet0IO", "kSet1IO", "kSet2IO", "kSet3IO"}, "krelay0st", "cat /data/remserial.ini | grep krelay0st", false};
    return read_states(keys);
}

std::string CheckIO1File()
{
    static const IoKeys keys = {
        {"kSet4IO", "kSet5IO", "kSet6IO", "kSet7IO"}, "krelay1st", "cat /data/remserial.ini | grep krelay1st", true};
    return read_states(keys);
}
