// The panel emulators on their own, fed hand-written pin sequences.
#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "four_wire_decoder.h"
#include "panel_controller.h"
#include "soc.h"
#include "two_wire_decoder.h"

namespace {

typedef std::vector<std::pair<bool, uint8_t> > Bytes;

const SimPin kSda = {7, 1};
const SimPin kScl = {7, 2};
const SimPin kCs = {8, 0};
const SimPin kDc = {8, 6};

void set_pin(SimPin pin, int level)
{
    SimSoc& soc = SimSoc::instance();
    const uint32_t base = 0x12150000 + static_cast<uint32_t>(pin.group) * 0x10000;
    soc.store(base + 0x400, soc.load(base + 0x400) | (1u << pin.bit));
    soc.store(base + (4u << pin.bit), static_cast<uint32_t>(level) << pin.bit);
}

class Emulator : public ::testing::Test {
protected:
    void SetUp() override { SimSoc::instance().reset(); }
    void TearDown() override { SimSoc::instance().reset(); }

    PanelByteSink recorder()
    {
        std::shared_ptr<Bytes> bytes = bytes_;
        return [bytes](bool data, uint8_t byte) { bytes->push_back(std::make_pair(data, byte)); };
    }

    std::shared_ptr<Bytes> bytes_ = std::make_shared<Bytes>();
};

// Two-wire master, written out edge by edge.
void start()
{
    set_pin(kSda, 1);
    set_pin(kScl, 1);
    set_pin(kSda, 0);
    set_pin(kScl, 0);
}

void stop()
{
    set_pin(kSda, 0);
    set_pin(kScl, 1);
    set_pin(kSda, 1);
}

// Eight bits, then the ninth clock during which the master lets the data
// line go high (the panel would be pulling it low).
void byte_with_ack(uint8_t b)
{
    for (int bit = 7; bit >= 0; --bit) {
        set_pin(kSda, (b >> bit) & 1);
        set_pin(kScl, 1);
        set_pin(kScl, 0);
    }
    set_pin(kScl, 1);
    set_pin(kSda, 1);
    set_pin(kScl, 0);
}

void transaction(std::initializer_list<uint8_t> bytes)
{
    start();
    for (uint8_t b : bytes) {
        byte_with_ack(b);
    }
}

TEST_F(Emulator, TwoWireTakesAddressedTransactionsByControlByte)
{
    std::make_shared<TwoWireDecoder>(recorder())->attach(kSda, kScl);
    transaction({0x78, 0x00, 0xA4});  // 0x78 and 0xA4 end on a 0 bit: the ack edge is no stop
    stop();
    transaction({0x78, 0x40, 0x3C, 0x81});
    stop();
    transaction({0x7A, 0x40, 0x55});  // another device
    stop();
    transaction({0x78, 0x80, 0xAF, 0x40, 0x11});  // 0x80: one command, then another control byte
    set_pin(kSda, 1);  // a bit cut short by a stop
    set_pin(kScl, 1);
    set_pin(kScl, 0);
    stop();
    byte_with_ack(0x78);  // clocks outside a transaction are no bits
    const Bytes expected = {{false, 0xA4}, {true, 0x3C}, {true, 0x81}, {false, 0xAF}, {true, 0x11}};
    EXPECT_EQ(expected, *bytes_);
}

void four_wire_byte(uint8_t b, int dc)
{
    set_pin(kDc, dc);
    set_pin(kCs, 0);
    for (int bit = 7; bit >= 0; --bit) {
        set_pin(kScl, 0);
        set_pin(kSda, (b >> bit) & 1);
        set_pin(kScl, 1);
    }
    set_pin(kCs, 1);
}

TEST_F(Emulator, FourWireFramesBitsWithChipSelect)
{
    set_pin(kCs, 1);
    std::make_shared<FourWireDecoder>(recorder())->attach(kSda, kScl, kCs, kDc);
    four_wire_byte(0xB0, 0);
    four_wire_byte(0x5A, 1);
    // Clocks while deselected are ignored; a byte cut by chip select is
    // dropped and the next starts afresh.
    set_pin(kScl, 0);
    set_pin(kScl, 1);
    set_pin(kCs, 0);
    for (int i = 0; i < 3; ++i) {
        set_pin(kScl, 0);
        set_pin(kScl, 1);
    }
    set_pin(kCs, 1);
    four_wire_byte(0x01, 1);
    const Bytes expected = {{false, 0xB0}, {true, 0x5A}, {true, 0x01}};
    EXPECT_EQ(expected, *bytes_);
}

void send(PanelController& panel, const std::vector<int>& bytes, bool data = false)
{
    for (int b : bytes) {
        panel.write(data, static_cast<uint8_t>(b));
    }
}

TEST_F(Emulator, MonochromeControllerWritesPagesWrapsColumnsAndSurvivesReset)
{
    PanelController panel(PanelController::kMonochrome128x64);
    send(panel, {0xB2, 0x17, 0x0E, 0xA8, 0x1F, 0xAF});  // page 2, column 126
    send(panel, {0x01, 0x02, 0x04}, true);
    // Reset ignores the bus while held, then restores the registers but
    // keeps the RAM.
    panel.hold_in_reset(true);
    send(panel, {0xFF}, true);
    panel.hold_in_reset(false);
    EXPECT_EQ(64, panel.visible_rows());
    EXPECT_FALSE(panel.display_on());
    send(panel, {0x80}, true);

    const std::vector<uint8_t> pixels = panel.pixels();
    std::string lit;
    for (size_t i = 0; i < pixels.size(); ++i) {
        if (pixels[i] != 0) {
            lit += std::to_string(i / 128) + "," + std::to_string(i % 128) + " ";
        }
    }
    EXPECT_EQ("7,0 16,126 17,127 18,0 ", lit);
}

}  // namespace
