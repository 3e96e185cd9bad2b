#include "fuzz_box.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "box_root.h"

namespace {

std::string g_root;

void remove_root()
{
    std::error_code ignored;
    std::filesystem::remove_all(g_root, ignored);
}

}  // namespace

const std::string& fuzz_box_root()
{
    if (!g_root.empty()) {
        return g_root;
    }
    // In memory when it can be: rewriting a file on ext4 forces it to disk
    // on close, which would cap a target at a few hundred runs a second.
    char pattern[] = "/dev/shm/oled-fuzz-box-XXXXXX";
    char fallback[] = "/tmp/oled-fuzz-box-XXXXXX";
    const char* made = mkdtemp(pattern);
    if (made == nullptr) {
        made = mkdtemp(fallback);
    }
    if (made == nullptr) {
        perror("mkdtemp");
        abort();
    }
    g_root = made;
    atexit(remove_root);
    for (const char* folder : {"/data", "/tmp", "/proc/umap", "/sys/class/net/eth0", "/home/public", "/version"}) {
        std::filesystem::create_directories(g_root + folder);
    }
    set_box_root(g_root);
    if (chdir((g_root + "/home/public").c_str()) != 0) {
        perror("chdir");
        abort();
    }
    return g_root;
}

void write_box_file(const char* box_path, const uint8_t* data, size_t size)
{
    FILE* file = fopen((fuzz_box_root() + box_path).c_str(), "wb");
    if (file == nullptr) {
        perror(box_path);
        abort();
    }
    if (size > 0 && fwrite(data, 1, size, file) != size) {
        abort();
    }
    fclose(file);
}

void write_box_file(const char* box_path, const std::string& text)
{
    write_box_file(box_path, reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

std::string read_box_file(const char* box_path)
{
    std::ifstream in(fuzz_box_root() + box_path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void silence_stdout()
{
    if (freopen("/dev/null", "w", stdout) == nullptr) {
        abort();
    }
}
