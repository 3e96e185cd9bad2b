#ifndef OLED_CONTROL_CONTROL_SERVER_H
#define OLED_CONTROL_CONTROL_SERVER_H

// The control server: serves the UDP control protocol on port, unicast and
// the multicast group on eth0, until thread_oled_ump is cleared (noticed at
// the next datagram).
void oled_ump(unsigned int port);

#endif
