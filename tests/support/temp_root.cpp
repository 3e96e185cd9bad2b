#include "temp_root.h"

#include <errno.h>
#include <ftw.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

#include "box_root.h"

namespace {

int remove_entry(const char* path, const struct stat*, int, struct FTW*)
{
    chmod(path, 0700);  // tests make read-only folders
    return remove(path);
}

int open_up(const char* path, const struct stat* st, int type, struct FTW*)
{
    if (type == FTW_D || type == FTW_DNR) {
        chmod(path, st->st_mode | 0700);
    }
    return 0;
}

}  // namespace

TempRoot::TempRoot()
{
    const char* base = getenv("TMPDIR");
    std::string pattern = std::string(base != nullptr ? base : "/tmp") + "/oled-test-XXXXXX";
    if (mkdtemp(&pattern[0]) == nullptr) {
        throw std::runtime_error("mkdtemp failed");
    }
    path_ = pattern;
    set_box_root(path_);
}

TempRoot::~TempRoot()
{
    set_box_root("");
    nftw(path_.c_str(), open_up, 16, FTW_PHYS);
    nftw(path_.c_str(), remove_entry, 16, FTW_DEPTH | FTW_PHYS);
}

void TempRoot::make_folder(const std::string& box_path) const
{
    std::string full = host(box_path);
    for (std::string::size_type pos = path_.size() + 1; pos != std::string::npos;) {
        pos = full.find('/', pos + 1);
        mkdir(full.substr(0, pos).c_str(), 0777);
    }
}

void TempRoot::write(const std::string& box_path, const std::string& content) const
{
    make_folder(box_path.substr(0, box_path.rfind('/')));
    std::ofstream out(host(box_path).c_str(), std::ios::binary | std::ios::trunc);
    out << content;
}

std::string TempRoot::read(const std::string& box_path) const
{
    std::ifstream in(host(box_path).c_str(), std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

bool TempRoot::exists(const std::string& box_path) const
{
    return access(host(box_path).c_str(), F_OK) == 0;
}
