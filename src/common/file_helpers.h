#ifndef OLED_COMMON_FILE_HELPERS_H
#define OLED_COMMON_FILE_HELPERS_H

#include <string>
#include <vector>

// Text and file helpers shared by the whole daemon. Paths are appliance
// paths; the helpers resolve them through the path seam themselves.

// Whole file, or "null" when it cannot be opened. With strip, one trailing
// LF is removed.
std::string ReadSthFile(const char* path, bool strip);

// Appends the pieces of text between separators to list. No empty last
// piece after a trailing separator; the empty text gives nothing.
void SplitString(const std::string& text, std::vector<std::string>& list, const std::string& separator);

// Decimal integer at the front of text; -1 for empty or non-numeric text.
// Values beyond 32 bits clamp.
int str2int(const std::string& text);

long strtol_(const char* text, int base);
void HexStrToByte(const char* hex, unsigned char* out, int length);
int LinuxShell(const char* command, std::string& output);
void WriteSthFile(const char* path, const char* text);
std::string GetExePath();
std::string CurrentDir();
std::vector<std::string> getFiles(std::string dir);

#endif
