#ifndef OLED_TESTS_GPIO_REGISTER_FILE_H
#define OLED_TESTS_GPIO_REGISTER_FILE_H

#include <stdint.h>

#include <string>

// A sparse regular file standing in for /dev/mem: file offset = physical
// address, large enough for the SoC's register blocks. One per test
// program, made the mapping device on first use and removed at exit.
// Mappings are never removed, so each test maps pages of its own.
class RegisterFile {
public:
    static RegisterFile& instance();
    ~RegisterFile();

    const std::string& path() const { return path_; }
    // Makes this file the device memmap opens (again).
    void use() const;
    uint32_t read(uint32_t phys_addr) const;
    void write(uint32_t phys_addr, uint32_t value) const;

private:
    RegisterFile();
    std::string path_;
    int fd_;
};

#endif
