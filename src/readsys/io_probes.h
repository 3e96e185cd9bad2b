#ifndef OLED_READSYS_IO_PROBES_H
#define OLED_READSYS_IO_PROBES_H

#include <string>

// Switching I/O and relay states kept in /data/remserial.ini, as digits:
// I/O 0 to 3 and relay 0 ("5" on, "0" off), and I/O 4 to 7 and relay 1.
// A key without its line shows as the key's name.
std::string CheckIOFile();
std::string CheckIO1File();

#endif
