#include <gtest/gtest.h>

#include "protocol.h"

namespace {

TEST(Protocol, AcceptsWellFormedItemsAndRefusesOthersWithAReason)
{
    EXPECT_STREQ(protocol::find_command("sleep")->setting, "OLed_a_sleep_tim");
    EXPECT_STREQ(protocol::find_command("time")->setting, "OLed_a_start");
    EXPECT_EQ(protocol::find_command("Cpu"), nullptr);
    for (const char* item : {"cpu=0", "sda=4_2", "oled_string=a~b!c"}) {
        EXPECT_EQ(protocol::check_item(item), "") << item;
    }
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"bogus=1", "'bogus': unknown key (oledctl set --help lists the keys)"},
        {"cpu", "'cpu': expected KEY=VALUE"},
        {"cpu=", "cpu: empty value"},
        {"cpu=x", "cpu: 'x' is not a decimal integer"},
        {"sleep=0", "sleep: 0 is out of range 1..3600"},
        {"cpu=1|vi=0", "cpu: a value may not contain '|' or '='"},
        {"oled_string=a=b", "oled_string: a value may not contain '|' or '='"},
        {"oled_string=123456789012345678901", "oled_string: 21 characters, the panel shows at most 20"},
        {"oled_string=caf\xc3\xa9", "oled_string: only printable ASCII characters can be shown"},
        {"sda=4_8", "sda: '4_8' is not a pin: GROUP_BIT (group 0..24, bit 0..7) or 0 for none"},
        {"oled_string=uncontrolled", "oled_string: the word 'controlled' cannot be sent"},
        {"controlled=10.0.0.1", "controlled: use --box ADDR --via-group"},
        {"replyoled=10.0.0.1:9000", "replyoled: use 'oledctl get'"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(protocol::check_item(c.first), c.second) << c.first;
}

TEST(Protocol, DatagramJoinsItemsWithTheMarkerFirst)
{
    EXPECT_EQ(protocol::build_set({"cpu=0", "sleep=5"}, ""), "cpu=0|sleep=5");
    EXPECT_EQ(protocol::build_set({"cpu=0", "sleep=5"}, "192.168.1.20"), "controlled=192.168.1.20|cpu=0|sleep=5");
}

TEST(Protocol, ReplyReadsAsPairsInFileOrder)
{
    protocol::Settings settings;
    ASSERT_TRUE(
        protocol::parse_reply("[oled]\nOLed_a_cpu=0\nOLed_a_small_n_buf=A=B \r\n\nnoise\nkSwitch_gpio=", settings));
    const protocol::Settings expected = {{"OLed_a_cpu", "0"}, {"OLed_a_small_n_buf", "A=B "}, {"kSwitch_gpio", ""}};
    EXPECT_EQ(settings, expected);

    protocol::Settings empty;
    EXPECT_TRUE(protocol::parse_reply("[oled]\n", empty));  // the box could not read its file
    EXPECT_TRUE(empty.empty());
    EXPECT_FALSE(protocol::parse_reply("OLed_a_cpu=0\n", empty));
    EXPECT_FALSE(protocol::parse_reply("[oled]", empty));
    EXPECT_FALSE(protocol::parse_reply("", empty));
}

TEST(Protocol, AddressesAreDottedIpv4)
{
    EXPECT_TRUE(protocol::is_ipv4("192.168.1.20"));
    for (const char* bad : {"192.168.1", "192.168.1.256", "box", "", "1.2.3.4.5", "1.2.3.4 "}) {
        EXPECT_FALSE(protocol::is_ipv4(bad)) << bad;
    }
}

}  // namespace
