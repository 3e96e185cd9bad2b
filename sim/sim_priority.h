#ifndef OLED_SIM_SIM_PRIORITY_H
#define OLED_SIM_SIM_PRIORITY_H

// The daemon asks for real-time FIFO threads; on the box that is what keeps
// the panel bus steady. On a laptop or a test machine a FIFO thread that
// spins in the bus pacing would starve everything else, so oledd-sim gives
// up the privilege before the daemon starts: its threads then run at normal
// priority (the daemon falls back by itself when refused).
void drop_realtime_privilege();

#endif
