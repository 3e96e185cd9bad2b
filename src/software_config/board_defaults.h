#ifndef OLED_SOFTWARE_CONFIG_BOARD_DEFAULTS_H
#define OLED_SOFTWARE_CONFIG_BOARD_DEFAULTS_H

// Settings whose defaults depend on the board named by hw_info.
struct SmallPanelPins {
    const char* sdin;
    const char* sclk;
    const char* vcc;
    const char* gnd;
};

const SmallPanelPins& small_panel_pins_for_board(const char* board);
const char* switch_pin_for_board(const char* board);

// Boards with a second video input (vi1); the running box's is hw_info.
bool board_has_second_input(const char* board);
bool board_has_second_input();

#endif
