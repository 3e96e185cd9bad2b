#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string>

#include "interface_tables.h"
#include "loop_pause.h"
#include "oled_ba_master.h"
#include "probe_text.h"
#include "probes.h"
#include "runtime_settings.h"
#include "screen_loops.h"
#include "singleton.h"
#include "status_lines.h"

namespace {

// The big panel's band, one line at a time.
const StatusLine kBandLines[] = {
    {&oled_display_cpu, CheckCpuFile, 4, false, false},
    {&oled_display_vi, CheckViFile, 2, false, false},
    {&oled_display_ai, CheckAiFile, 0, false, false},
    {&oled_display_venc, CheckVencFile, 0, false, false},
    {&oled_display_ethspeed, CheckEthspeedFile, 0, false, false},
    {&oled_display_temp, CheckTemperature, 4, false, false},
    {&oled_display_time, CheckTimeFile, 3, false, false},
};

// The status band under the address: 240 x 23 pixels from row 45.
const unsigned char kBandTop = 45;

// Set when a pass drew a status line or paused; a pass that did neither
// waits briefly instead of going round at once.
bool g_busy = false;

void hold(OLEDBaMaster& big)
{
    const int seconds = oled_sleep_time;  // once: the control server may change it
    hold_screen(seconds, [&big] { big.ShowFrame_big(); });
    g_busy = g_busy || seconds > 0;
}

void show_in_band(OLEDBaMaster& big, const std::string& text)
{
    g_busy = true;
    big.ShowOLEDFill_big(0, kBandTop, 240, 23, 0);
    big.ShowOLEDSmallString(2, kBandTop, reinterpret_cast<unsigned char*>(const_cast<char*>(text.c_str())),
                            static_cast<unsigned char>(text.size() > 255 ? 255 : text.size()));
    hold(big);
}

void show_line(OLEDBaMaster& big, const StatusLine& line)
{
    if (!*line.shown) {
        return;
    }
    const std::string text = probe_text(line.probe);
    if (text.size() > line.more_than) {
        show_in_band(big, text);
    }
}

void show_address(OLEDBaMaster& big)
{
    getIp();
    // The big-digit routine pads its buffer in place to the drawn length:
    // give it a copy, not the shared address table.
    char address[sizeof(g_ip[0]) + 1] = {0};
    const char* entry = strcmp(g_ip[0], loip) != 0 ? g_ip[0] : g_ip[1];
    memcpy(address, entry, sizeof(g_ip[0]));
    big.ShowOLEDString_big(1, 0, reinterpret_cast<unsigned char*>(address), 15);
}

}  // namespace

void* oled_big_loop(void*)
{
    puts("oled_big_loop");
    std::shared_ptr<OLEDBaMaster> big = Singleton<OLEDBaMaster>::instance();
    big->InitOLED_big();
    big->ShowOLEDFill_big(0, 0, 256, 64, 0);
    big->ShowFrame_big();
    big->WriteCmdOLED(0xAF);
    sleep(8);
    if (oled_display_logo) {
        big->big_oled_show_logo();
    }

    while (thread_big_loop) {
        g_busy = false;
        show_address(*big);
        if (oled_string_enable) {
            show_in_band(*big, custom_text());
        } else if (!(oled_display_cpu || oled_display_vi || oled_display_ai || oled_display_venc ||
                     oled_display_ethspeed || oled_display_time)) {
            hold(*big);  // the temperature switch is not part of this test, as on the box
        }
        for (const StatusLine& line : kBandLines) {
            show_line(*big, line);
        }
        if (!g_busy) {
            big->ShowFrame_big();
            usleep(kIdlePassMicroseconds);
        }
    }
    puts("oled_big_loop end");
    return nullptr;
}
