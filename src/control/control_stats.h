#ifndef OLED_CONTROL_CONTROL_STATS_H
#define OLED_CONTROL_CONTROL_STATS_H

#include <string>

// What the control server took and refused since the daemon started, for
// the operators' side: a "replystats" query answers them. Counted and read
// on the control server's thread alone, so plain numbers do; a count wraps
// at 2^32 as Prometheus counters expect a reset to look.
struct ControlStats {
    unsigned long datagrams_received = 0;
    unsigned long changes_applied = 0;  // items that set or switched something
    unsigned long items_bad_value = 0;
    unsigned long items_unknown_key = 0;
    unsigned long aimed_elsewhere = 0;  // datagrams for another box
    unsigned long not_signed = 0;
    unsigned long wrong_mac = 0;
    unsigned long old_counter = 0;  // not above the last accepted, or not a counter
    unsigned long unusable_key_or_counter = 0;
    unsigned long replies_sent = 0;
    unsigned long reply_bytes_sent = 0;
    unsigned long held_per_destination = 0;
    unsigned long held_whole_box = 0;
    unsigned long held_refused_destination = 0;
    unsigned long bytes_held_per_destination = 0;
    unsigned long bytes_held_whole_box = 0;
    unsigned long counter_saves = 0;
};

// The reply to "replystats": a "[oledstats]" line, then one key=value a
// line, settings_saves and the start time (Unix seconds) included.
std::string stats_reply(const ControlStats& stats, unsigned long settings_saves, long long started);

#endif
