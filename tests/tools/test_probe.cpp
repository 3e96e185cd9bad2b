#include <gtest/gtest.h>

#include "probe.h"

namespace {

TEST(Probe, TargetIsOneUnicastBoxAddress)
{
    for (const char* fine : {"10.1.0.5", "192.168.1.255", "223.255.255.254", "1.0.0.0"}) {
        EXPECT_EQ(probe::check_target(fine), "") << fine;
    }
    EXPECT_EQ(probe::check_target("224.168.1.1"), "target '224.168.1.1': a multicast group; a probe asks one box");
    EXPECT_EQ(probe::check_target("10.1.0.5:16124"),
              "target '10.1.0.5:16124': not a dotted IPv4 address such as 10.1.0.5");
    EXPECT_EQ(probe::check_target("x\ny" + std::string(50, 'z')),
              "target 'x?y" + std::string(37, 'z') + "...': not a dotted IPv4 address such as 10.1.0.5");
    for (const char* refused : {"127.0.0.1", "0.0.0.0", "0.1.2.3", "239.255.255.255", "240.0.0.1", "255.255.255.255",
                                "010.1.0.5", "10.1.0", "", "box7", " 10.1.0.5"}) {
        EXPECT_EQ(probe::check_target(refused).compare(0, 7, "target "), 0) << refused;
    }
}

TEST(Probe, WaitFollowsTheScrapeTimeoutWithinTheCap)
{
    const std::vector<std::pair<std::string, double>> waits = {
        {"", 10.0}, {"10", 9.5}, {"20", 10.0}, {"1", 0.9}, {"0.5", 0.45}};
    for (const auto& wait : waits) {
        double seconds = -1;
        EXPECT_EQ(probe::wait_seconds(wait.first, 10.0, seconds), "") << wait.first;
        EXPECT_DOUBLE_EQ(seconds, wait.second) << wait.first;
    }
    double seconds = 0;
    EXPECT_EQ(probe::wait_seconds("1s", 2.0, seconds),
              "X-Prometheus-Scrape-Timeout-Seconds '1s': not a number of seconds");
    for (const char* bad : {"0", "-1", "nan", "inf", " "})
        EXPECT_NE(probe::wait_seconds(bad, 2.0, seconds), "") << bad;
}

TEST(Probe, BadRequestsAreRefusedWithOneLine)
{
    const fleet::Network network{16124, "", 2.0, {}, {}};
    const std::vector<std::pair<fleet::Reply, std::string>> refused = {
        {probe::answer({}, "", network), "give the box to probe as /probe?target=ADDRESS\n"},
        {probe::answer({"10.0.0.5", "10.0.0.6"}, "", network), "one target per probe, not 2\n"},
        {probe::answer({"10.0.0.5"}, "soon", network),
         "X-Prometheus-Scrape-Timeout-Seconds 'soon': not a number of seconds\n"},
    };
    for (const auto& reply : refused) {
        EXPECT_EQ(reply.first.status, 400);
        EXPECT_EQ(reply.first.body, reply.second);
    }
}

}  // namespace
