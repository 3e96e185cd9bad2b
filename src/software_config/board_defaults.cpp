#include "board_defaults.h"

#include <string.h>

#include "runtime_settings.h"

namespace {

struct SmallPanelRow {
    const char* boards[4];  // nullptr-terminated
    SmallPanelPins pins;
};

// First matching row wins; the last row is every other board.
const SmallPanelRow kSmallPanelRows[] = {
    {{"BRD25", nullptr}, {"4_0", "4_1", "4_2", "4_3"}},
    {{"BRD14", nullptr}, {"12_0", "12_1", "12_2", "0"}},
    {{"BRD15", nullptr}, {"12_3", "12_4", "0", "0"}},
    {{"BRD16", nullptr}, {"5_0", "5_1", "0", "0"}},
    {{"BRD17", nullptr}, {"0_3", "0_4", "0", "0"}},
    {{"BRD18", nullptr}, {"10_7", "12_5", "0", "0"}},
    {{"BRD30", "BRD29", nullptr}, {"10_6", "10_7", "0", "0"}},
    {{"BRD05", nullptr}, {"0_4", "20_3", "12_2", "0"}},
    {{"BRD08", nullptr}, {"18_1", "18_0", "0", "0"}},
    {{"BRD12", "BRD01", "BRD13", nullptr}, {"0_5", "6_3", "0", "0"}},
    {{"BRD11", nullptr}, {"13_6", "13_7", "0", "0"}},
    {{"BRD31", nullptr}, {"13_6", "13_5", "0", "0"}},
};
const SmallPanelPins kOtherBoardPins = {"4_2", "4_3", "0", "0"};

struct SwitchRow {
    const char* boards[10];
    const char* pin;
};

const SwitchRow kSwitchRows[] = {
    {{"BRD12", "BRD01", "BRD13", nullptr}, "12_4"},
    {{"BRD22", nullptr}, "4_7"},
    {{"BRD03", "BRD06", "BRD07", "BRD08", "BRD25", "BRD27", "BRD26", "BRD28", "BRD24", nullptr}, "7_6"},
    {{"BRD11", nullptr}, "2_4"},
    {{"BRD23", nullptr}, "0_6"},
    {{"BRD19", nullptr}, "6_3"},
    {{"BRD18", nullptr}, "0_2"},
};

const char* const kSecondInputBoards[] = {"BRD20", "BRD21", "BRD04", "BRD09", "BRD32", "BRD10", "BRD02", nullptr};

bool board_in(const char* board, const char* const* boards)
{
    for (; *boards != nullptr; ++boards) {
        if (strcmp(board, *boards) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace

const SmallPanelPins& small_panel_pins_for_board(const char* board)
{
    for (const SmallPanelRow& row : kSmallPanelRows) {
        if (board_in(board, row.boards)) {
            return row.pins;
        }
    }
    return kOtherBoardPins;
}

const char* switch_pin_for_board(const char* board)
{
    for (const SwitchRow& row : kSwitchRows) {
        if (board_in(board, row.boards)) {
            return row.pin;
        }
    }
    return "0";
}

bool board_has_second_input(const char* board)
{
    return board_in(board, kSecondInputBoards);
}

bool board_has_second_input()
{
    return board_has_second_input(hw_info);
}
