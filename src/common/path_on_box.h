#ifndef OLED_COMMON_PATH_ON_BOX_H
#define OLED_COMMON_PATH_ON_BOX_H

#include <string>

// The path seam. Every absolute appliance path ("/data/oled.ini") is
// resolved here right before the system call that uses it: identity on the
// appliance, under the sim root in oledd-sim. Relative paths are returned
// unchanged (they follow the working directory). Messages keep printing
// the appliance path, never the result of this function.
//
// Defined once per program at link time: path_on_box_appliance.cpp for
// oledd, sim/box_root.cpp for oledd-sim and the tests.
std::string path_on_box(const char* path);

// The same for a shell command: every absolute appliance path inside the
// text is resolved. Used for commands that run through the shell.
std::string command_on_box(const char* command);

#endif
