#include "cli_options.h"

#include <cstdio>

#include <cstdlib>

#include "protocol.h"
#include "signature_format.h"
#include "signing_key.h"
#include "subnets.h"

namespace {

bool read_port(const std::string& text, unsigned short& port) {
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || value < 1 || value > 65535) return false;
    port = static_cast<unsigned short>(value);
    return true;
}

// Waiting longer than an hour is a typing error, not a plan.
bool read_timeout(const std::string& text, double& seconds) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !(value > 0.0) || value > 3600.0) return false;
    seconds = value;
    return true;
}

}  // namespace

void warn_if_readable(const std::string& path) {
    if (readable_by_others(path)) {
        std::fprintf(stderr, "oledctl: warning: %s is readable by others than its owner: chmod 600 %s\n",
                     path.c_str(), path.c_str());
    }
}

std::string parse_cli(int argc, char** argv, CliOptions& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        const bool has_value = i + 1 < argc;
        auto value_of = [&](std::string& value) {
            if (!has_value) return false;
            value = argv[++i];
            return true;
        };
        std::string value;
        if (word == "--help" || word == "-h") {
            options.help = true;
        } else if (word == "--all") {
            options.all = true;
        } else if (word == "--via-group") {
            options.via_group = true;
        } else if (word == "--json") {
            options.json = true;
        } else if (word == "--stats") {
            options.stats = true;
        } else if (word == "--no-check") {
            options.no_check = true;
        } else if (word == "--box" || word == "--iface" || word == "--port" || word == "--timeout" ||
                   word == "--raw" || word == "--listen" || word == "--subnet" || word == "--token-file" ||
                   word == "--metrics-token-file" || word == "--format" || word == "--output" ||
                   word == "--key-file") {
            if (!value_of(value)) return word + " needs a value";
            if (word == "--box") {
                if (!protocol::is_ipv4(value)) return "bad address '" + value + "': expected dotted IPv4";
                options.box = value;
            } else if (word == "--iface") {
                options.iface = value;
            } else if (word == "--listen") {
                options.listen = value;
            } else if (word == "--token-file") {
                options.token_file = value;
            } else if (word == "--metrics-token-file") {
                options.metrics_token_file = value;
            } else if (word == "--format") {
                if (value != "text" && value != "json" && value != "prometheus-sd") {
                    return "bad format '" + value + "': text, json or prometheus-sd";
                }
                options.format = value;
            } else if (word == "--output") {
                options.output = value;
            } else if (word == "--key-file") {
                const std::string error = signing::read_key_file(value, options.key);
                if (!error.empty()) return error;
                warn_if_readable(value);
            } else if (word == "--subnet") {
                if (options.subnet_given) return "--subnet given twice: list the subnets in one, joined by commas";
                const std::string error = subnets::parse(value, options.subnet_addresses);
                if (!error.empty()) return error;
                options.subnet_given = true;
            } else if (word == "--port") {
                if (!read_port(value, options.port)) return "bad port '" + value + "': expected 1..65535";
            } else if (word == "--timeout") {
                if (!read_timeout(value, options.timeout)) return "bad timeout '" + value + "': seconds, 0 < t <= 3600";
            } else {
                options.raw_given = true;
                options.raw = value;
            }
        } else if (word.size() > 1 && word[0] == '-' && word.find('=') == std::string::npos) {
            return "unknown option " + word;
        } else if (options.verb.empty()) {
            options.verb = word;
        } else {
            options.arguments.push_back(word);
        }
    }
    return "";
}
