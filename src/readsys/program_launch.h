#ifndef OLED_READSYS_PROGRAM_LAUNCH_H
#define OLED_READSYS_PROGRAM_LAUNCH_H

#include <spawn.h>
#include <sys/types.h>

#include <cstdio>

#include "program_command.h"

// Plain program calls started without a shell (posix_spawn): the PATH
// searched as the shell searches it, "> FILE" opened as the shell opens it,
// and for a program that cannot be started the status the shell would give
// (127 not found, 126 not allowed, 2 when the output file cannot be made).
enum class ProgramStart {
    started,      // running, or the shell's status for what could not start
    needs_shell,  // no executable format (a script without "#!"): the shell reads it itself
    failed,       // no pipe, descriptor or process to be had: as popen or system failing
};

// The program's standard output on a pipe, read like a popen stream.
struct ProgramReader {
    FILE* stream;
    pid_t pid;   // -1 once waited for, or when nothing was started
    int status;  // wait status
};

ProgramStart start_program_reader(const ProgramCommand& command, ProgramReader& reader);
// Closes the stream and waits for the program: its wait status, as pclose.
int close_program_reader(ProgramReader& reader);
// Runs the program to its end; status is the wait status as system gives
// it (-1 when failed).
ProgramStart run_program(const ProgramCommand& command, int& status);

// Programs started by this process so far without a shell.
unsigned long programs_started();

// The call that starts a program (posix_spawn's form), so that a test can
// make it fail as the system would; nullptr puts posix_spawn back.
typedef int (*SpawnCall)(pid_t* pid, const char* path, const posix_spawn_file_actions_t* actions,
                         const posix_spawnattr_t* attributes, char* const argv[], char* const envp[]);
void set_spawn_call(SpawnCall call);

#endif
