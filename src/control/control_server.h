#ifndef OLED_CONTROL_CONTROL_SERVER_H
#define OLED_CONTROL_CONTROL_SERVER_H

// The control server: serves the UDP control protocol on port, unicast and
// the multicast group on eth0 (joined as soon as eth0 has an address, and
// again when it changes), until thread_oled_ump is cleared (noticed within
// a second). False, after one line naming the cause, when it cannot serve
// at all.
bool oled_ump(unsigned int port);

#endif
