#include "video_probes.h"

#include <cstring>
#include <vector>

#include "line_source.h"
#include "row_splitter.h"

std::string CheckHDMIFile()
{
    std::string result = "NO";
    LineSource in;
    if (!in.open("cat /proc/umap/hdmi0 | awk '/HotPlug/'")) {
        return result;
    }
    char buffer[100];
    memset(buffer, 0, sizeof buffer);
    in.gets(buffer, sizeof buffer);
    const std::string line(buffer);
    // Unchecked on purpose: without a colon the cut starts at 1 (the
    // not-found position plus 2 wraps), and an empty line throws.
    const std::string value = line.substr(line.find(':') + 2, 3);
    if (value.find("YES") != std::string::npos) {
        result = "YES";
    }
    in.close();
    return result;
}

std::string CheckVdecFile()
{
    const std::string heading = "CHN ATTR & PARAMS";
    LineSource in;
    if (!in.open("cat /proc/umap/vdec")) {
        return heading;
    }
    char buffer[1024];
    memset(buffer, 0, sizeof buffer);
    std::string codec;
    while (in.gets(buffer, sizeof buffer) != nullptr) {
        if (strstr(buffer, heading.c_str()) == nullptr) {
            continue;
        }
        in.gets(buffer, sizeof buffer);  // column headings
        in.gets(buffer, sizeof buffer);  // channel 0
        codec = row_word(split_row(buffer), 2);
        // The rest of the channel table, up to the firmware section.
        while (in.gets(buffer, sizeof buffer) != nullptr) {
            const std::vector<RowWord> words = split_row(buffer);
            if (row_word(words, words.size() >= 2 ? 2 : 1) == "VfmwID") {
                break;
            }
        }
        break;
    }
    in.close();
    return "VDEC:" + codec;
}

std::string CheckVoFile()
{
    LineSource in;
    if (!in.open("cat /proc/umap/vo")) {
        return "DEV CONFIG";
    }
    char buffer[1024];
    memset(buffer, 0, sizeof buffer);
    std::string interface_name;
    std::string mode;
    std::string picture;
    while (in.gets(buffer, sizeof buffer) != nullptr) {
        if (strstr(buffer, "DEV CONFIG") != nullptr) {
            in.gets(buffer, sizeof buffer);
            in.gets(buffer, sizeof buffer);
            const std::vector<RowWord> words = split_row(buffer);
            interface_name = row_word(words, 3);
            mode = row_word(words, 4);
        } else if (strstr(buffer, "VIDEO LAYER STATUS 2") != nullptr) {
            in.gets(buffer, sizeof buffer);
            in.gets(buffer, sizeof buffer);
            const std::string row(buffer);
            const std::vector<RowWord> words = split_row(row);
            static const char* const labels[] = {"LU:", "CO:", "HU:"};
            for (size_t number = 5; number <= 7 && number <= words.size(); ++number) {
                picture += labels[number - 5] + words[number - 1].text;
            }
            if (words.size() >= 8) {
                // The saturation runs to the end of the line, not to a blank.
                const std::string::size_type start = words[7].start;
                picture += "SA:" + row.substr(start, row.find('\n', start) - start);
            }
            break;
        }
    }
    in.close();
    return "VO:" + interface_name + "_" + mode + ";" + picture;
}
