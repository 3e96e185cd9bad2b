#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "capture_stdout.h"
#include "network_info.h"

namespace {

typedef NetworkInfo N;

// The item, or "<false>"; a failed lookup must leave the buffer alone.
std::string item(const char* ifname, N::IF_CONFIG which)
{
    char out[N::kAllItemsSize] = "untouched";
    if (!NetworkInfo().GetNetworkInfo(ifname, which, out)) {
        EXPECT_STREQ(out, "untouched");
        return "<false>";
    }
    return out;
}

}  // namespace

TEST(GetNetworkInfo, GivesEachItemOfAnInterfaceAndTheAllLine)
{
    EXPECT_EQ(item("lo", N::IF_ADDR), "127.0.0.1");
    EXPECT_EQ(item("lo", N::IF_NETMASK), "255.0.0.0");
    EXPECT_EQ(item("lo", N::IF_HWADDR), "00:00:00:00:00:00");
    EXPECT_EQ(item("lo", N::IF_ALL),
              "mac:00:00:00:00:00:00@ip:127.0.0.1@mask:255.0.0.0@braod:" + item("lo", N::IF_BRDADDR));
    EXPECT_EQ(item("lo", static_cast<N::IF_CONFIG>(0x8916)), "<false>");

    // A missing interface fails every item but the empty all line.
    CaptureStdout out;
    CaptureStdout err(STDERR_FILENO);
    for (const char* name : {"nosuch0", "lo0", "l", "", static_cast<const char*>(nullptr)}) {
        for (N::IF_CONFIG which : {N::IF_ADDR, N::IF_BRDADDR, N::IF_NETMASK, N::IF_HWADDR}) {
            EXPECT_EQ(item(name, which), "<false>") << (name ? name : "null") << " " << which;
        }
        EXPECT_EQ(item(name, N::IF_ALL), "mac:@ip:@mask:@braod:");
    }
    EXPECT_EQ(err.text() + out.text(), "");  // an answer, not a failure
}
