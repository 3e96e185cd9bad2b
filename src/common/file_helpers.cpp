#include "file_helpers.h"

#include <dirent.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <cctype>
#include <climits>
#include <fstream>
#include <iterator>
#include <sstream>

#include "path_on_box.h"
#include "trace.h"

std::string ReadSthFile(const char* path, bool strip)
{
    std::ifstream in(path_on_box(path).c_str(), std::ios::in | std::ios::binary);
    if (!in.is_open()) {
        return "null";
    }
    std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (strip && !content.empty() && content[content.size() - 1] == '\n') {
        content.erase(content.size() - 1);
    }
    return content;
}

void SplitString(const std::string& text, std::vector<std::string>& list, const std::string& separator)
{
    std::string::size_type found = text.find(separator);
    if (found == std::string::npos) {
        if (!text.empty()) {
            list.push_back(text);
        }
        return;
    }
    std::string::size_type pos = 0;
    while (found != std::string::npos) {
        list.push_back(text.substr(pos, found - pos));
        pos = found + separator.size();
        found = text.find(separator, pos);
    }
    if (pos != text.size()) {
        list.push_back(text.substr(pos));
    }
}

int str2int(const std::string& text)
{
    if (text.empty()) {
        return -1;
    }
    const unsigned char first = static_cast<unsigned char>(text[0]);
    const bool negative_number = first == '-' && text.size() > 1 && isdigit(static_cast<unsigned char>(text[1]));
    if (!isdigit(first) && !negative_number) {
        return -1;
    }
    std::istringstream in(text);
    int value = 0;
    in >> value;  // the stream clamps to INT_MAX/INT_MIN on overflow
    return value;
}

long strtol_(const char* text, int base)
{
    char* end = nullptr;
    return strtol(text, &end, base);
}

void HexStrToByte(const char* hex, unsigned char* out, int length)
{
    for (int i = 0; i < length; i += 2) {
        int high = toupper(static_cast<unsigned char>(hex[i]));
        int low = toupper(static_cast<unsigned char>(hex[i + 1]));
        high = high < 58 ? high - 48 : high - 55;
        low = low < 58 ? low - 48 : low - 55;
        out[i / 2] = static_cast<unsigned char>(high * 16 + low);
    }
}

int LinuxShell(const char* command, std::string& output)
{
    output.clear();
    FILE* stream = popen(command_on_box(command).c_str(), "re");
    if (stream == nullptr) {
        return -1;
    }
    char buf[1024];
    while (fgets(buf, sizeof(buf), stream) != nullptr) {
        output.append(buf);
    }
    if (!output.empty() && output[output.size() - 1] == '\n') {
        output.erase(output.size() - 1);
    }
    pclose(stream);
    return static_cast<int>(output.size());
}

void WriteSthFile(const char* path, const char* text)
{
    std::ofstream out(path_on_box(path).c_str(), std::ios::out | std::ios::trunc);
    if (out.is_open()) {
        out << text << '\n';
        out.flush();
    }
}

std::string GetExePath()
{
    char buf[1024] = {0};
    ssize_t n = readlink("/proc/self/exe", buf, sizeof(buf) - 1);
    if (n <= 0) {
        return "";
    }
    std::string path(buf, static_cast<size_t>(n));
    return path.substr(0, path.rfind('/') + 1);
}

std::string CurrentDir()
{
    static std::string exe_path = GetExePath();
    if (exe_path.empty()) {
        trace_prefix("CurrentDir", 302);
        printf("get_exe_path error");
    }
    char buf[1024] = {0};
    if (getcwd(buf, sizeof(buf)) == nullptr) {
        return "";
    }
    return buf;
}

std::vector<std::string> getFiles(std::string dir)
{
    std::vector<std::string> names;
    DIR* d = opendir(path_on_box(dir.c_str()).c_str());
    if (d == nullptr) {
        perror("Open dir error...");
        exit(1);
    }
    for (dirent* entry = readdir(d); entry != nullptr; entry = readdir(d)) {
        if (strcmp(entry->d_name, ".") != 0 && strcmp(entry->d_name, "..") != 0) {
            names.push_back(entry->d_name);
        }
    }
    closedir(d);
    return names;
}
