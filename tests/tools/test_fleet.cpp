#include <gtest/gtest.h>

#include "fleet_api.h"
#include "fleet_guard.h"
#include "fleet_roster.h"
#include "metrics.h"
#include "subnets.h"

namespace {

TEST(FleetGuard, TokenHostOriginAndListenAddressAreChecked)
{
    const std::string token = fleet::new_token();
    ASSERT_EQ(token.size(), 32u);
    EXPECT_EQ(token.find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_NE(fleet::new_token(), token);
    EXPECT_TRUE(fleet::same_token(token, token));
    const std::string last_wrong = token.substr(0, 31) + (token.back() == '0' ? "1" : "0");
    for (const std::string& guess : {last_wrong, token.substr(0, 31), token + "0", std::string()}) {
        EXPECT_FALSE(fleet::same_token(guess, token)) << guess;
    }
    EXPECT_FALSE(fleet::same_token("", ""));  // no token was made: nobody gets in

    // Only addresses and localhost name the server.
    for (const char* host : {"127.0.0.1:16180", "localhost:16180", "localhost", "10.0.0.100:80", "127.0.0.1"}) {
        EXPECT_TRUE(fleet::host_allowed(host)) << host;
    }
    for (const char* host : {"evil.example:16180", "127.0.0.1.nip.io:16180", "localhost:99999",
                             "localhost:", "127.0.0.1:16180:1", "[::1]:16180", ""}) {
        EXPECT_FALSE(fleet::host_allowed(host)) << host;
    }
    EXPECT_TRUE(fleet::origin_allowed("", "127.0.0.1:16180"));
    EXPECT_TRUE(fleet::origin_allowed("http://127.0.0.1:16180", "127.0.0.1:16180"));
    EXPECT_FALSE(fleet::origin_allowed("http://evil.example", "127.0.0.1:16180"));
    EXPECT_FALSE(fleet::origin_allowed("null", "127.0.0.1:16180"));

    // The listen address is IPv4 with an optional port.
    std::string address;
    int port = 0;
    EXPECT_EQ(fleet::parse_listen("127.0.0.1", address, port), "");
    EXPECT_EQ(std::make_pair(address, port), std::make_pair(std::string("127.0.0.1"), 16180));
    EXPECT_EQ(fleet::parse_listen("0.0.0.0:8080", address, port), "");
    EXPECT_EQ(std::make_pair(address, port), std::make_pair(std::string("0.0.0.0"), 8080));
    EXPECT_EQ(fleet::parse_listen("localhost:80", address, port),
              "bad listen address 'localhost:80': expected IPv4[:PORT]");
    EXPECT_EQ(fleet::parse_listen("1.2.3.4:0", address, port), "bad listen port in '1.2.3.4:0': expected 1..65535");
    EXPECT_TRUE(fleet::is_loopback("127.1.2.3"));
    EXPECT_FALSE(fleet::is_loopback("10.127.0.1"));
}

TEST(FleetApi, ChangeRequestsAreCheckedAsOledctlSetChecksItems)
{
    std::vector<std::string> boxes;
    std::vector<std::string> items;
    EXPECT_EQ(fleet::read_change(R"({"boxes": ["10.0.0.5", "10.0.0.6"], "items": ["cpu=0", "sleep=5"]})", boxes, items),
              "");
    EXPECT_EQ(boxes, (std::vector<std::string>{"10.0.0.5", "10.0.0.6"}));
    EXPECT_EQ(items, (std::vector<std::string>{"cpu=0", "sleep=5"}));

    const std::vector<std::pair<std::string, std::string>> refused = {
        {R"({"boxes": ["10.0.0.5"], "items": ["cpu=1", "pwr_led=25_9"]})", protocol::check_item("pwr_led=25_9")},
        {R"({"boxes": ["10.0.0.5"], "items": [1]})", "items: '1' is not a KEY=VALUE text"},
        {R"({"boxes": ["10.0.0.5"]})", "items: a list of KEY=VALUE is needed"},
        {R"({"boxes": ["box"], "items": ["cpu=0"]})", "boxes: '\"box\"' is not a dotted IPv4 address"},
        {R"({"boxes": "10.0.0.5", "items": ["cpu=0"]})", "boxes: a list of box addresses is needed"},
        {"cpu=0", "the request is not a JSON object"},
    };
    for (const auto& c : refused) {
        std::vector<std::string> b;
        std::vector<std::string> i;
        EXPECT_EQ(fleet::read_change(c.first, b, i), c.second) << c.first;
    }

    std::string body = R"({"boxes": ["10.0.0.5"], "items": [)";
    for (int i = 0; i < 60; ++i)
        body += std::string(i ? "," : "") + "\"oled_string=12345678901234567890\"";
    items.clear();
    EXPECT_EQ(fleet::read_change(body + "]}", boxes, items), "datagram of 1979 bytes; a box reads at most 1024");

    bool on = false;
    boxes.clear();
    EXPECT_EQ(fleet::read_led_test(R"({"boxes": ["10.0.0.5"], "on": true})", boxes, on), "");
    EXPECT_TRUE(on);
    EXPECT_EQ(fleet::read_led_test(R"({"boxes": ["10.0.0.5"], "on": 1})", boxes, on), "on: true or false is needed");
}

TEST(FleetRoster, BoxesThatStopAnsweringStayWithTheirLastSettings)
{
    fleet::Roster roster;
    roster.answered("10.0.0.10", {{"OLed_a_cpu", "1"}}, 100);
    roster.answered("10.0.0.9", {{"OLed_a_cpu", "0"}}, 100);
    roster.answered("10.0.0.10", {{"OLed_a_cpu", "0"}}, 160);
    roster.silent("10.0.0.77");  // never heard of: not listed
    roster.silent_except({"10.0.0.9"});
    const std::vector<fleet::BoxState> boxes = roster.boxes();
    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_EQ(boxes[0].address, "10.0.0.9");
    EXPECT_TRUE(boxes[0].answering);
    EXPECT_EQ(boxes[1].address, "10.0.0.10");
    EXPECT_FALSE(boxes[1].answering);
    EXPECT_EQ(boxes[1].last_answer, 160);
    EXPECT_EQ(boxes[1].settings, (protocol::Settings{{"OLed_a_cpu", "0"}}));

    roster.silent("10.0.0.9");
    fleet::BoxState box;
    ASSERT_TRUE(roster.find("10.0.0.9", box));
    EXPECT_FALSE(box.answering);
    EXPECT_FALSE(roster.find("10.0.0.77", box));
}

TEST(FleetRoster, ForgedAnswersNeitherGrowTheRosterNorItsTexts)
{
    fleet::Roster roster;
    const protocol::Settings forged = {{"OLed_a_small_n_buf", std::string(2048, 'x')}, {"OLed_a_cpu", "1"}};
    for (std::uint32_t i = 0; i < 10000; ++i)
        roster.answered(subnets::dotted(0x0a000000 + i), forged, 100);
    EXPECT_EQ(roster.boxes().size(), 4096u);
    fleet::BoxState box;  // the boxes that answer keep their places
    EXPECT_TRUE(roster.find("10.0.0.0", box) && !roster.find("10.0.39.15", box));
    EXPECT_NE(metrics::exposition(roster.boxes()).find("custom_text=\"" + std::string(20, 'x') + "\""),
              std::string::npos);

    // Once the forged boxes fall silent, the oldest gives its place to a box that answers.
    roster.answered("10.0.0.1", forged, 50);
    roster.silent_except({});
    roster.answered("10.200.0.1", protocol::Settings(1000, {"OLed_a_cpu", "12345678901234567890"}), 200);
    EXPECT_FALSE(roster.find("10.0.0.1", box));
    ASSERT_TRUE(roster.find("10.200.0.1", box));
    EXPECT_EQ(roster.boxes().size(), 4096u);
    std::size_t kept = 0;  // as lines of the settings file
    for (const auto& pair : box.settings)
        kept += pair.first.size() + 1 + pair.second.size() + 1;
    EXPECT_TRUE(kept <= 2048 && kept > 2048 - 32) << kept;
}

}  // namespace
