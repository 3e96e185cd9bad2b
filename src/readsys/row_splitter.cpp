#include "row_splitter.h"

std::vector<RowWord> split_row(const std::string& row)
{
    std::vector<RowWord> words;
    std::string::size_type index = 0;
    while (index < row.size()) {
        if (row[index] == ' ') {
            ++index;
            continue;
        }
        const std::string::size_type blank = row.find(' ', index);
        const std::string::size_type end = blank == std::string::npos ? row.size() : blank;
        RowWord word;
        word.start = index;
        word.text = row.substr(index, end - index);
        words.push_back(word);
        index = end;
    }
    return words;
}

std::string row_word(const std::vector<RowWord>& words, size_t number)
{
    return number >= 1 && number <= words.size() ? words[number - 1].text : std::string();
}
