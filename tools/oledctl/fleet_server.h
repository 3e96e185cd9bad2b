#ifndef OLEDCTL_FLEET_SERVER_H
#define OLEDCTL_FLEET_SERVER_H

#include "cli_options.h"

namespace fleet {

// `oledctl serve`: the fleet page and its API over HTTP until SIGINT or
// SIGTERM. Exit status as the other verbs: 0 after Ctrl-C, 1 when it
// cannot listen, 2 for bad options.
int serve(const CliOptions& options);

}  // namespace fleet

#endif
