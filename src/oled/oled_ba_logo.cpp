// The big panel's boot logo: a light band sweeps across the logo's shape,
// then the logo itself is shown.
#include <stdint.h>
#include <stdio.h>
#include <unistd.h>

#include "oled_ba_master.h"
#include "panel_lines.h"

namespace {

const int kRows = 64;
const int kRowBytes = 128;
const int kBandBytes = 14;
const int kFirstStep = 7;
const int kLastStep = 120;

// Level of band byte i: rising 2..14 over the first half, falling back.
unsigned char band_level(int i)
{
    return static_cast<unsigned char>(i < kBandBytes / 2 ? 2 * (i + 1) : 2 * (kBandBytes - i));
}

}  // namespace

void OLEDBaMaster::Show_Logo()
{
    ShowOLEDFill_big(0, 0, 256, kRows, 0);
    ShowFrame_big();
    sleep(1);
    SweepLogo();
    ShowOLEDFillPic_big(0, 0, 256, kRows, oled_logo);
    ShowFrame_big();
}

void OLEDBaMaster::SweepLogo()
{
    for (int step = kFirstStep; step <= kLastStep; ++step) {
        const int column = step - kFirstStep;
        for (int row = 0; row < kRows; ++row) {
            position(static_cast<unsigned char>(column), static_cast<unsigned char>(row));
            for (int i = 0; i < kBandBytes; ++i) {
                const unsigned char logo = oled_logo[row * kRowBytes + column + i];
                const unsigned char level = band_level(i);
                const unsigned char high = (logo & 0xF0) != 0 ? static_cast<unsigned char>(level << 4) : 0;
                const unsigned char low = (logo & 0x0F) != 0 ? level : 0;
                put(static_cast<unsigned char>(high | low));
            }
        }
        ShowFrame_big();
        Delayms(6);
    }
}

void OLEDBaMaster::big_oled_show_logo()
{
    FILE* file = fopen("logo.bin", "rbe");
    if (file == nullptr) {
        // The message carries the null handle, not the name.
        printf("Open file %s fail\n", "(null)");
        return;
    }
    printf("open file  ok ===%d\n", static_cast<int>(reinterpret_cast<intptr_t>(file)));
    long length = 0;
    if (fseek(file, 0, SEEK_END) == 0) {
        length = ftell(file);
    }
    rewind(file);
    // The format is exactly one image; a longer file is cut, a shorter one
    // leaves the rest of the previous image.
    if (length > static_cast<long>(sizeof(oled_logo))) {
        length = static_cast<long>(sizeof(oled_logo));
    }
    if (length > 0) {
        size_t got = fread(oled_logo, 1, static_cast<size_t>(length), file);
        (void)got;
    }
    Show_Logo();
    ShowOLEDFill_big(0, 0, 256, kRows, 0);
    ShowFrame_big();
    sleep(1);
    fclose(file);
}
