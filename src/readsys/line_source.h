#ifndef OLED_READSYS_LINE_SOURCE_H
#define OLED_READSYS_LINE_SOURCE_H

#include <sys/types.h>

#include <cstddef>
#include <cstdio>

#include "file_command.h"
#include "program_launch.h"

// How probes get their command's output. In-process: a command that only
// prints a file is read here, line for line as the tools would print it;
// a plain program call ("iostat -c") is started without a shell; any other
// command runs through the shell. Literal shell: every command runs
// through the shell. The default is fixed at build time; tests
// switch it to compare the two.
enum class ProbeInput { in_process, literal_shell };
void set_probe_input(ProbeInput input);
ProbeInput probe_input();

// Runs a command to its end, its output where the command sends it; the
// wait status as system gives it. Started as LineSource starts commands.
int run_command(const char* command);

// The output of one command, read in fgets-sized pieces. Closing (or
// destruction) waits for the command, so nothing outlives the probe.
class LineSource {
public:
    LineSource();
    ~LineSource();
    LineSource(const LineSource&) = delete;
    LineSource& operator=(const LineSource&) = delete;

    // False when the command could not be started (no shell or process,
    // or no descriptor or memory to read the file with). A file that is missing
    // or unreadable is a started command that prints nothing, as with cat.
    bool open(const char* command);
    // fgets semantics: at most size - 1 bytes, up to and including a
    // newline, NUL-terminated; nullptr (buffer untouched) at the end.
    char* gets(char* buffer, int size);
    // The command's wait status, as pclose gives it (0 for a file read
    // in-process, or when nothing was open).
    int close();

private:
    bool open_file(const FileCommand& command);
    bool next_selected_line();

    FILE* shell_;
    ProgramReader program_;  // program_.stream is null unless in use
    FILE* file_;
    FileCommand command_;
    char* line_;  // the current selected line (filters only)
    size_t capacity_;
    size_t length_;
    size_t offset_;
};

#endif
