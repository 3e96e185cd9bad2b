#ifndef OLED_COMMON_DURABLE_FILE_H
#define OLED_COMMON_DURABLE_FILE_H

#include <string>

// Replaces the file at path (appliance path) with bytes so that a power cut
// leaves either the old or the new content, never a torn file: temporary
// file in the same folder, fsync, rename, fsync of the folder. When the
// folder cannot take a temporary file the file is rewritten in place.
// Returns false when neither way could write the file.
bool write_file_durably(const char* path, const std::string& bytes);

// True when the file at path holds exactly bytes (no rewrite needed).
bool file_holds(const char* path, const std::string& bytes);

#endif
