#ifndef OLED_TESTS_OLED_PANEL_FIXTURE_H
#define OLED_TESTS_OLED_PANEL_FIXTURE_H

#include <gtest/gtest.h>
#include <stdint.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "panel_controller.h"

// A box with the panel of one oled_type wired onto the simulated SoC the
// way oledd-sim wires it, the bus lines set up as the pin set-up does, and
// every byte the panel decodes recorded.
class PanelOnSoc : public ::testing::Test {
protected:
    typedef std::pair<bool, uint8_t> Byte;  // (data, byte)

    void SetUp() override;
    void TearDown() override;

    // Wires the panel for oled_type and makes it the driver's type. A
    // panel with a reset line powers up with the line high, as a daemon
    // started again leaves it: released, it has had its reset pulse,
    // otherwise it waits for the driver's.
    void wire(int type, bool released = true);

    // Recorded bytes since the last take, then forgets them.
    std::vector<Byte> take();
    // Data bytes among them.
    static std::vector<uint8_t> data_of(const std::vector<Byte>& bytes);
    // Pixel (x, y) of the panel's RAM.
    int pixel(int x, int y) const;
    // The whole panel against a reference picture.
    void expect_panel(const std::string& name) const;

    struct Recorder {
        std::vector<Byte> bytes;
        size_t data_count = 0;
        // Called after every byte, once the panel took it.
        std::function<void(const Recorder&)> hook;
    };

    std::shared_ptr<PanelController> panel_;
    std::shared_ptr<Recorder> recorder_;
};

// Compares pixels (width x height, levels 0..maxval) with the reference
// picture tests/oled/pictures/NAME.pgm. Run with OLEDD_UPDATE_PICTURES=1 to
// write the references instead, then look at every changed one (convert to
// PNG) before committing it.
void expect_picture(const std::string& name, int width, int height, int maxval, const std::vector<uint8_t>& pixels);

// Commands from text of hexadecimal bytes ("AE 00 10").
std::vector<std::pair<bool, uint8_t>> commands(const std::string& hex);

// Text as the drivers take it. Only the big-digit routine writes to it (it
// pads the caller's text), and its tests pass buffers of their own.
inline unsigned char* text(const char* s)
{
    return reinterpret_cast<unsigned char*>(const_cast<char*>(s));
}

#endif
