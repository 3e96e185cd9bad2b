#include "file_command.h"

#include <cstring>

namespace {

bool starts_with(const std::string& text, const char* prefix)
{
    return text.compare(0, strlen(prefix), prefix) == 0;
}

// Characters that make grep or awk read a pattern as more than a word.
bool plain_word(const std::string& word)
{
    return !word.empty() && word[0] != '-' && word.find_first_of(" \t'\"\\.[]*^$+?(){}|/") == std::string::npos;
}

// grep -w's word constituents in the C locale.
bool word_character(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

const char* find_bytes(const char* from, const char* end, const std::string& what)
{
    if (what.empty() || static_cast<size_t>(end - from) < what.size()) {
        return nullptr;
    }
    const char* last = end - what.size();
    for (const char* at = from; at <= last; ++at) {
        if (*at == what[0] && memcmp(at, what.data(), what.size()) == 0) {
            return at;
        }
    }
    return nullptr;
}

bool parse_filter(const std::string& rest, FileCommand& command)
{
    if (rest.empty()) {
        command.filter = FileCommand::all_lines;
        return true;
    }
    if (starts_with(rest, " | grep -w ")) {
        command.filter = FileCommand::grep_word;
        command.pattern = rest.substr(strlen(" | grep -w "));
    } else if (starts_with(rest, " | grep ")) {
        command.filter = FileCommand::grep_text;
        command.pattern = rest.substr(strlen(" | grep "));
    } else if (starts_with(rest, " | awk '/") && rest.size() > strlen(" | awk '/") + 2 &&
               rest.compare(rest.size() - 2, 2, "/'") == 0) {
        command.filter = FileCommand::awk_text;
        command.pattern = rest.substr(strlen(" | awk '/"), rest.size() - strlen(" | awk '/") - 2);
    } else {
        return false;
    }
    return plain_word(command.pattern);
}

}  // namespace

bool parse_file_command(const char* command, FileCommand& command_out)
{
    const std::string text(command);
    if (!starts_with(text, "cat /")) {
        return false;
    }
    const std::string::size_type path_end = text.find(' ', 4);
    FileCommand parsed;
    parsed.path = text.substr(4, path_end - 4);
    if (parsed.path.find_first_of("'\"\\$*?[;&|<>`") != std::string::npos ||
        !parse_filter(path_end == std::string::npos ? std::string() : text.substr(path_end), parsed)) {
        return false;
    }
    command_out = parsed;
    return true;
}

bool line_selected(const FileCommand& command, const char* line, size_t length)
{
    const char* end = line + length;
    const std::string& word = command.pattern;
    switch (command.filter) {
        case FileCommand::all_lines:
            return true;
        case FileCommand::grep_text:
        case FileCommand::awk_text:
            return find_bytes(line, end, word) != nullptr;
        case FileCommand::grep_word:
            // grep -w tries every occurrence, not only the first.
            for (const char* at = find_bytes(line, end, word); at != nullptr; at = find_bytes(at + 1, end, word)) {
                const char* after = at + word.size();
                if ((at == line || !word_character(at[-1])) && (after == end || !word_character(*after))) {
                    return true;
                }
            }
            return false;
    }
    return false;
}
