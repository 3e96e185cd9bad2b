#ifndef OLED_OLED_PANEL_STEPS_H
#define OLED_OLED_PANEL_STEPS_H

// One entry of a panel's start-up table: a command byte and the argument
// bytes that follow it, or one of the non-command steps a sequence needs
// (blank the screen, pause). Writing the arity next to each command lets a
// reader check a sequence without the controller's datasheet.
struct PanelStep {
    enum Op : unsigned char { kCommand, kClearScreen, kPauseMs };
    Op op;
    unsigned char command;    // kCommand: the command; kPauseMs: milliseconds
    unsigned char arg_count;  // 0 or 1
    unsigned char arg;
};

constexpr PanelStep cmd(unsigned char command)
{
    return PanelStep{PanelStep::kCommand, command, 0, 0};
}

constexpr PanelStep cmd(unsigned char command, unsigned char arg)
{
    return PanelStep{PanelStep::kCommand, command, 1, arg};
}

constexpr PanelStep clear_screen()
{
    return PanelStep{PanelStep::kClearScreen, 0, 0, 0};
}

constexpr PanelStep pause_ms(unsigned char ms)
{
    return PanelStep{PanelStep::kPauseMs, ms, 0, 0};
}

#endif
