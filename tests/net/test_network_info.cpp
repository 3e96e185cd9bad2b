#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "capture_stdout.h"
#include "network_info.h"

namespace {

typedef NetworkInfo N;

// The item as text, or "<false>" when the lookup fails; the buffer is
// pre-filled so that a failed lookup can be seen to leave it alone.
std::string item(const char* ifname, N::IF_CONFIG which)
{
    NetworkInfo info;
    char out[N::kAllItemsSize];
    memset(out, 'u', sizeof(out));
    out[sizeof(out) - 1] = '\0';
    const std::string untouched(out);
    if (!info.GetNetworkInfo(ifname, which, out)) {
        EXPECT_EQ(std::string(out), untouched) << "a failed lookup wrote its output";
        return "<false>";
    }
    return out;
}

}  // namespace

TEST(GetNetworkInfo, LoopbackGivesEachItemAndTheAllLine)
{
    EXPECT_EQ(item("lo", N::IF_ADDR), "127.0.0.1");
    EXPECT_EQ(item("lo", N::IF_NETMASK), "255.0.0.0");
    EXPECT_EQ(item("lo", N::IF_HWADDR), "00:00:00:00:00:00");
    const std::string broadcast = item("lo", N::IF_BRDADDR);
    EXPECT_EQ(item("lo", N::IF_ALL), "mac:00:00:00:00:00:00@ip:127.0.0.1@mask:255.0.0.0@braod:" + broadcast);
}

TEST(GetNetworkInfo, MissingInterfaceFailsEveryItemButTheEmptyAllLine)
{
    CaptureStdout out;
    CaptureStdout err(STDERR_FILENO);
    for (const char* name : {"nosuch0", "lo0", "l", ""}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(item(name, N::IF_ADDR), "<false>");
        EXPECT_EQ(item(name, N::IF_BRDADDR), "<false>");
        EXPECT_EQ(item(name, N::IF_NETMASK), "<false>");
        EXPECT_EQ(item(name, N::IF_HWADDR), "<false>");
        EXPECT_EQ(item(name, N::IF_ALL), "mac:@ip:@mask:@braod:");
    }
    EXPECT_EQ(item(nullptr, N::IF_ALL), "mac:@ip:@mask:@braod:");
    EXPECT_EQ(item("lo", static_cast<N::IF_CONFIG>(0x8916)), "<false>");
    NetworkInfo info;
    EXPECT_FALSE(info.GetNetworkInfo("lo", N::IF_ADDR, nullptr));
    // A missing interface is an answer, not a failure: nothing is reported.
    EXPECT_EQ(err.text(), "");
    EXPECT_EQ(out.text(), "");
}
