#include "encoder_probes.h"

#include <cstring>

#include "line_source.h"

namespace {

std::string first_line(const char* command)
{
    LineSource in;
    if (!in.open(command)) {
        return std::string();
    }
    char line[100];
    memset(line, 0, sizeof line);
    in.gets(line, sizeof line);
    in.close();
    return line;
}

}  // namespace

std::string CheckVencFile()
{
    const std::string key = "kChn0_M_VENC_Type";
    std::string result;
    LineSource in;
    if (!in.open("cat /data/venc.ini | grep -w kChn0_M_VENC_Type")) {
        return result;
    }
    char buffer[1024];
    memset(buffer, 0, sizeof buffer);
    while (in.gets(buffer, sizeof buffer) != nullptr) {
        const std::string line(buffer);
        const std::string::size_type at = line.find(key);
        if (at == std::string::npos) {
            continue;
        }
        // The one character after the key ('=') is skipped unchecked; a
        // piece that ends right at the key has no value at all.
        const std::string::size_type from = at + key.size() + 1;
        std::string value = from <= line.size() ? line.substr(from) : std::string();
        const std::string::size_type blank = value.find(' ');
        if (blank != std::string::npos) {
            // Drops the character before the blank as well; a blank in
            // front wraps the length round to the whole text.
            value = value.substr(0, blank - 1);
        }
        result += "VENC_TYPE:";
        if (value == "96\n") {
            result += "H264";
        } else if (value == "265\n") {
            result += "H265";
        } else if (value == "1002\n") {
            result += "MJPEG";
        }
        break;
    }
    in.close();
    return result;
}

std::string CheckViFile()
{
    return first_line("cat /tmp/vi0");
}

std::string CheckVi1File()
{
    return first_line("cat /tmp/vi1");
}

std::string State_change(std::string state)
{
    if (state == "1") {
        state = "0";
    } else if (state == "2") {
        state = "1";
    } else if (state == "3") {
        state = "2";
    } else if (state == "4") {
        state = "3";
    } else {
        state = "5";
    }
    return state;
}
