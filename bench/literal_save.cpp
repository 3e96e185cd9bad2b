// The baseline of bench_control_literal: the settings saved as the plain
// design does it, truncating the file in place, writing it, closing it and
// running "sync" through the shell, on every datagram, changed or not.
// Linked in place of the daemon's durable file writer; nothing else of the
// daemon changes.
#include <stdio.h>
#include <stdlib.h>

#include <string>

#include "durable_file.h"
#include "path_on_box.h"

namespace {
long g_saves = 0;
}

long literal_saves()
{
    return g_saves;
}

bool file_holds(const char*, const std::string&)
{
    return false;
}

bool write_file_durably(const char* path, const std::string& bytes)
{
    ++g_saves;
    FILE* file = fopen(path_on_box(path).c_str(), "wb");
    if (file == nullptr) {
        return false;
    }
    const bool written = fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    fflush(file);
    fclose(file);
    if (system("sync") != 0) {
        return false;
    }
    return written;
}
