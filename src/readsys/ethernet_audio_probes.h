#ifndef OLED_READSYS_ETHERNET_AUDIO_PROBES_H
#define OLED_READSYS_ETHERNET_AUDIO_PROBES_H

#include <string>

// "ETH_SPEED:" + the speed with non-digits blanked ("1000 "), or
// "ETH_SPEED:NO LINK" for 10 (a real 10 Mbit/s link included, on purpose).
std::string CheckEthspeedFile();
// "AIOSR:" + the sample rate of the audio input's first device, "NO_AI"
// when that column holds no number, "AIOSR:" without the section, and "AI
// DEV ATTR" when the page cannot be read. Throws std::out_of_range when a
// short row leaves an old digit under the column: callers go through
// probe_text.
std::string CheckAiFile();

#endif
