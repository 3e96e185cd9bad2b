#include <gtest/gtest.h>

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "box_root.h"
#include "capture_stdout.h"
#include "runtime_settings.h"
#include "software_config.h"
#include "temp_root.h"

namespace {

typedef SoftwareConfig C;

class ConfigTest : public ::testing::Test {
protected:
    void SetUp() override { hw_info[0] = '\0'; }
    void TearDown() override { hw_info[0] = '\0'; }

    std::string board_pins(const char* board)
    {
        snprintf(hw_info, sizeof(hw_info), "%s", board);
        CaptureStdout quiet;
        SoftwareConfig config;
        return config.GetConfig(C::OLed_sml_SDINMUX) + " " + config.GetConfig(C::OLed_sml_SCLKMUX) + " " +
               config.GetConfig(C::OLed_sml_VCCMUX) + " " + config.GetConfig(C::OLed_sml_GNDMUX) + " " +
               config.GetConfig(C::kSwitch_gpio);
    }

    TempRoot root;
};

}  // namespace

TEST_F(ConfigTest, BoardTablesChooseThePanelAndSwitchPins)
{
    EXPECT_EQ(board_pins("BRD25"), "4_0 4_1 4_2 4_3 7_6");
    EXPECT_EQ(board_pins(""), "4_2 4_3 0 0 0");
    EXPECT_EQ(board_pins("BRD14"), "12_0 12_1 12_2 0 0");
    EXPECT_EQ(board_pins("BRD29"), "10_6 10_7 0 0 0");
    EXPECT_EQ(board_pins("BRD13"), "0_5 6_3 0 0 12_4");
    EXPECT_EQ(board_pins("BRD08"), "18_1 18_0 0 0 7_6");
    EXPECT_EQ(board_pins("BRD18"), "10_7 12_5 0 0 0_2");
    EXPECT_EQ(board_pins("BRD11"), "13_6 13_7 0 0 2_4");
    EXPECT_EQ(board_pins("BRD19"), "4_2 4_3 0 0 6_3");
    EXPECT_EQ(board_pins("brd25"), "4_2 4_3 0 0 0");   // case-sensitive
    EXPECT_EQ(board_pins("BRD250"), "4_2 4_3 0 0 0");  // whole names only
}

TEST_F(ConfigTest, ReaderFollowsTheLineRules)
{
    root.write("/data/oled.ini",
               "[oled]\r\n"
               "# OLed_a_vi=7\r\n"
               "OLed_a_vi=0\r\n"
               "; OLed_a_net=5\n"
               "!OLed_a_ai=5\n"
               "OLed_a_cpu=\n"
               "OLed_a_cpu=0\n"
               "OLed_a_sleep_time=9\r\nOLed_a_temp = 0\r\nmystery=1\n"
               "xOLed_a_venc=0\n"
               "OLed_a_small_n_buf= two  words \r\n"
               "OLed_a_logo=1\r\n"
               "OLed_china_str=A\rB\n"
               "kSwitch_gpio=7_1\r");
    CaptureStdout quiet;
    SoftwareConfig config;
    config.SetConfig(C::OLed_a_io, 1);
    config.ReadConfig();
    EXPECT_EQ(config.GetConfig(C::OLed_a_io), "1");   // a re-read keeps what the file lacks
    EXPECT_EQ(config.GetConfig(C::OLed_a_vi), "0");   // comment skipped, CR LF dropped
    EXPECT_EQ(config.GetConfig(C::OLed_a_net), "1");  // ";" comment
    EXPECT_EQ(config.GetConfig(C::OLed_a_ai), "1");   // "!" comment
    EXPECT_EQ(config.GetConfig(C::OLed_a_cpu), "1");  // first match is empty: default stays
    EXPECT_EQ(config.GetConfig(C::OLed_a_sleep_tim) + config.GetConfig(C::OLed_a_temp), "31");  // lookalikes
    EXPECT_EQ(config.GetConfig(C::OLed_a_venc), "0");  // key found inside the line
    EXPECT_EQ(config.GetConfig(C::OLed_a_small_n_buf), " two  words ");
    EXPECT_EQ(config.GetConfig(C::OLed_a_logo), "1");
    EXPECT_EQ(config.GetConfig(C::OLed_china_str), "A\rB");  // lone CR stays
    EXPECT_EQ(config.GetConfig(C::kSwitch_gpio), "7_1");     // CR at the end of the file goes
}

TEST_F(ConfigTest, UnchangedSettingsAreNotRewrittenAndUnknownOnesRefused)
{
    CaptureStdout quiet;
    SoftwareConfig config;
    config.SaveConfig();
    const auto file_version = [this] {
        struct stat now;
        EXPECT_EQ(stat(root.host("/data/oled.ini").c_str(), &now), 0);
        return std::to_string(now.st_ino) + "." + std::to_string(now.st_mtim.tv_nsec);
    };
    const std::string before = file_version();
    const std::string serialized = config.Serialize();
    usleep(20000);
    EXPECT_EQ(config.GetConfig(static_cast<C::SoftWareConfigID>(38)), "error");
    EXPECT_FALSE(config.SetConfig(static_cast<C::SoftWareConfigID>(38), "x"));
    EXPECT_FALSE(config.SetConfig(static_cast<C::SoftWareConfigID>(-1), 3));
    EXPECT_EQ(config.Serialize(), serialized);
    EXPECT_TRUE(config.SaveConfig());
    EXPECT_EQ(file_version(), before);

    config.SetConfig(C::OLed_a_cpu, 0);
    EXPECT_TRUE(config.SaveConfig());
    EXPECT_NE(root.read("/data/oled.ini").find("\nOLed_a_cpu=0\n"), std::string::npos);
}

// What PrintConfig prints is checked end to end with the start-up messages.
TEST_F(ConfigTest, AnUncreatableDataFolderPutsTheFileInTheWorkingDirectory)
{
    CaptureStdout out;
    {
        SoftwareConfig config;
    }
    set_box_root(root.path() + "/missing/parent");
    {
        SoftwareConfig config;
        EXPECT_STREQ(filepath_, "./oled.ini");
    }
    set_box_root(root.path());
    EXPECT_EQ(out.text(),
              "make \"/data\" successfully\n[~SoftwareConfig]-216: SoftwareConfig Normal Exit!\n"
              "make \"/data\" errorly\n[~SoftwareConfig]-216: SoftwareConfig Normal Exit!\n");
}

// Permissions bind only an unprivileged process, and the tests run as
// root: a child that drops to nobody (when root) saves into a folder that takes no new
// file, holding a settings file that nobody owns.
TEST_F(ConfigTest, AFolderThatTakesNoNewFileHasTheFileRewrittenInPlace)
{
    const passwd* nobody = getpwnam("nobody");
    ASSERT_NE(nobody, nullptr);
    root.write("/data/oled.ini", std::string(2000, '#') + "\n");
    const bool root_user = geteuid() == 0;
    if (root_user) {
        ASSERT_EQ(chmod(root.path().c_str(), 0755), 0);
        ASSERT_EQ(chown(root.host("/data/oled.ini").c_str(), nobody->pw_uid, nobody->pw_gid), 0);
    }
    ASSERT_EQ(chmod(root.host("/data").c_str(), 0555), 0);
    fflush(stdout);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (root_user && (setgroups(0, nullptr) != 0 || setgid(nobody->pw_gid) != 0 || setuid(nobody->pw_uid) != 0)) {
            _exit(2);
        }
        CaptureStdout out;
        SoftwareConfig config;
        config.SetConfig(C::OLed_a_cpu, 0);
        const std::string expected = config.Serialize();
        const bool saved = config.SaveConfig();
        const std::string written = root.read("/data/oled.ini");
        chmod(root.host("/data/oled.ini").c_str(), 0444);
        config.SetConfig(C::OLed_a_cpu, 1);
        const bool saved_read_only = config.SaveConfig();
        const std::string printed = out.text();
        EXPECT_TRUE(saved);
        EXPECT_EQ(written, expected);
        EXPECT_FALSE(saved_read_only);
        EXPECT_EQ(root.read("/data/oled.ini"), expected);
        EXPECT_FALSE(root.exists("/data/oled.ini.tmp"));
        EXPECT_EQ(printed, "[SaveConfig]-246: save config succeed\n[SaveConfig]-250: save config failed\n");
        fflush(stdout);
        _exit(HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the save as nobody failed, status " << status;
}
