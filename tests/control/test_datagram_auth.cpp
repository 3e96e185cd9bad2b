#include <gtest/gtest.h>

#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

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
        {big,
         "This is a test using a larger than block-size key and a larger than block-size data. The key needs "
         "to be hashed before being used by the HMAC algorithm.",
         "9b09ffa71b942fcb27635fbcd5b0e944bfdc63644f0713938a7f51535c3a35e2"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(hmac_sha256_hex(c[0], c[1]), c[2]);
    }
}

std::string verdict(DatagramAuth& auth, std::string text, const std::string& to = "192.168.1.20", bool change = true)
{
    return auth.accept(take_signature(text), to, change);
}

std::string signed_cpu0(const char* counter_and_mac)
{
    return std::string("cpu=0|auth=") + counter_and_mac;
}

// MACs of "DESTINATION|cpu=0|auth=COUNTER" made by Python's hmac with the key below.
TEST(DatagramAuth, SignatureBindsTheDestinationAndANewCounterOnFlashFirst)
{
    CaptureStdout out;
    TempRoot root;
    root.write("/data/oled.key", "0123456789abcdef");
    chmod(root.host("/data/oled.key").c_str(), 0600);
    root.write("/data/oled.counter", "4\n");
    DatagramAuth auth;
    auth.load();
    EXPECT_EQ(out.text(), "/data/oled.key: changes must be signed\n");
    const std::string top = signed_cpu0("9223372036854775807:");
    const std::string mac = "c61686b7d10ddd9e0398ed7f1e741e7c030300f3d34d7b16c3afef2d6c21b84a";
    EXPECT_EQ(verdict(auth, signed_cpu0("0:7f99de52c7ad05c5b0801468305ca11fad18eac4249123385d6ec8fe26b7c411")),
              "counter not a number from 1 to 2^63-1");
    EXPECT_EQ(verdict(auth, signed_cpu0("9223372036854775808:"
                                        "581bf5cd44b59a9d875ef3bd2b701407957b5ec8a86ceb0129e80d1e6b2ab5ac")),
              "counter not a number from 1 to 2^63-1");
    EXPECT_EQ(verdict(auth, top + "C61686B7D10DDD9E0398ED7F1E741E7C030300F3D34D7B16C3AFEF2D6C21B84A"), "wrong MAC");
    EXPECT_EQ(verdict(auth, top + mac + "|vi=1"), "not signed");
    // Made for another box, or for the group.
    EXPECT_EQ(verdict(auth, top + mac, "192.168.1.21"), "wrong MAC");
    EXPECT_EQ(verdict(auth, signed_cpu0("7:271d81a4c998b9661cadbda024f2345b54fc3a57c6f4fe08367010f49f0599bc")),
              "wrong MAC");
    EXPECT_EQ(
        verdict(auth, signed_cpu0("7:271d81a4c998b9661cadbda024f2345b54fc3a57c6f4fe08367010f49f0599bc"), "224.168.1.1"),
        "");
    EXPECT_EQ(root.read("/data/oled.counter"), "7\n");
    // A query's counter is held in memory only, and counts all the same.
    const std::string six = signed_cpu0("6:dcdaa047804bd8222adf32037b965ee25b6c90960a84afe9bba0588a08a9627b");
    EXPECT_EQ(verdict(auth, six), "counter 6 not above the last accepted");
    EXPECT_EQ(verdict(auth, top + mac, "192.168.1.20", false), "");
    EXPECT_EQ(root.read("/data/oled.counter"), "7\n");
    EXPECT_EQ(verdict(auth, top + mac), "counter 9223372036854775807 not above the last accepted");

    // A counter that cannot be written refuses the change and is not taken.
    DatagramAuth again;
    again.load();
    remove(root.host("/data/oled.counter").c_str());
    root.make_folder("/data/oled.counter");
    EXPECT_EQ(verdict(again, top + mac), "counter cannot be saved to /data/oled.counter");
    rmdir(root.host("/data/oled.counter").c_str());
    EXPECT_EQ(verdict(again, top + mac), "");
    EXPECT_EQ(root.read("/data/oled.counter"), "9223372036854775807\n");
}

TEST(DatagramAuth, KeyOrCounterFileThatCannotServeRefusesEveryChange)
{
    const std::string key = "0123456789abcdef";
    const std::string cases[][3] = {
        // key ("/": a folder where the file should be), counter ("-": none), what the box says
        {key.substr(1), "1", "/data/oled.key: 15 bytes, a key has 16 to 1024: every change is refused"},
        {"/", "1", "/data/oled.key: cannot be read (Is a directory)"},
        {key, "5x\n", "/data/oled.counter: not a counter"},
        {key, "-", "/data/oled.counter: cannot be read (No such file or directory): every change is refused"},
        {key, "1", "/data/oled.key: readable by others than its owner: chmod 600 /data/oled.key\n"},
    };
    for (const auto& c : cases) {
        TempRoot box;
        c[0] == "/" ? box.make_folder("/data/oled.key") : box.write("/data/oled.key", c[0]);
        chmod(box.host("/data/oled.key").c_str(), 0644);
        if (c[1] != "-") {
            box.write("/data/oled.counter", c[1]);  // read only after a usable key
        }
        CaptureStdout out;
        DatagramAuth auth;
        auth.load();
        EXPECT_NE(out.text().find(c[2]), std::string::npos) << c[2];
        const bool usable = c[1] == "1" && c[0] == key;
        EXPECT_EQ(verdict(auth, "cpu=0|auth=1:0"), usable ? "wrong MAC" : "the box's key or counter file is unusable");
    }
}

}  // namespace
