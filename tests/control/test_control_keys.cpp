#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "control_keys.h"

namespace {

struct Edges {
    std::vector<const char*> keys;
    std::vector<std::string> taken, refused;
};

}  // namespace

// The limits the box keeps, at their edges, as the operators were promised
// them: switches 0 or 1, sleep 1..3600, panel type 0..6, port 0..65535,
// at most 20 printable ASCII characters of custom text, pins as GROUP_BIT
// (group 0..24, bit 0..7) or 0.
TEST(ControlKeys, EveryKeyTakesItsLimitsAndNothingBeyond)
{
    const std::string twenty(20, '~');
    const std::vector<Edges> table = {
        {{"led_on", "oled_str_en", "cpu", "vi", "ai", "net", "time", "venc", "temp", "io", "logo"},
         {"0", "1"},
         {"-1", "2", "", "x", "1x", "+1", "99999999999999999999"}},
        {{"sleep"}, {"1", "3600"}, {"0", "-5", "3601", "4294967297"}},
        {{"oled_type"}, {"0", "6"}, {"-1", "7", "99"}},
        {{"port"}, {"0", "65535"}, {"-1", "65536"}},
        {{"test"}, {"0", "2147483647"}, {"-1", "2147483648"}},
        {{"oled_string"}, {"A", " ", twenty}, {twenty + "~", "A\x1b", "A\x7f", "\x07", "caf\xc3\xa9", "a\tb"}},
        {{"sda", "scl", "cs", "dc", "res", "sml_sda", "sml_scl", "vcc", "gnd", "pwr_led", "cpu_led", "eth_led",
          "hdmi_led"},
         {"0", "0_0", "24_7", "4_2"},
         {"25_0", "4_8", "4_", "_2", "4_2_1", "-1_2", "004_2", "4-2", "1", ""}},
    };
    size_t keys = 0;
    for (const Edges& edges : table) {
        for (const char* name : edges.keys) {
            const ControlKey* key = find_control_key(name);
            ASSERT_NE(key, nullptr) << name;
            ++keys;
            for (const std::string& value : edges.taken) {
                EXPECT_EQ(control_value_problem(*key, value), "") << name << "=" << value;
            }
            for (const std::string& value : edges.refused) {  // with a reason that names the key
                EXPECT_EQ(control_value_problem(*key, value).find(std::string(name) + ": "), 0u) << name << value;
            }
        }
    }
    // And the marker and the two queries, which carry no setting: every key.
    EXPECT_EQ(keys + 3, kControlKeyCount);
    EXPECT_EQ(find_control_key("Cpu"), nullptr);
}
