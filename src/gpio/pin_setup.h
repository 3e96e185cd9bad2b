#ifndef OLED_GPIO_PIN_SETUP_H
#define OLED_GPIO_PIN_SETUP_H

// Routes the panel bus pins that the settings name for the panel kind
// (oled_type) to GPIO, makes them outputs and fills the bus-line globals;
// powers a two-wire panel from its supply and ground pins; samples the
// mode switch into input_mode. Runs once in the main thread, after
// init_argumnt and before any display or LED thread exists.
void oled_gpio_init();

#endif
