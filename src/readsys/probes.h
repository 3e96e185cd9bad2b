#ifndef OLED_READSYS_PROBES_H
#define OLED_READSYS_PROBES_H

// Every status probe and the wrapper the loops call them through.
#include "encoder_probes.h"
#include "ethernet_audio_probes.h"
#include "io_probes.h"
#include "number_format.h"
#include "probe_text.h"
#include "system_probes.h"
#include "video_probes.h"

#endif
