#ifndef OLED_READSYS_VIDEO_PROBES_H
#define OLED_READSYS_VIDEO_PROBES_H

#include <string>

// Decoder, video output and HDMI, from the media platform's status pages.

// "YES" when the HotPlug row says YES in the three characters two places
// after its colon, else "NO". Throws std::out_of_range when the row is
// empty (no page, no HotPlug row): callers go through probe_text.
std::string CheckHDMIFile();
// "VDEC:" + the second column of the first decoder channel's row.
std::string CheckVdecFile();
// "VO:" + interface "_" mode ";" + the picture settings of layer 2.
std::string CheckVoFile();

#endif
