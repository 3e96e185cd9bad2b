#ifndef OLED_SIM_BOX_ROOT_H
#define OLED_SIM_BOX_ROOT_H

#include <string>

// The simulated box's file system lives under a root folder on the host;
// the path seam of the daemon resolves absolute appliance paths under it.
void set_box_root(const std::string& root);
const std::string& box_root();

#endif
