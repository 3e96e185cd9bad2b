#include "program_launch.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <string>
#include <vector>

#include "path_on_box.h"

extern char** environ;

namespace {

std::atomic<unsigned long> g_started(0);
std::atomic<SpawnCall> g_spawn(posix_spawn);

// Errors that would also keep popen or system from starting the shell.
bool out_of_resources(int error)
{
    return error == EAGAIN || error == ENOMEM || error == EMFILE || error == ENFILE;
}

// The exit status the shell (dash, BusyBox ash) gives for a program its
// exec refused.
int shell_status(int error)
{
    switch (error) {
        case ENOENT:
        case ENOTDIR:
        case ELOOP:
        case ENAMETOOLONG:
            return 127 << 8;
        case EACCES:
            return 126 << 8;
        default:
            return 2 << 8;
    }
}

// 0 when the shell would exec path, else the status it gives.
int runnable(const std::string& path)
{
    struct stat info;
    if (stat(path.c_str(), &info) != 0) {
        return errno == EACCES ? 126 << 8 : 127 << 8;
    }
    return S_ISREG(info.st_mode) && access(path.c_str(), X_OK) == 0 ? 0 : 126 << 8;
}

// The file the shell would run for word: a name with "/" as it stands, any
// other searched along PATH (an empty entry is the working folder). Found
// here rather than by posix_spawnp because not every C library reports
// exec errors from posix_spawn (uClibc-ng's and qemu's children just exit
// 127). 0, or the shell's status when there is nothing to run.
int find_program(const std::string& word, std::string& path)
{
    if (word.find('/') != std::string::npos) {
        path = path_on_box(word.c_str());
        return runnable(path);
    }
    const char* search = getenv("PATH");
    const std::string folders = search != nullptr ? search : "/bin:/usr/bin";
    int status = 127 << 8;
    std::string::size_type at = 0;
    for (;;) {
        const std::string::size_type end = folders.find(':', at);
        const std::string folder = folders.substr(at, end - at);
        const std::string candidate = (folder.empty() ? "." : folder) + "/" + word;
        const int found = runnable(candidate);
        if (found == 0) {
            path = candidate;
            return 0;
        }
        if (found != 127 << 8) {
            status = found;  // the shell goes on searching but reports this
        }
        if (end == std::string::npos) {
            return status;
        }
        at = end + 1;
    }
}

// A file the kernel would refuse with ENOEXEC (no "#!", no ELF header): the
// shell reads such a file as a script itself.
bool needs_shell(const std::string& path)
{
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return false;  // the spawn reports it
    }
    char head[4] = {0, 0, 0, 0};
    const ssize_t got = read(fd, head, sizeof head);
    close(fd);
    const bool script = got >= 2 && head[0] == '#' && head[1] == '!';
    const bool elf = got == 4 && memcmp(head, "\177ELF", 4) == 0;
    return got >= 0 && !script && !elf;
}

// Descriptors 0 to 2 are the program's own: one of ours that landed there
// (the daemon started with one closed) is moved above them.
int above_standard(int fd)
{
    if (fd > 2) {
        return fd;
    }
    const int moved = fcntl(fd, F_DUPFD_CLOEXEC, 3);
    close(fd);
    return moved;
}

int wait_for(pid_t pid)
{
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return status;
}

int spawn(const std::string& program, const ProgramCommand& command, int out, pid_t& pid)
{
    std::vector<std::string> words;
    for (const std::string& word : command.words) {
        words.push_back(word[0] == '/' ? path_on_box(word.c_str()) : word);
    }
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(&word[0]);
    }
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    int error = posix_spawn_file_actions_init(&actions);
    if (error != 0) {
        return error;
    }
    error = posix_spawnattr_init(&attributes);
    if (error == 0) {
        // A child starts with the mask of the thread that spawned it; a
        // tool must not inherit a blocked termination signal and become
        // unkillable.
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
        if (out >= 0) {
            error = posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
        }
        if (error == 0) {
            error = g_spawn.load()(&pid, program.c_str(), &actions, &attributes, argv.data(), environ);
            if (error == 0) {
                g_started.fetch_add(1);
            }
        }
        posix_spawnattr_destroy(&attributes);
    }
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

// Starts the program with out (-1: the daemon's own) as its standard
// output unless the command redirects it. pid stays -1 when nothing was
// started; status then holds what the shell would have given.
ProgramStart start(const ProgramCommand& command, int out, pid_t& pid, int& status)
{
    pid = -1;
    std::string program;
    status = find_program(command.words[0], program);
    if (status == 0 && needs_shell(program)) {
        return ProgramStart::needs_shell;
    }
    int file = -1;
    if (!command.output.empty()) {
        // The shell creates the file before it looks for the program, and
        // runs nothing when it cannot.
        file = open(path_on_box(command.output.c_str()).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        if (file < 0) {
            if (out_of_resources(errno)) {
                return ProgramStart::failed;
            }
            status = 2 << 8;
            return ProgramStart::started;
        }
        file = above_standard(file);
        if (file < 0) {
            return ProgramStart::failed;
        }
        out = file;
    }
    if (status != 0) {
        // Not found or not executable: the shell opened the file all the
        // same, then ran nothing.
        if (file >= 0) {
            close(file);
        }
        return ProgramStart::started;
    }
    const int error = spawn(program, command, out, pid);
    if (file >= 0) {
        close(file);
    }
    if (error == 0) {
        return ProgramStart::started;
    }
    pid = -1;
    if (error == ENOEXEC) {
        return ProgramStart::needs_shell;
    }
    if (out_of_resources(error)) {
        return ProgramStart::failed;
    }
    status = shell_status(error);
    return ProgramStart::started;
}

}  // namespace

void set_spawn_call(SpawnCall call)
{
    g_spawn = call != nullptr ? call : posix_spawn;
}

ProgramStart start_program_reader(const ProgramCommand& command, ProgramReader& reader)
{
    reader.stream = nullptr;
    reader.pid = -1;
    reader.status = 0;
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return ProgramStart::failed;
    }
    ends[1] = above_standard(ends[1]);
    ProgramStart result = ProgramStart::failed;
    if (ends[1] >= 0) {
        result = start(command, ends[1], reader.pid, reader.status);
        close(ends[1]);
    }
    if (result == ProgramStart::started) {
        // With nothing started the stream just reads as empty, as popen's
        // does when the shell cannot find the program.
        reader.stream = fdopen(ends[0], "r");
        if (reader.stream != nullptr) {
            return result;
        }
        result = ProgramStart::failed;
    }
    close(ends[0]);
    if (reader.pid > 0) {
        wait_for(reader.pid);
        reader.pid = -1;
    }
    return result;
}

int close_program_reader(ProgramReader& reader)
{
    if (reader.stream != nullptr) {
        fclose(reader.stream);
        reader.stream = nullptr;
    }
    if (reader.pid > 0) {
        reader.status = wait_for(reader.pid);
        reader.pid = -1;
    }
    return reader.status;
}

ProgramStart run_program(const ProgramCommand& command, int& status)
{
    pid_t pid = -1;
    const ProgramStart result = start(command, -1, pid, status);
    if (pid > 0) {
        status = wait_for(pid);
    }
    if (result == ProgramStart::failed) {
        status = -1;
    }
    return result;
}

unsigned long programs_started()
{
    return g_started.load();
}
