#ifndef OLED_READSYS_NUMBER_FORMAT_H
#define OLED_READSYS_NUMBER_FORMAT_H

#include <string>

// Conversions between numbers and display texts, through string streams in
// the classic locale.

// Decimal text of n: 0 gives "0", -12 gives "-12".
std::string itos(int n);
// Six significant digits, %g style: 0.5f gives "0.5", 1000000.0f "1e+06".
std::string ftos(float f);
// The int at the front of s after white space; 0 when there is none
// (empty or blank text included); out-of-range values clamp.
int strtoint(std::string s);
// The same for a float: "45 5" gives 45.
float stof(std::string s);

// Every character that is not a decimal digit becomes a blank, the
// newline included: "45.5\n" gives "45 5 ".
void blank_non_digits(std::string& text);

#endif
