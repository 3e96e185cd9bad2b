#ifndef OLEDCTL_CLI_OPTIONS_H
#define OLEDCTL_CLI_OPTIONS_H

#include <cstdint>
#include <string>
#include <vector>

// oledctl's command line: a verb, its options and its arguments.
struct CliOptions {
    std::string verb;
    std::vector<std::string> arguments;
    std::string box;
    bool all = false;
    bool via_group = false;
    std::string iface;
    unsigned short port = 16124;
    double timeout = 2.0;
    bool json = false;
    bool stats = false;     // get: the box's counts
    bool no_check = false;  // set: send and do not read the box back
    std::string format;     // discover: "text", "json" or "prometheus-sd"
    std::string output;     // discover --format prometheus-sd: the file it keeps
    bool raw_given = false;
    std::string raw;
    std::string listen;                           // serve: ADDRESS[:PORT] of the fleet page
    std::string token_file;                       // serve: the session token comes from it
    std::string metrics_token_file;               // serve: a token that only scrapes
    std::string key;                              // --key-file's bytes: every datagram is signed with them
    std::vector<std::uint32_t> subnet_addresses;  // discover, serve: asked one by one
    bool subnet_given = false;
    bool help = false;
};

// Empty result: options filled; otherwise a one-line reason.
// A warning on standard error when others than its owner may read path
// (a key or a token).
void warn_if_readable(const std::string& path);

std::string parse_cli(int argc, char** argv, CliOptions& options);

#endif
