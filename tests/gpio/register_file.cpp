#include "register_file.h"

#include <stdlib.h>
#include <unistd.h>

#include <stdexcept>

#include "register_access.h"

namespace {
const off_t kFileSize = 0x12300000;  // beyond the last GPIO group
}

RegisterFile& RegisterFile::instance()
{
    static RegisterFile file;
    return file;
}

RegisterFile::RegisterFile() : fd_(-1)
{
    const char* base = getenv("TMPDIR");
    std::string pattern = std::string(base != nullptr ? base : "/tmp") + "/oled-regs-XXXXXX";
    fd_ = mkstemp(&pattern[0]);
    if (fd_ < 0 || ftruncate(fd_, kFileSize) != 0) {
        throw std::runtime_error("cannot make the register file");
    }
    path_ = pattern;
    use();
}

RegisterFile::~RegisterFile()
{
    close(fd_);
    unlink(path_.c_str());
}

void RegisterFile::use() const
{
    set_memmap_device(path_.c_str());
}

uint32_t RegisterFile::read(uint32_t phys_addr) const
{
    uint32_t value = 0;
    if (pread(fd_, &value, sizeof(value), static_cast<off_t>(phys_addr)) != static_cast<ssize_t>(sizeof(value))) {
        throw std::runtime_error("cannot read the register file");
    }
    return value;
}

void RegisterFile::write(uint32_t phys_addr, uint32_t value) const
{
    if (pwrite(fd_, &value, sizeof(value), static_cast<off_t>(phys_addr)) != static_cast<ssize_t>(sizeof(value))) {
        throw std::runtime_error("cannot write the register file");
    }
}
