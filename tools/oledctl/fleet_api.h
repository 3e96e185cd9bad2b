#ifndef OLEDCTL_FLEET_API_H
#define OLEDCTL_FLEET_API_H

#include <string>
#include <vector>

#include "discovery.h"
#include "fleet_roster.h"

// The JSON API behind the fleet page, free of HTTP: each call takes the
// request body and gives the status and body to answer with. Every item
// is checked by the same rules as `oledctl set` before anything is sent.
namespace fleet {

struct Reply {
    int status;
    std::string body;  // JSON, but for the metrics
};

// {"error": reason}
Reply refusal(int status, const std::string& reason);

// {"boxes": [ADDRESS...], "items": ["KEY=VALUE"...]}. Empty result: fine,
// else the one-line reason, the same `oledctl set` gives for an item.
std::string read_change(const std::string& body, std::vector<std::string>& boxes, std::vector<std::string>& items);
// {"boxes": [ADDRESS...], "on": true|false}
std::string read_led_test(const std::string& body, std::vector<std::string>& boxes, bool& on);

class Api {
public:
    explicit Api(Network network) : network_(std::move(network)) {}

    Reply keys() const;                       // the settable keys and panel names
    Reply list();                             // a discovery round
    Reply scrape();                           // a discovery round as metrics
    Reply read(const std::string& address);   // asks one box
    Reply change(const std::string& body);    // sends items, reads the boxes back
    Reply led_test(const std::string& body);  // the same with test=1 or test=0

private:
    // Empty result: every address is a box of the roster or of --subnet,
    // else the reason for the first that is not.
    std::string unknown_box(const std::vector<std::string>& boxes) const;
    // Empty result: fine, else a network failure.
    std::string round();
    Reply send_and_read(const std::vector<std::string>& boxes, const std::vector<std::string>& items);
    // Sends each box the datagram (unless empty), then the query, on one
    // socket: a box handles them in order, so its answer shows the change.
    // Fills answered; empty result: fine, else a network failure.
    std::string ask(const std::vector<std::string>& boxes, const std::string& datagram,
                    std::vector<std::string>& answered);

    Network network_;
    Roster roster_;
};

}  // namespace fleet

#endif
