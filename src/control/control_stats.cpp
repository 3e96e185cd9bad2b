#include "control_stats.h"

#include <stdio.h>

namespace {

void line(std::string& text, const char* key, unsigned long long value)
{
    char number[24];
    snprintf(number, sizeof(number), "%llu", value);
    text += key;
    text += '=';
    text += number;
    text += '\n';
}

}  // namespace

std::string stats_reply(const ControlStats& stats, unsigned long settings_saves, long long started)
{
    std::string text = "[oledstats]\nversion=" OLEDD_VERSION "\n";
    line(text, "start_time", static_cast<unsigned long long>(started));
    line(text, "datagrams_received", stats.datagrams_received);
    line(text, "changes_applied", stats.changes_applied);
    line(text, "items_refused_bad_value", stats.items_bad_value);
    line(text, "items_refused_unknown_key", stats.items_unknown_key);
    line(text, "items_refused_aimed_elsewhere", stats.aimed_elsewhere);
    line(text, "datagrams_refused_not_signed", stats.not_signed);
    line(text, "datagrams_refused_wrong_mac", stats.wrong_mac);
    line(text, "datagrams_refused_old_counter", stats.old_counter);
    line(text, "datagrams_refused_unusable_key_or_counter", stats.unusable_key_or_counter);
    line(text, "replies_sent", stats.replies_sent);
    line(text, "reply_bytes_sent", stats.reply_bytes_sent);
    line(text, "replies_held_per_destination", stats.held_per_destination);
    line(text, "replies_held_whole_box", stats.held_whole_box);
    line(text, "replies_held_refused_destination", stats.held_refused_destination);
    line(text, "reply_bytes_held_per_destination", stats.bytes_held_per_destination);
    line(text, "reply_bytes_held_whole_box", stats.bytes_held_whole_box);
    line(text, "settings_saves", settings_saves);
    line(text, "counter_saves", stats.counter_saves);
    return text;
}
