#ifndef OLED_TESTS_GPIO_REGISTER_FILE_H
#define OLED_TESTS_GPIO_REGISTER_FILE_H

#include <stdint.h>
#include <stdlib.h>
#include <unistd.h>

#include "register_access.h"

// A sparse file standing in for /dev/mem (file offset = physical address),
// the mapping device from first use, removed at exit. Mappings are never
// removed, so each test maps pages of its own.
class RegisterFile {
public:
    static const RegisterFile& instance()
    {
        static RegisterFile file;
        return file;
    }
    ~RegisterFile()
    {
        close(fd_);
        unlink(path_);
    }
    void use() const { set_memmap_device(path_); }
    uint32_t read(uint32_t phys_addr) const
    {
        uint32_t value = 0;
        return pread(fd_, &value, 4, static_cast<off_t>(phys_addr)) == 4 ? value : 0xBAD0BAD0;
    }
    bool write(uint32_t phys_addr, uint32_t value) const
    {
        return pwrite(fd_, &value, 4, static_cast<off_t>(phys_addr)) == 4;
    }

private:
    RegisterFile() : fd_(mkstemp(path_))
    {
        if (fd_ < 0 || ftruncate(fd_, 0x12300000) != 0) {  // past the last GPIO group
            abort();
        }
        use();
    }
    char path_[32] = "/tmp/oled-regs-XXXXXX";
    int fd_;
};

#endif
