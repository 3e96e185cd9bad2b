#ifndef OLED_READSYS_FILE_COMMAND_H
#define OLED_READSYS_FILE_COMMAND_H

#include <cstddef>
#include <string>

// A command that only prints (part of) one file: "cat F", "cat F | grep X",
// "cat F | grep -w X" or "cat F | awk '/X/'", with X a plain word (no
// pattern characters), so that a literal search selects exactly the lines
// the tool would.
struct FileCommand {
    enum Filter { all_lines, grep_text, grep_word, awk_text };
    std::string path;  // appliance path
    Filter filter;
    std::string pattern;
};

// True when command has one of the forms above; fills command_out.
bool parse_file_command(const char* command, FileCommand& command_out);

// Whether the tool of the command prints this whole line (without its
// newline; it may hold NUL bytes, hence the length).
bool line_selected(const FileCommand& command, const char* line, size_t length);

#endif
