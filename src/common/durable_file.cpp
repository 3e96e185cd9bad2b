#include "durable_file.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include "path_on_box.h"

namespace {

bool write_all(int fd, const std::string& bytes)
{
    size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        done += static_cast<size_t>(n);
    }
    return true;
}

std::string folder_of(const std::string& path)
{
    std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

void sync_folder(const std::string& folder)
{
    int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        fsync(fd);
        close(fd);
    }
}

bool write_in_place(const std::string& path, const std::string& bytes)
{
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) {
        return false;
    }
    bool ok = write_all(fd, bytes) && fsync(fd) == 0;
    return close(fd) == 0 && ok;
}

}  // namespace

bool file_holds(const char* path, const std::string& bytes)
{
    int fd = open(path_on_box(path).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    std::string content;
    char buf[4096];
    ssize_t n;
    while ((n = read(fd, buf, sizeof(buf))) > 0 && content.size() <= bytes.size()) {
        content.append(buf, static_cast<size_t>(n));
    }
    close(fd);
    return n >= 0 && content == bytes;
}

bool write_file_durably(const char* path, const std::string& bytes)
{
    const std::string real = path_on_box(path);
    const std::string temporary = real + ".tmp";
    int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) {
        // A folder that takes no new file (read-only, full directory) may
        // still hold a writable file.
        return write_in_place(real, bytes);
    }
    bool ok = write_all(fd, bytes) && fsync(fd) == 0;
    ok = close(fd) == 0 && ok;
    if (!ok || rename(temporary.c_str(), real.c_str()) != 0) {
        unlink(temporary.c_str());
        return false;
    }
    sync_folder(folder_of(real));
    return true;
}
