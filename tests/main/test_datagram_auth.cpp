#include <gtest/gtest.h>

#include <string>

#include "capture_stdout.h"
#include "datagram_auth.h"
#include "hmac_sha256.h"
#include "temp_root.h"

namespace {

// RFC 4231, test cases 1 to 4, 6 and 7 (5 truncates the MAC).
TEST(DatagramAuth, MacIsTheRfc4231HmacSha256)
{
    std::string counting;
    for (char byte = 1; byte <= 25; ++byte) {
        counting += byte;
    }
    const std::string long_key(131, '\xaa');
    EXPECT_EQ(hmac_sha256_hex(std::string(20, '\x0b'), "Hi There"),
              "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7");
    EXPECT_EQ(hmac_sha256_hex("Jefe", "what do ya want for nothing?"),
              "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
    EXPECT_EQ(hmac_sha256_hex(std::string(20, '\xaa'), std::string(50, '\xdd')),
              "773ea91e36800e46854db8ebd09181a72959098b3ef8c122d9635514ced565fe");
    EXPECT_EQ(hmac_sha256_hex(counting, std::string(50, '\xcd')),
              "82558a389a443c0ea4cc819899f2083a85f0faa3e578f8077a2e3ff46729665b");
    EXPECT_EQ(hmac_sha256_hex(long_key, "Test Using Larger Than Block-Size Key - Hash Key First"),
              "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54");
    EXPECT_EQ(hmac_sha256_hex(long_key, "This is a test using a larger than block-size key and a larger than "
                                        "block-size data. The key needs to be hashed before being used by the "
                                        "HMAC algorithm."),
              "9b09ffa71b942fcb27635fbcd5b0e944bfdc63644f0713938a7f51535c3a35e2");
}

// "cpu=0|auth=COUNTER:MAC", the MAC made by Python's hmac with the key
// "0123456789abcdef".
std::string signed_cpu(const std::string& counter, const std::string& mac)
{
    return "cpu=0|auth=" + counter + ":" + mac;
}
const char kMax[] = "9223372036854775807";
const char kMacMax[] = "6a5012c453e3727da4165ffa4c2fa920040722663e1000371efb2a162bfce044";
const char kMac5[] = "9619076a46237cb478745f1cb47138ae4b091226c42b90280b518112dd4b6f1f";

std::string verdict(DatagramAuth& auth, std::string text)
{
    const Signature signature = take_signature(text);
    EXPECT_EQ(text, signature.present ? "cpu=0" : text);
    return auth.accept(signature);
}

TEST(DatagramAuth, CounterMustRiseAboveEveryOneAcceptedAlsoAfterRestart)
{
    CaptureStdout quiet;
    TempRoot root;
    root.write("/data/oled.key", "0123456789abcdef");
    DatagramAuth auth;
    auth.load();
    ASSERT_TRUE(auth.required());
    EXPECT_EQ(verdict(auth, "cpu=0"), "not signed");
    EXPECT_EQ(verdict(auth, "cpu=0|auth=5:" + std::string(kMac5) + "|vi=1"), "not signed");
    EXPECT_EQ(verdict(auth, signed_cpu("0", "433d5185fff2b9f1ed7fe2831caa473e9426f20ea06a5adae1f22a2d85fa4b06")),
              "counter not a number from 1 to 2^63-1");
    EXPECT_EQ(verdict(auth, signed_cpu("9223372036854775808",
                                       "5c4fc0f1b4116ec6074f3050c3f8c901fd0f7a3b67e0137f17f186ff0cfc2411")),
              "counter not a number from 1 to 2^63-1");
    std::string upper = kMac5;
    upper[0] = 'A';
    EXPECT_EQ(verdict(auth, signed_cpu("6", kMac5)), "wrong MAC");
    EXPECT_EQ(verdict(auth, signed_cpu("5", upper)), "wrong MAC");
    EXPECT_EQ(verdict(auth, signed_cpu("5", std::string(kMac5) + "0")), "wrong MAC");
    EXPECT_FALSE(auth.save_pending());

    EXPECT_EQ(verdict(auth, signed_cpu("5", kMac5)), "");
    EXPECT_EQ(verdict(auth, signed_cpu("5", kMac5)), "counter 5 not above the last accepted");
    EXPECT_EQ(verdict(auth, signed_cpu("4", "829edb2d67bd1ad9e3bbd709760ac717a72037260cbdce26438e918f723c48dd")),
              "counter 4 not above the last accepted");
    EXPECT_EQ(verdict(auth, signed_cpu(kMax, kMacMax)), "");
    ASSERT_TRUE(auth.save_pending());
    ASSERT_TRUE(auth.save());
    EXPECT_EQ(root.read("/data/oled.counter"), std::string(kMax) + "\n");

    DatagramAuth restarted;
    restarted.load();
    EXPECT_EQ(verdict(restarted, signed_cpu(kMax, kMacMax)), std::string("counter ") + kMax + " not above the last accepted");
}

TEST(DatagramAuth, KeyOrCounterFileThatCannotServeRefusesEveryChange)
{
    {
        TempRoot keyless_box;
        DatagramAuth keyless;
        keyless.load();
        EXPECT_FALSE(keyless.required());
    }

    const std::string refused = "the box's key or counter file is unusable";
    const std::string key = "0123456789abcdef";
    struct Case {
        std::string key;
        std::string counter;  // "-": a folder where the file should be
        std::string printed;
    };
    const Case cases[] = {
        {key.substr(1), "", "/data/oled.key: 15 bytes, a key has 16 to 1024: every change is refused"},
        {std::string(1025, 'k'), "", "/data/oled.key: 1025 bytes"},
        {"-", "", "/data/oled.key: cannot be read (Is a directory)"},
        {key, "5x\n", "/data/oled.counter: not a counter"},
        {key, "-", "/data/oled.counter: cannot be read (Is a directory)"},
    };
    for (const Case& c : cases) {
        TempRoot box;
        for (const auto& file : {std::make_pair("/data/oled.key", c.key), std::make_pair("/data/oled.counter", c.counter)}) {
            if (file.second == "-") {
                box.make_folder(file.first);
            } else if (!file.second.empty()) {
                box.write(file.first, file.second);
            }
        }
        CaptureStdout out;
        DatagramAuth auth;
        auth.load();
        EXPECT_NE(out.text().find(c.printed), std::string::npos) << c.printed;
        EXPECT_TRUE(auth.required());
        EXPECT_EQ(verdict(auth, signed_cpu("5", kMac5)), refused) << c.printed;
    }
}

}  // namespace
