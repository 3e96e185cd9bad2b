#ifndef OLED_FUZZ_FUZZ_BOX_H
#define OLED_FUZZ_FUZZ_BOX_H

#include <stddef.h>
#include <stdint.h>

#include <string>

// A box root for one fuzzing process: made once in /dev/shm with the
// appliance's folders, set as the path seam's root, and removed at exit.
// Its working directory becomes ROOT/home/public, as on the appliance
// (so corpus folders must be given as absolute paths).
const std::string& fuzz_box_root();

// Writes bytes as the file at an appliance path ("/proc/umap/vo").
void write_box_file(const char* box_path, const uint8_t* data, size_t size);
void write_box_file(const char* box_path, const std::string& text);
// The whole file at an appliance path; "" when missing.
std::string read_box_file(const char* box_path);

// The daemon prints its diagnostics on stdout; a fuzzer keeps them away.
void silence_stdout();

#endif
