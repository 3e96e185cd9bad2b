#include <stdio.h>
#include <sys/stat.h>

#include <string>

#include "control_fixture.h"
#include "runtime_settings.h"

TEST_F(ControlDatagram, ReplyReflectsFileBeforeTheChange)
{
    // Whatever the file holds is sent byte for byte, behind one header.
    const std::string hand_made = "[oled]\r\nOLed_a_cpu=1\n# kept as written\nOLed_a_vi=1";
    root.write("/data/oled.ini", hand_made);
    ASSERT_TRUE(handle("cpu=0|replyoled|vi=0|replyoled"));
    ASSERT_EQ(replies.sent.size(), 2u);
    EXPECT_EQ(replies.sent[0].payload, "[oled]\n" + hand_made);
    EXPECT_EQ(replies.sent[1].payload, "[oled]\n" + hand_made);
    const std::string saved = settings_file();
    EXPECT_EQ(saved, defaults_with({"OLed_a_cpu=0", "OLed_a_vi=0"}));

    handle("replyoled");
    EXPECT_EQ(replies.sent.back().payload, "[oled]\n" + saved);

    // Without a file the header goes alone; the save afterwards makes one.
    root.write("/data/oled.ini", "");
    remove(root.host("/data/oled.ini").c_str());
    handle("replyoled");
    EXPECT_EQ(replies.sent.back().payload, "[oled]\n");
    EXPECT_EQ(settings_file(), saved);
}

TEST_F(ControlDatagram, RepliesGoToTheSenderOrTheNamedDestination)
{
    struct Case {
        const char* datagram;
        std::vector<std::string> destinations;
    };
    const Case cases[] = {
        {"replyoled", {"192.168.1.1:40000"}},
        {"replyoled=", {"192.168.1.1:40000"}},
        {"replyoled=10.0.0.5:9000", {"10.0.0.5:9000"}},
        {"replyoled=10.0.0.5", {"10.0.0.5:40000"}},  // no port: the sender's
        {"replyoled=10.0.0.5:", {"10.0.0.5:40000"}},
        // A destination once given holds for the datagram's later bare items.
        {"replyoled=10.0.0.5:9000|cpu=1|replyoled|replyoled=10.0.0.6:7|replyoled",
         {"10.0.0.5:9000", "10.0.0.5:9000", "10.0.0.6:7", "10.0.0.6:7"}},
        // Fifteen characters is the longest address; the item after a
        // rejected one still goes to the sender.
        {"replyoled=255.255.255.255:9", {"255.255.255.255:9"}},
        {"replyoled=1255.255.255.255:9|replyoled", {"192.168.1.1:40000"}},
        {"replyoled=2555555555555555555555555555:9", {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.datagram);
        replies.sent.clear();
        ASSERT_TRUE(handle(c.datagram));
        std::vector<std::string> got;
        for (const SentReply& r : replies.sent) {
            got.push_back(r.ip + ":" + std::to_string(r.port));
        }
        EXPECT_EQ(got, c.destinations);
        const bool rejected = std::string(c.datagram).find("55555") != std::string::npos ||
                              std::string(c.datagram).find("1255.") != std::string::npos;
        EXPECT_EQ(count(printed, "longer than 15 characters"), rejected ? 1 : 0);
    }
    // The next datagram starts again from its own sender.
    replies.sent.clear();
    handle("replyoled=10.0.0.5:9000");
    handle("replyoled");
    ASSERT_EQ(replies.sent.size(), 2u);
    EXPECT_EQ(replies.sent[1].ip, "192.168.1.1");
    EXPECT_EQ(replies.sent[1].port, 40000u);
}

TEST_F(ControlDatagram, QueriesSaveWithoutRewritingTheFile)
{
    struct stat before;
    ASSERT_EQ(stat(root.host("/data/oled.ini").c_str(), &before), 0);
    handle("replyoled|test=3");
    struct stat after;
    ASSERT_EQ(stat(root.host("/data/oled.ini").c_str(), &after), 0);
    EXPECT_EQ(count(printed, "save config succeed"), 1);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(led_test, 3);
}
