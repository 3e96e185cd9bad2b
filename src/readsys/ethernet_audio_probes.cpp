#include "ethernet_audio_probes.h"

#include <cstdio>
#include <cstring>

#include "line_source.h"
#include "number_format.h"

namespace {

bool digit(char c)
{
    return c >= '0' && c <= '9';
}

// Heading and row are matched by column position: the page is laid out in
// fixed-width columns. The digit test looks at the line buffer, which may
// still hold an older, longer line beyond the row's end.
void take_rate(const std::string& headings, const char* buffer, std::string& rate)
{
    const std::string row(buffer);
    std::string::size_type i = 0;
    while (i < headings.size()) {
        if (headings.compare(i, 4, "Samp") != 0) {
            ++i;
        } else if (digit(buffer[i]) || digit(buffer[i + 1])) {
            rate = row.substr(i, row.find(' ', i) - i);
            // A value one place right of its heading gives an empty rate;
            // the walk still moves on.
            i += rate.empty() ? 1 : rate.size();
        } else {
            rate = ".NO ";
            ++i;
        }
    }
}

}  // namespace

std::string CheckEthspeedFile()
{
    LineSource in;
    if (!in.open("cat /sys/class/net/eth0/speed")) {
        // The message names the video-input page; it is kept so.
        printf("Open %s failed!\n", "/proc/umap/vi");
        return std::string();
    }
    char buffer[1024];
    memset(buffer, 0, sizeof buffer);
    in.gets(buffer, sizeof buffer);
    std::string text(buffer);
    blank_non_digits(text);
    in.close();
    if (strtoint(text) == 10) {
        text = "NO LINK";
    }
    return "ETH_SPEED:" + text;
}

std::string CheckAiFile()
{
    const std::string heading = "AI DEV ATTR";
    std::string rate;
    LineSource in;
    if (!in.open("cat /proc/umap/ai")) {
        return heading;
    }
    char buffer[1024];
    char headings[1024];
    memset(buffer, 0, sizeof buffer);
    memset(headings, 0, sizeof headings);
    while (in.gets(buffer, sizeof buffer) != nullptr) {
        if (strstr(buffer, heading.c_str()) == nullptr) {
            continue;
        }
        in.gets(headings, sizeof headings);
        in.gets(buffer, sizeof buffer);
        take_rate(headings, buffer, rate);
    }
    std::string result = "AIOSR:" + rate;
    if (result.find("NO") != std::string::npos) {
        result = "NO_AI";
    }
    in.close();
    return result;
}
