// A logo.bin made by oled-logo, played by the big-panel driver onto the
// emulated greyscale controller: the panel shows the picture's levels.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "capture_stdout.h"
#include "logo_image.h"
#include "oled_ba_master.h"
#include "panel_fixture.h"
#include "png_file.h"
#include "temp_root.h"

namespace {

// Data bytes of the logo show up to the full picture: the blank, 114
// frames of 64 rows of a 14-byte band, then the logo's 64 rows.
const size_t kLogoShown = 64 * 128 + 114 * 64 * 14 + 64 * 128;

class LogoOnPanel : public PanelOnSoc {
protected:
    void SetUp() override {
        PanelOnSoc::SetUp();
        wire(0);
        ASSERT_NE(nullptr, getcwd(saved_, sizeof saved_));
        root_.make_folder("/home/public");
        ASSERT_EQ(0, chdir(root_.host("/home/public").c_str()));
    }
    void TearDown() override {
        ASSERT_EQ(0, chdir(saved_));
        PanelOnSoc::TearDown();
    }

    TempRoot root_;
    char saved_[4096];
    OLEDBaMaster oled_;
};

TEST_F(LogoOnPanel, PanelShowsTheLevelsOledLogoWrote) {
    // A square picture: a mid-grey frame around a white centre.
    std::vector<std::uint8_t> art(100 * 100, 120);
    for (int y = 25; y < 75; ++y) {
        for (int x = 25; x < 75; ++x) art[y * 100 + x] = 255;
    }
    ASSERT_EQ(write_grey_png(root_.host("/art.png"), 100, 100, art), "");
    const std::string command = std::string(OLED_LOGO_PROGRAM) + " to-bin " + root_.host("/art.png") + " " +
                                root_.host("/home/public/logo.bin");
    ASSERT_EQ(std::system(command.c_str()), 0);
    const std::string file = root_.read("/home/public/logo.bin");
    ASSERT_EQ(file.size(), logo::kFileSize);

    std::vector<uint8_t> shown;
    recorder_->hook = [this, &shown](const Recorder& r) {
        if (r.data_count == kLogoShown && shown.empty()) shown = panel_->pixels();
    };
    CaptureStdout out;
    oled_.big_oled_show_logo();
    ASSERT_EQ(shown.size(), 256u * 64);
    EXPECT_EQ(shown, logo::unpack(std::vector<uint8_t>(file.begin(), file.end())));
    // The square fills the panel's height, centred: black beside it, the
    // frame at level 7 (120 of 255), the centre fully lit.
    EXPECT_EQ(shown[32 * 256 + 95], 0);
    EXPECT_EQ(shown[32 * 256 + 160], 0);
    EXPECT_EQ(shown[2 * 256 + 128], 7);
    EXPECT_EQ(shown[32 * 256 + 128], 15);
}

}  // namespace
