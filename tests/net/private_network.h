#ifndef OLED_TESTS_NET_PRIVATE_NETWORK_H
#define OLED_TESTS_NET_PRIVATE_NETWORK_H

// True when the test program runs in a network namespace of its own, where
// a test may add addresses without touching the host.
bool in_private_network();

#endif
