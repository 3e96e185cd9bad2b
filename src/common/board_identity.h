#ifndef OLED_COMMON_BOARD_IDENTITY_H
#define OLED_COMMON_BOARD_IDENTITY_H

#include <string>

// Size of the board identifier buffer (hw_info) including its zero byte.
const int kBoardIdSize = 128;

// Fills str (kBoardIdSize bytes) with the "board" member of
// /version/hardware_info; prints the identifier as a line.
void get_hw_version(char* str);

// 1 when json is an object holding key (whatever its type), else 0. A
// string member is copied into out, which holds kBoardIdSize bytes; longer
// texts are cut there.
int GetJsonValue(const char* json, const char* key, char* out);

// Text-search reader of the same file, kept for other programs.
void ReadHardwareInfo(std::string& result, bool media);

#endif
