#include "panel_fixture.h"

#include <stdlib.h>

#include <fstream>
#include <iterator>
#include <sstream>

#include "box_settings.h"
#include "bus_lines.h"
#include "panel_attach.h"
#include "pin_setup.h"
#include "register_access.h"
#include "runtime_settings.h"
#include "singleton.h"
#include "soc.h"

void PanelOnSoc::SetUp()
{
    PanelOnSoc::TearDown();  // not a subclass's
    recorder_ = std::make_shared<Recorder>();
}

void PanelOnSoc::TearDown()
{
    SimSoc::instance().reset();
    SDA = SDA_H = SDA_L = SCL = SCL_H = SCL_L = CS = CS_H = CS_L = 0;
    DC = DC_H = DC_L = RES = RES_H = RES_L = 0;
    oled_type = 0;
}

// The bus set up by the daemon's own pin set-up, on pins away from the
// board defaults, so the test names every line itself.
void PanelOnSoc::wire(int type, bool released)
{
    SimSoc::instance().reset();  // a panel wired before would answer on the same lines
    typedef SoftwareConfig C;
    const std::pair<C::SoftWareConfigID, const char*> pins[] = {
        {C::OLed_ba_SDINMUX, "5_1"},  {C::OLed_ba_SCLKMUX, "5_2"}, {C::OLed_ba_CS_MUX, "6_3"},
        {C::OLed_ba_DC_MUX, "6_4"},   {C::OLed_ba_RES_MUX, "6_5"}, {C::OLed_sml_SDINMUX, "5_1"},
        {C::OLed_sml_SCLKMUX, "5_2"}, {C::OLed_sml_VCCMUX, "0"},   {C::OLed_sml_GNDMUX, "0"}};
    BoxSettings box;
    box.values = SoftwareConfig::DefaultValues("");
    box.values[C::OLed_a_kind_start] = std::to_string(type);
    for (const auto& pin : pins) {
        box.values[pin.first] = pin.second;
        Singleton<SoftwareConfig>::instance()->SetConfig(pin.first, pin.second);
    }
    oled_type = type;
    oled_gpio_init();
    const bool reset_line = type == 0 || type == 3 || type == 6;
    if (reset_line) {
        set_reg(RES, RES_H);
    }
    std::shared_ptr<Recorder> recorder = recorder_;
    panel_ = attach_panel(box, [recorder](bool data, uint8_t byte) {
        recorder->bytes.push_back(Byte(data, byte));
        recorder->data_count += data ? 1 : 0;
        if (recorder->hook) {
            recorder->hook(*recorder);
        }
    });
    if (reset_line && released) {
        set_reg(RES, RES_L);
        set_reg(RES, RES_H);
    }
}

std::vector<PanelOnSoc::Byte> PanelOnSoc::take()
{
    std::vector<Byte> out;
    out.swap(recorder_->bytes);
    return out;
}

std::vector<uint8_t> PanelOnSoc::data_of(const std::vector<Byte>& bytes)
{
    std::vector<uint8_t> out;
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i].first) {
            out.push_back(bytes[i].second);
        }
    }
    return out;
}

int PanelOnSoc::pixel(int x, int y) const
{
    return panel_->pixels()[static_cast<size_t>(y * panel_->width() + x)];
}

std::vector<std::pair<bool, uint8_t>> commands(const std::string& hex)
{
    std::vector<std::pair<bool, uint8_t>> out;
    const char* p = hex.c_str();
    char* end = nullptr;
    for (unsigned long value = strtoul(p, &end, 16); end != p; value = strtoul(p, &end, 16)) {
        out.push_back(std::make_pair(false, static_cast<uint8_t>(value)));
        p = end;
    }
    return out;
}

void PanelOnSoc::expect_panel(const std::string& name) const
{
    expect_picture(name, panel_->width(), static_cast<int>(panel_->pixels().size()) / panel_->width(),
                   panel_->width() == 256 ? 15 : 1, panel_->pixels());
}

void expect_picture(const std::string& name, int width, int height, int maxval, const std::vector<uint8_t>& pixels)
{
    const std::string path = std::string(OLED_PICTURES) + "/" + name + ".pgm";
    std::ostringstream header;
    header << "P5\n" << width << " " << height << "\n" << maxval << "\n";
    const std::string picture = header.str() + std::string(pixels.begin(), pixels.end());
    const char* update = getenv("OLEDD_UPDATE_PICTURES");
    if (update != nullptr && update[0] == '1') {
        std::ofstream(path, std::ios::binary) << picture;
        return;
    }
    std::ifstream in(path, std::ios::binary);
    const std::string reference((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    ASSERT_EQ(header.str(), reference.substr(0, header.str().size())) << path;
    ASSERT_EQ(picture.size(), reference.size()) << path;
    for (size_t i = 0; i < pixels.size(); ++i) {
        ASSERT_EQ(reference[header.str().size() + i], picture[header.str().size() + i])
            << path << ": first difference at x " << i % width << ", y " << i / width;
    }
}
