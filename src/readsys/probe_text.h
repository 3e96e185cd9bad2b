#ifndef OLED_READSYS_PROBE_TEXT_H
#define OLED_READSYS_PROBE_TEXT_H

#include <string>

// The loops call every probe through this: a probe that throws (a missing
// or odd status page) counts as a failed probe, an empty text, for that
// pass, and the daemon goes on.
std::string probe_text(std::string (*probe)());

#endif
