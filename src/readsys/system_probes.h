#ifndef OLED_READSYS_SYSTEM_PROBES_H
#define OLED_READSYS_SYSTEM_PROBES_H

#include <string>

// Processor load, time since boot and board temperature.

// "CPU:" + the %user column of "iostat -c" + "%"; "" when that word has
// three characters or fewer or no report came. "AI DEV ATTR" when iostat
// cannot be started (a failure value the system keeps).
std::string CheckCpuFile();
// "TIM:" days "." hours "." minutes "." seconds "S", no padding.
std::string CheckTimeFile();
// "TEMP:" + the temperature tool's line with every non-digit blanked;
// "" without the tool.
std::string CheckTemperature();

// The text of CheckTimeFile for an uptime in whole seconds.
std::string format_uptime(long seconds);

#endif
