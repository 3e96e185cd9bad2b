#include "number_format.h"

#include <sstream>

namespace {

// The first white-space-delimited word of text.
std::string first_word(const std::string& text)
{
    std::istringstream in(text);
    std::string word;
    in >> word;
    return word;
}

}  // namespace

std::string itos(int n)
{
    std::ostringstream out;
    out << n;
    return first_word(out.str());
}

std::string ftos(float f)
{
    std::ostringstream out;
    out << static_cast<double>(f);
    return first_word(out.str());
}

int strtoint(std::string s)
{
    std::istringstream in(s);
    int value = 0;
    in >> value;
    return value;
}

float stof(std::string s)
{
    std::istringstream in(s);
    float value = 0.0f;
    in >> value;
    return value;
}

void blank_non_digits(std::string& text)
{
    for (std::string::size_type i = 0; i < text.size(); ++i) {
        if (text[i] < '0' || text[i] > '9') {
            text[i] = ' ';
        }
    }
}
