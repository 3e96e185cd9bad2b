#include "pin_text.h"

#include <ctype.h>
#include <limits.h>
#include <stdlib.h>

namespace {

// A number as str2int reads one: a leading digit, or '-' and a digit,
// else -1; past the int range, its end. Kept here, apart from the file
// helpers, so the operators' tool can read pins without the box's files.
int number_of(const std::string& text)
{
    const char* s = text.c_str();
    if (!isdigit(static_cast<unsigned char>(s[0])) && !(s[0] == '-' && isdigit(static_cast<unsigned char>(s[1])))) {
        return -1;
    }
    const long value = strtol(s, nullptr, 10);
    return value > INT_MAX ? INT_MAX : value < INT_MIN ? INT_MIN : static_cast<int>(value);
}

}  // namespace

bool read_pin_text(const std::string& text, int& group, int& bit)
{
    const std::string::size_type bar = text.find('_');
    if (bar == std::string::npos) {
        return false;
    }
    const std::string::size_type end = text.find('_', bar + 1);
    group = bar == 0 ? -1 : number_of(text.substr(0, bar));
    bit = number_of(text.substr(bar + 1, end == std::string::npos ? std::string::npos : end - bar - 1));
    return true;
}
