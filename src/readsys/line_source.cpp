#include "line_source.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <string>

#include "path_on_box.h"
#include "shell_launch.h"

namespace {

#ifdef OLEDD_LITERAL_SHELL
std::atomic<int> g_input(static_cast<int>(ProbeInput::literal_shell));
#else
std::atomic<int> g_input(static_cast<int>(ProbeInput::in_process));
#endif

// Errors that would also keep popen from starting the command; any other
// error is cat's to report on its standard error, with nothing printed.
bool cannot_start(int error)
{
    return error == EMFILE || error == ENFILE || error == ENOMEM;
}

}  // namespace

void set_probe_input(ProbeInput input)
{
    g_input.store(static_cast<int>(input));
}

ProbeInput probe_input()
{
    return static_cast<ProbeInput>(g_input.load());
}

int run_command(const char* command)
{
    ProgramCommand program;
    if (probe_input() == ProbeInput::in_process && parse_program_command(command, program)) {
        int status = 0;
        if (run_program(program, status) != ProgramStart::needs_shell) {
            return status;
        }
    }
    return launch_and_wait(command);
}

LineSource::LineSource()
    : shell_(nullptr), program_(), file_(nullptr), line_(nullptr), capacity_(0), length_(0), offset_(0)
{}

LineSource::~LineSource()
{
    close();
    free(line_);
}

bool LineSource::open(const char* command)
{
    close();
    if (probe_input() == ProbeInput::in_process) {
        FileCommand file_command;
        if (parse_file_command(command, file_command)) {
            return open_file(file_command);
        }
        ProgramCommand program;
        if (parse_program_command(command, program)) {
            const ProgramStart start = start_program_reader(program, program_);
            if (start != ProgramStart::needs_shell) {
                return start == ProgramStart::started;
            }
        }
    }
    shell_ = launch_reader(command);
    return shell_ != nullptr;
}

bool LineSource::open_file(const FileCommand& command)
{
    command_ = command;
    length_ = 0;
    offset_ = 0;
    // Close-on-exec: a shell that another thread's probe starts meanwhile
    // must not inherit the descriptor.
    const int fd = ::open(path_on_box(command.path.c_str()).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return !cannot_start(errno);
    }
    file_ = fdopen(fd, "r");
    if (file_ == nullptr) {
        ::close(fd);
        return false;
    }
    return true;
}

int LineSource::close()
{
    int status = 0;
    if (shell_ != nullptr) {
        status = close_reader(shell_);
        shell_ = nullptr;
    }
    if (program_.stream != nullptr) {
        status = close_program_reader(program_);
    }
    if (file_ != nullptr) {
        fclose(file_);
        file_ = nullptr;
    }
    length_ = 0;
    offset_ = 0;
    return status;
}

// The tools select whole lines, however long; the reader then gets them in
// pieces. grep and awk end a last line that lacks one with a newline.
bool LineSource::next_selected_line()
{
    for (;;) {
        const ssize_t got = getline(&line_, &capacity_, file_);
        if (got <= 0) {
            return false;
        }
        size_t length = static_cast<size_t>(got);
        const bool has_newline = line_[length - 1] == '\n';
        if (!line_selected(command_, line_, has_newline ? length - 1 : length)) {
            continue;
        }
        if (!has_newline) {
            if (length + 1 >= capacity_) {
                char* grown = static_cast<char*>(realloc(line_, length + 2));
                if (grown == nullptr) {
                    return false;
                }
                line_ = grown;
                capacity_ = length + 2;
            }
            line_[length++] = '\n';
            line_[length] = '\0';
        }
        length_ = length;
        offset_ = 0;
        return true;
    }
}

char* LineSource::gets(char* buffer, int size)
{
    if (shell_ != nullptr) {
        return fgets(buffer, size, shell_);
    }
    if (program_.stream != nullptr) {
        return fgets(buffer, size, program_.stream);
    }
    if (file_ == nullptr || size <= 0) {
        return nullptr;
    }
    if (command_.filter == FileCommand::all_lines) {
        return fgets(buffer, size, file_);
    }
    if (offset_ == length_ && !next_selected_line()) {
        return nullptr;
    }
    const char* from = line_ + offset_;
    size_t count = length_ - offset_;
    if (count > static_cast<size_t>(size - 1)) {
        count = static_cast<size_t>(size - 1);
    }
    const void* newline = memchr(from, '\n', count);
    if (newline != nullptr) {
        count = static_cast<size_t>(static_cast<const char*>(newline) - from) + 1;
    }
    memcpy(buffer, from, count);
    buffer[count] = '\0';
    offset_ += count;
    return buffer;
}
