#ifndef OLED_CONTROL_CONTROL_KEYS_H
#define OLED_CONTROL_CONTROL_KEYS_H

#include <stddef.h>

#include <string>

// The keys of the control protocol, what each sets and the values it
// takes: the box checks every item against this table, and the operators'
// tool builds and checks its items from it too, so the two cannot drift.
enum class ControlValueKind { Integer, Text, Pin };

enum class ControlEffect {
    Marker,      // "controlled": aims the datagram at one box
    StoreOnly,   // stored; read at the next start
    Switch,      // stored, and a run-time switch follows it (value != 0)
    CustomText,  // stored and shown as the custom line
    SleepTime,   // stored and made the page time
    LedTest,     // LED test mode; not stored
    Reply,       // sends the settings file
    Stats        // sends the control server's counts to the sender
};

struct ControlKey {
    const char* key;
    ControlEffect effect;
    ControlValueKind kind;
    long min;  // integer range; for text the length range
    long max;
    const char* setting;  // the settings file key it is stored under, or ""
    const char* meaning;
};

// In the order the box tries them.
extern const ControlKey kControlKeys[];
extern const size_t kControlKeyCount;

const ControlKey* find_control_key(const std::string& key);

// Why value is refused for key's kind and limits, as one line that names
// the key; "" when it is fine. Pins are checked for their form only: which
// pins a box takes is the box's own business.
std::string control_value_problem(const ControlKey& key, const std::string& value);

// A value as it may be shown in a message: printable ASCII, others as
// \xNN, so that an echo cannot reach a terminal raw; cut after most
// characters.
std::string shown_value(const std::string& value, size_t most = 24);

// Whether text is GROUP_BIT within the SoC's groups and bits; the pin goes
// to group and bit.
bool parse_pin(const std::string& text, int& group, int& bit);

#endif
