#ifndef OLED_MAIN_STARTUP_H
#define OLED_MAIN_STARTUP_H

// The daemon's start-up sequence and service; what main() of oledd runs and
// what oledd-sim runs after preparing the simulated box.
int oled_main();

#endif
