#include "program_command.h"

#include <cstring>

namespace {

bool plain_word(const std::string& word)
{
    for (char c : word) {
        const bool letter_or_digit = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (!letter_or_digit && strchr("_./:,+%@-", c) == nullptr) {
            return false;
        }
    }
    return !word.empty();
}

// Words the shell reads as its own syntax or built-in commands that have
// no program of the same name: as a first word they are no program call.
bool shell_word(const std::string& word)
{
    static const char* const kWords[] = {
        "case",   "do",     "done",  "elif",   "else",     "esac",  "fi",   "for",     "if",      "in",      "then",
        "until",  "while",  "break", ":",      "continue", ".",     "eval", "exec",    "exit",    "export",  "readonly",
        "return", "set",    "shift", "times",  "trap",     "unset", "cd",   "alias",   "unalias", "command", "read",
        "wait",   "ulimit", "umask", "source", "local",    "type",  "hash", "getopts", "fg",      "bg",      "jobs"};
    for (const char* known : kWords) {
        if (word == known) {
            return true;
        }
    }
    return false;
}

}  // namespace

bool parse_program_command(const char* command, ProgramCommand& command_out)
{
    std::string text(command);
    // One newline ends the command; any other would start a second one.
    while (!text.empty() && strchr(" \t\n", text[text.size() - 1]) != nullptr) {
        text.erase(text.size() - 1);
    }
    if (text.find('\n') != std::string::npos) {
        return false;
    }
    std::vector<std::string> words;
    std::string::size_type at = 0;
    while ((at = text.find_first_not_of(" \t", at)) != std::string::npos) {
        const std::string::size_type end = text.find_first_of(" \t", at);
        words.push_back(text.substr(at, end - at));
        at = end;
    }
    ProgramCommand parsed;
    if (words.size() >= 2 && words[words.size() - 2] == ">") {
        parsed.output = words.back();
        words.resize(words.size() - 2);
        if (!plain_word(parsed.output)) {
            return false;
        }
    }
    if (words.empty() || shell_word(words[0])) {
        return false;
    }
    for (const std::string& word : words) {
        if (!plain_word(word)) {
            return false;
        }
    }
    parsed.words = words;
    command_out = parsed;
    return true;
}
