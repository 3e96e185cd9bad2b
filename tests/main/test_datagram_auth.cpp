#include <gtest/gtest.h>

#include <string>

#include "capture_stdout.h"
#include "datagram_auth.h"
#include "hmac_sha256.h"
#include "temp_root.h"

namespace {

// RFC 4231, test cases 1, 2, 6 and 7 (3 and 4 are like 1; 5 truncates the MAC).
TEST(DatagramAuth, MacIsTheRfc4231HmacSha256)
{
    const std::string big(131, '\xaa');
    const std::string cases[][3] = {
        {std::string(20, '\x0b'), "Hi There", "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7"},
        {"Jefe", "what do ya want for nothing?", "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843"},
        {big, "Test Using Larger Than Block-Size Key - Hash Key First",
         "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54"},
        {big, "This is a test using a larger than block-size key and a larger than block-size data. The key needs "
              "to be hashed before being used by the HMAC algorithm.",
         "9b09ffa71b942fcb27635fbcd5b0e944bfdc63644f0713938a7f51535c3a35e2"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(hmac_sha256_hex(c[0], c[1]), c[2]);
    }
}

std::string verdict(DatagramAuth& auth, std::string text)
{
    return auth.accept(take_signature(text));
}

// MACs of "cpu=0|auth=COUNTER" made by Python's hmac with the key below.
TEST(DatagramAuth, CounterIsOneTo2Pow63Minus1AndTheHighestAcceptedIsKept)
{
    CaptureStdout quiet;
    TempRoot root;
    root.write("/data/oled.key", "0123456789abcdef");
    DatagramAuth auth;
    auth.load();
    const std::string top = "cpu=0|auth=9223372036854775807:";
    const std::string mac = "6a5012c453e3727da4165ffa4c2fa920040722663e1000371efb2a162bfce044";
    EXPECT_EQ(verdict(auth, "cpu=0|auth=0:433d5185fff2b9f1ed7fe2831caa473e9426f20ea06a5adae1f22a2d85fa4b06"),
              "counter not a number from 1 to 2^63-1");
    EXPECT_EQ(verdict(auth, "cpu=0|auth=9223372036854775808:"
                            "5c4fc0f1b4116ec6074f3050c3f8c901fd0f7a3b67e0137f17f186ff0cfc2411"),
              "counter not a number from 1 to 2^63-1");
    EXPECT_EQ(verdict(auth, top + "6A5012C453E3727DA4165FFA4C2FA920040722663E1000371EFB2A162BFCE044"), "wrong MAC");
    EXPECT_EQ(verdict(auth, top + mac + "|vi=1"), "not signed");
    EXPECT_EQ(verdict(auth, top + mac), "");
    ASSERT_TRUE(auth.save());
    EXPECT_EQ(root.read("/data/oled.counter"), "9223372036854775807\n");
}

TEST(DatagramAuth, KeyOrCounterFileThatCannotServeRefusesEveryChange)
{
    const std::string key = "0123456789abcdef";
    const std::string cases[][3] = {
        // key ("/": a folder where the file should be), counter, what the box says
        {key.substr(1), "", "/data/oled.key: 15 bytes, a key has 16 to 1024: every change is refused"},
        {"/", "", "/data/oled.key: cannot be read (Is a directory)"},
        {key, "5x\n", "/data/oled.counter: not a counter"},
    };
    for (const auto& c : cases) {
        TempRoot box;
        c[0] == "/" ? box.make_folder("/data/oled.key") : box.write("/data/oled.key", c[0]);
        box.write("/data/oled.counter", c[1]);  // read only after a usable key
        CaptureStdout out;
        DatagramAuth auth;
        auth.load();
        EXPECT_NE(out.text().find(c[2]), std::string::npos) << c[2];
        EXPECT_EQ(verdict(auth, "cpu=0|auth=1:0"), "the box's key or counter file is unusable");
    }
}

}  // namespace
