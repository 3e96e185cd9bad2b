// How close the big panel's drawing comes to its pacing floor: every
// register write waits at least one microsecond, so N writes cannot take
// less than N us. Runs on the simulated SoC with the panel emulator
// attached, as oledd-sim does.
#include <stdio.h>
#include <time.h>

#include <string>

#include "box_settings.h"
#include "bus_lines.h"
#include "gpio_master.h"
#include "oled_ba_master.h"
#include "oled_master.h"
#include "panel_attach.h"
#include "register_access.h"
#include "runtime_settings.h"
#include "soc.h"
#include "vcd_writer.h"

namespace {

double now_seconds()
{
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

void line(const std::string& text, unsigned int* addr, unsigned int* high, unsigned int* low)
{
    int group = 0;
    int bit = 0;
    parse_pin(text, &group, &bit);
    GPIOMaster gpio;
    gpio.pin_mux_gpio(group, bit);
    gpio.set_gpio_direction(group, bit, 1);
    gpio.get_gpio_addr(group, bit, addr, high, low);
}

// The board defaults' pins, wired to the panel of the given type.
BoxSettings wire(int type)
{
    SimSoc::instance().reset();
    BoxSettings box;
    box.values = SoftwareConfig::DefaultValues("");
    box.values[SoftwareConfig::OLed_a_kind_start] = std::to_string(type);
    box.values[SoftwareConfig::OLed_sml_SDINMUX] = box.get(SoftwareConfig::OLed_ba_SDINMUX);
    box.values[SoftwareConfig::OLed_sml_SCLKMUX] = box.get(SoftwareConfig::OLed_ba_SCLKMUX);
    line(box.get(SoftwareConfig::OLed_ba_SDINMUX), &SDA, &SDA_H, &SDA_L);
    line(box.get(SoftwareConfig::OLed_ba_SCLKMUX), &SCL, &SCL_H, &SCL_L);
    line(box.get(SoftwareConfig::OLed_ba_CS_MUX), &CS, &CS_H, &CS_L);
    line(box.get(SoftwareConfig::OLed_ba_DC_MUX), &DC, &DC_H, &DC_L);
    line(box.get(SoftwareConfig::OLed_ba_RES_MUX), &RES, &RES_H, &RES_L);
    attach_panel(box, PanelByteSink());
    oled_type = type;
    set_reg(RES, RES_H);
    return box;
}

// Times fn; fixed_waits are the seconds of sleeps and pauses it makes on
// purpose, kept apart from the bus time.
template <typename Fn>
void measure(const char* what, double fixed_waits, Fn fn)
{
    const uint64_t before = SimSoc::instance().stores();
    const double start = now_seconds();
    fn();
    const double elapsed = now_seconds() - start;
    const uint64_t writes = SimSoc::instance().stores() - before;
    const double floor = static_cast<double>(writes) * 1e-6;
    const double bus = elapsed - fixed_waits;
    printf("%-34s %9llu writes  floor %7.3f s  took %7.3f s  (bus %7.3f s = %.2f x floor, fixed waits %.3f s)\n", what,
           static_cast<unsigned long long>(writes), floor, elapsed, bus, bus / floor, fixed_waits);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc > 1) {
        printf(
            "usage: bench_panels\n\nTimes a full big-panel fill, the logo sweep and a whole small-panel frame\n"
            "on the simulated SoC against the pacing floor (1 us per register write).\n");
        return std::string(argv[1]) == "--help" ? 0 : 2;
    }
    wire(0);
    OLEDBaMaster big;
    measure("big panel: fill 256x64", 0.0, [&big]() {
        big.ShowOLEDFill_big(0, 0, 256, 64, 0xFF);
        big.ShowFrame_big();
    });
    for (int i = 0; i < 8192; ++i) {
        oled_logo[i] = static_cast<unsigned char>(i * 13);
    }
    // Show_Logo sleeps 1 s before the sweep and pauses 6 ms after each of
    // its 114 frames.
    measure("big panel: logo sweep + logo", 1.0 + 114 * 0.006, [&big]() { big.Show_Logo(); });

    // A driver's first frame goes out whole: all eight pages.
    const auto whole_frame = [] { OLEDMaster().ShowFrame(); };
    wire(4);
    measure("small panel (two-wire): whole frame", 0.0, whole_frame);
    {
        // The same, its bus recorded as oledd-sim --vcd records it.
        const BoxSettings box = wire(4);
        std::vector<NamedPin> lines;
        panel_bus_pins(box, *panel_wiring_for(4), &lines);
        FILE* file = tmpfile();
        VcdWriter vcd(file, "bench.vcd", lines, VcdWriter::kDefaultMaxBytes);
        vcd.attach();
        measure("small panel (two-wire): frame, --vcd", 0.0, whole_frame);
        SimSoc::instance().reset();
        printf("%-34s %9ld bytes of waveform file\n", "small panel (two-wire): frame, --vcd", ftell(file));
        fclose(file);
    }
    wire(3);
    measure("small panel (four-wire): whole frame", 0.0, whole_frame);
    SimSoc::instance().reset();
    return 0;
}
