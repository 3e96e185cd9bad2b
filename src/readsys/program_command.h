#ifndef OLED_READSYS_PROGRAM_COMMAND_H
#define OLED_READSYS_PROGRAM_COMMAND_H

#include <string>
#include <vector>

// A command that is one plain program call: words of letters, digits and
// "_./:,+%@-" only, so that the shell would neither expand, quote nor join
// anything ("iostat -c"); at most one "> FILE" at the end; blanks and a
// final newline around ("./get_temperature > /tmp/temperature \n").
// Started directly it does what the shell would do with it.
struct ProgramCommand {
    std::vector<std::string> words;  // the program and its arguments
    std::string output;              // appliance path after ">"; empty: not redirected
};

// True when command has the form above; fills command_out.
bool parse_program_command(const char* command, ProgramCommand& command_out);

#endif
