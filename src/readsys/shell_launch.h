#ifndef OLED_READSYS_SHELL_LAUNCH_H
#define OLED_READSYS_SHELL_LAUNCH_H

#include <cstdio>

// The only places where the probes start a shell (program_launch starts
// programs without one). Command texts are appliance texts; the appliance
// paths inside them are resolved through the path seam here, right before
// the shell sees them.

// popen(command, "r"); nullptr when the shell cannot be started.
FILE* launch_reader(const char* command);
// pclose: waits for the command, so no child outlives its probe.
int close_reader(FILE* stream);
// system(command); the exit status is returned as system gives it.
int launch_and_wait(const char* command);

// Shells started by this process so far (each popen or system call).
unsigned long shells_launched();

#endif
