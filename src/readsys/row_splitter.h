#ifndef OLED_READSYS_ROW_SPLITTER_H
#define OLED_READSYS_ROW_SPLITTER_H

#include <string>
#include <vector>

// One word of a status-page row and where it starts in the row.
struct RowWord {
    std::string::size_type start;
    std::string text;
};

// Words of a fixed-width status-page row, numbered from 1 by the callers
// (index 0 here). Only the blank (32) separates words: a tab, or the
// newline at the end of the last word, belongs to the word.
std::vector<RowWord> split_row(const std::string& row);

// Text of word `number` (counted from 1), or "" when the row is shorter.
std::string row_word(const std::vector<RowWord>& words, size_t number);

#endif
