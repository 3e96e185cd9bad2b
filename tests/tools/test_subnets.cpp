#include <gtest/gtest.h>

#include "subnets.h"

namespace {

std::vector<std::string> parsed(const std::string& text)
{
    std::vector<std::uint32_t> addresses;
    const std::string error = subnets::parse(text, addresses);
    std::vector<std::string> out;
    for (std::uint32_t address : addresses)
        out.push_back(subnets::dotted(address));
    return error.empty() ? out : std::vector<std::string>{"refused: " + error};
}

TEST(Subnets, HostAddressesOnceEachUpToTheLimit)
{
    EXPECT_EQ(parsed("10.1.0.0/30"), (std::vector<std::string>{"10.1.0.1", "10.1.0.2"}));
    EXPECT_EQ(parsed("10.1.0.4/31,10.1.0.9/32,10.1.0.0/30,10.1.0.5/32"),
              (std::vector<std::string>{"10.1.0.4", "10.1.0.5", "10.1.0.9", "10.1.0.1", "10.1.0.2"}));
    const std::vector<std::string> twenty = parsed("10.0.0.0/20,10.0.16.1/32,10.0.16.2/32");
    ASSERT_EQ(twenty.size(), 4096u);
    EXPECT_EQ(twenty.front(), "10.0.0.1");
    EXPECT_EQ(twenty[4093], "10.0.15.254");
}

TEST(Subnets, RefusesWhatCannotBeMeantWithAReason)
{
    const std::vector<std::pair<std::string, std::string>> refused = {
        {"10.0.0.0/33", "subnet '10.0.0.0/33': prefix '33' is not 0..32"},
        {"10.0.0.0/8", "subnet '10.0.0.0/8': 16777214 addresses; at most 4096 can be asked in one round (a /20)"},
        {"box7/24", "subnet 'box7/24': 'box7' is not a dotted IPv4 address"},
        {"10.0.1.5/24", "subnet '10.0.1.5/24': host bits set; the subnet is 10.0.1.0/24"},
        {"10.0.0.0/20,10.0.16.0/29",
         "subnets '10.0.0.0/20,10.0.16.0/29': more than 4096 addresses together; at most that many can be asked in one "
         "round"},
        {"10.0.0.5", "subnet '10.0.0.5': expected ADDRESS/PREFIX such as 10.1.0.0/24"},
        {"10.0.0.0/24,", "subnets '10.0.0.0/24,': an empty entry in the list"},
        {"224.168.1.0/24", "subnet '224.168.1.0/24': not a unicast subnet"},
    };
    for (const auto& c : refused)
        EXPECT_EQ(parsed(c.first), std::vector<std::string>{"refused: " + c.second});
    for (const char* text : {"10.0.0.0/-1", "10.0.0.0/+24", "10.0.0.0/", "0.0.0.0/24", "10.0.0.0/24/1"}) {
        EXPECT_EQ(parsed(text).at(0).compare(0, 9, "refused: "), 0) << text;
    }
}

}  // namespace
