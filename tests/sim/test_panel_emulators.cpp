// The panel emulators on their own, fed hand-written pin sequences.
#include <ctype.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "four_wire_decoder.h"
#include "panel_controller.h"
#include "soc.h"
#include "two_wire_decoder.h"

namespace {

typedef std::vector<std::pair<bool, uint8_t>> Bytes;

// Data, clock, chip select and data/command.
const SimPin kPins[] = {{7, 1}, {7, 2}, {8, 0}, {8, 6}};

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

// Drives the pins from a script: "d1", "c0", "s1", "m0" set data, clock,
// chip select or data/command; "S" and "P" are a two-wire start and stop; a
// hex byte is eight bits, then on two wires the ninth clock during which the
// master lets data go high (the panel would be pulling it low), on four
// wires framed by chip select.
void drive(const std::string& script, bool four_wire)
{
    std::istringstream in(script);
    std::string edges, token;
    while (in >> token) {
        if (islower(token[0]) || token == "S" || token == "P") {
            edges += token == "S" ? "d1c1d0c0" : token == "P" ? "d0c1d1" : token;
            continue;
        }
        const unsigned long byte = strtoul(token.c_str(), nullptr, 16);
        edges += four_wire ? "s0" : "";
        for (int bit = 7; bit >= 0; --bit) {
            const std::string data = (byte >> bit) & 1 ? "d1" : "d0";
            edges += four_wire ? "c0" + data + "c1" : data + "c1c0";
        }
        edges += four_wire ? "s1" : "c1d1c0";
    }
    SimSoc& soc = SimSoc::instance();
    for (size_t i = 0; i + 1 < edges.size(); i += 2) {
        const SimPin pin = kPins[std::string("dcsm").find(edges[i])];
        const uint32_t base = 0x12150000 + static_cast<uint32_t>(pin.group) * 0x10000;
        soc.store(base + 0x400, soc.load(base + 0x400) | (1u << pin.bit));
        soc.store(base + (4u << pin.bit), static_cast<uint32_t>(edges[i + 1] - '0') << pin.bit);
    }
}

TEST_F(Emulator, TwoWireTakesAddressedTransactionsByControlByte)
{
    std::make_shared<TwoWireDecoder>(recorder())->attach(kPins[0], kPins[1]);
    // 0x78 and 0xA4 end on a 0 bit: the ack edge is no stop. 0x7A is another
    // device; control byte 0x80 is one command, then another control byte.
    // Then a bit cut short by a stop, and clocks outside a transaction.
    drive("S 78 00 A4 P S 78 40 3C 81 P S 7A 40 55 P S 78 80 AF 40 11 d1 c1 c0 P 78", false);
    const Bytes expected = {{false, 0xA4}, {true, 0x3C}, {true, 0x81}, {false, 0xAF}, {true, 0x11}};
    EXPECT_EQ(expected, *bytes_);
}

TEST_F(Emulator, FourWireFramesBitsWithChipSelect)
{
    drive("s1", true);
    std::make_shared<FourWireDecoder>(recorder())->attach(kPins[0], kPins[1], kPins[2], kPins[3]);
    // Clocks while deselected are ignored; a byte cut by chip select is
    // dropped and the next starts afresh.
    drive("m0 B0 m1 5A c0 c1 s0 c0 c1 c0 c1 c0 c1 s1 01", true);
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
