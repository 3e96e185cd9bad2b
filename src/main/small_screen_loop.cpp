#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string>

#include "board_defaults.h"
#include "interface_tables.h"
#include "loop_pause.h"
#include "oled_master.h"
#include "probe_text.h"
#include "probes.h"
#include "runtime_settings.h"
#include "screen_loops.h"
#include "singleton.h"
#include "status_lines.h"

namespace {

// A text of the loop's own, cut to what one draw call takes.
unsigned char length_of(const std::string& text)
{
    return static_cast<unsigned char>(text.size() > 255 ? 255 : text.size());
}

unsigned char* bytes_of(const std::string& text)
{
    return reinterpret_cast<unsigned char*>(const_cast<char*>(text.c_str()));
}

// The old panel: one line per screen, after the custom text; the CPU line
// is skipped by a pass that starts later.
const StatusLine kOneLinePerScreen[] = {
    {&oled_display_cpu, CheckCpuFile, 4, false, false},
    {&oled_display_vi, CheckViFile, 3, false, false},
    {&oled_display_vi, CheckVi1File, 3, true, false},
    {&oled_display_ai, CheckAiFile, 3, false, false},
    {&oled_display_venc, CheckVencFile, 3, false, false},
    {&oled_display_ethspeed, CheckEthspeedFile, 0, false, false},
    {&oled_display_temp, CheckTemperature, 4, false, false},
    {&oled_display_time, CheckTimeFile, 3, false, false},
};

// Every other panel: two lines per screen, the custom text last.
const StatusLine kTwoLinesPerScreen[] = {
    {&oled_display_cpu, CheckCpuFile, 4, false, false},
    {&oled_display_time, CheckTimeFile, 3, false, false},
    {&oled_display_vi, CheckViFile, 3, false, false},
    {&oled_display_vi, CheckVi1File, 3, true, false},
    {&oled_display_ai, CheckAiFile, 3, false, false},
    {&oled_display_temp, CheckTemperature, 4, false, false},
    {&oled_display_ethspeed, CheckEthspeedFile, 0, false, false},
    {&oled_display_venc, CheckVencFile, 3, false, false},
    {&oled_display_io, CheckIOFile, 3, false, true},
    {&oled_display_io, CheckIO1File, 3, false, true},
};

// Whether a line is for this box and switched on now.
bool wanted(const StatusLine& line)
{
    return *line.shown && (!line.second_input || board_has_second_input());
}

class SmallScreen {
public:
    explicit SmallScreen(const std::shared_ptr<OLEDMaster>& oled) : oled_(oled), busy_(false) {}

    void pass();

private:
    enum OneLineStart { kFromCustomText, kFromCpu, kFromVideoInput, kFromTop };

    void show_address();
    void one_line_per_screen(OneLineStart start);
    void one_line_item(const std::string& text);
    void two_lines_per_screen();
    void two_line_item(const StatusLine& line);
    void hold();

    std::shared_ptr<OLEDMaster> oled_;
    char last_address_[24] = {0};
    int counter_ = 0;
    int row_ = 4;
    bool busy_;  // the pass drew a status line or paused
};

void SmallScreen::hold()
{
    const int seconds = oled_sleep_time;  // once: the control server may change it
    hold_screen(seconds, [this] { oled_->ShowFrame(); });
    busy_ = busy_ || seconds > 0;
}

void SmallScreen::show_address()
{
    getIp();
    const char* address = strcmp(g_ip[0], loip) == 0 ? g_ip[1] : g_ip[0];
    if (strncmp(address, last_address_, sizeof(last_address_)) == 0) {
        return;
    }
    oled_->ShowOLEDClear(0, 2);
    oled_->ShowOLEDString(2, 0, reinterpret_cast<unsigned char*>(const_cast<char*>(address)),
                          static_cast<unsigned char>(strnlen(address, sizeof(g_ip[0]))));
    snprintf(last_address_, sizeof(last_address_), "%s", address);
    puts(last_address_);
}

void SmallScreen::one_line_item(const std::string& text)
{
    oled_->ShowOLEDClear(2, 8);
    oled_->ShowOLEDSmallString(1, 3, bytes_of(text), length_of(text));
    busy_ = true;
    hold();
}

// One status line per screen (the old panel). The uptime comes last and
// ends the pass.
void SmallScreen::one_line_per_screen(OneLineStart start)
{
    if (start <= kFromCustomText && oled_string_enable) {
        one_line_item(custom_text());
    }
    for (const StatusLine& line : kOneLinePerScreen) {
        if ((start <= kFromCpu || line.probe != CheckCpuFile) && wanted(line)) {
            const std::string text = probe_text(line.probe);
            if (text.size() > line.more_than) {
                one_line_item(text);
            }
        }
    }
}

void SmallScreen::two_line_item(const StatusLine& line)
{
    if (!wanted(line)) {
        return;
    }
    const std::string text = probe_text(line.probe);
    if (text.size() <= line.more_than) {
        return;
    }
    busy_ = true;
    if (line.icons) {
        oled_->ShowOLEDCustom(4, static_cast<unsigned char>(row_), bytes_of(text), length_of(text));
    } else {
        oled_->ShowOLEDSmallString(4, static_cast<unsigned char>(row_), bytes_of(text), length_of(text));
    }
    if (row_ == 4) {
        row_ = 6;
    } else {
        hold();
        oled_->ShowOLEDClear(2, 8);
        row_ = 4;
    }
}

// Two status lines per screen (every panel but the old one); the custom
// text comes last.
void SmallScreen::two_lines_per_screen()
{
    if (static_cast<unsigned int>(oled_type - 3) > 3) {
        return;  // no two-line layout for this kind
    }
    oled_->ShowOLEDClear(2, 8);
    row_ = 4;
    for (const StatusLine& line : kTwoLinesPerScreen) {
        two_line_item(line);
    }

    if (oled_string_enable) {
        const std::string custom = custom_text();
        oled_->ShowOLEDSmallString(4, static_cast<unsigned char>(row_), bytes_of(custom), length_of(custom));
        busy_ = true;
        hold();
        if (row_ == 6) {
            oled_->ShowOLEDClear(2, 8);
        }
    } else if (row_ == 6) {
        hold();  // the first slot alone stays up for one period
    }
}

void SmallScreen::pass()
{
    busy_ = false;
    if (oled_type == 1) {
        // The old panel loses its set-up now and then: bring it back.
        if (counter_ > 10) {
            oled_->InitOLED();
            last_address_[0] = '\0';
            counter_ = 1;
        } else {
            ++counter_;
        }
    }
    show_address();

    const bool old_panel = oled_type == 1;
    if (oled_string_enable) {
        old_panel ? one_line_per_screen(kFromCustomText) : two_lines_per_screen();
    } else if (oled_display_cpu) {
        old_panel ? one_line_per_screen(kFromCpu) : two_lines_per_screen();
    } else if (oled_display_vi || oled_display_ai || oled_display_venc || oled_display_ethspeed || oled_display_time ||
               oled_display_io) {
        old_panel ? one_line_per_screen(kFromVideoInput) : two_lines_per_screen();
    } else {
        hold();
        old_panel ? one_line_per_screen(kFromTop) : two_lines_per_screen();
    }
    if (!busy_) {
        oled_->ShowFrame();
        usleep(kIdlePassMicroseconds);
    }
}

}  // namespace

void* oled_small_loop(void*)
{
    puts("oled_small_loop");
    sleep(5);
    std::shared_ptr<OLEDMaster> oled = Singleton<OLEDMaster>::instance();
    oled->InitOLED();
    if (oled_type == 1) {
        sleep(5);  // the old panel needs a second initialisation
        oled->InitOLED();
    }
    {
        SmallScreen screen(oled);
        while (thread_small_loop) {
            screen.pass();
        }
    }
    puts("oled_small_loop end");
    oled->ShowOLEDClear(0, 8);
    oled->ShowFrame();
    oled->WriteByteOLED(0xAE, 0x00);
    return nullptr;
}
