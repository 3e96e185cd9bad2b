#ifndef OLED_READSYS_ENCODER_PROBES_H
#define OLED_READSYS_ENCODER_PROBES_H

#include <string>

// Encoder type and the video-input summaries other programs leave behind.

// "VENC_TYPE:" + H264, H265 or MJPEG for the payload type of encoder
// channel 0; "VENC_TYPE:" alone for another value; "" without the key.
std::string CheckVencFile();
// First line of /tmp/vi0 (and /tmp/vi1) as read, newline included.
std::string CheckViFile();
std::string CheckVi1File();
// "1" to "4" give "0" to "3"; anything else gives "5".
std::string State_change(std::string state);

#endif
