#include "cli_options.h"

#include <getopt.h>

#include <cstdio>
#include <cstdlib>

#include "protocol.h"
#include "signature_format.h"
#include "signing_key.h"
#include "subnets.h"

namespace {

bool read_port(const std::string& text, unsigned short& port)
{
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || value < 1 || value > 65535)
        return false;
    port = static_cast<unsigned short>(value);
    return true;
}

// Waiting longer than an hour is a typing error, not a plan.
bool read_timeout(const std::string& text, double& seconds)
{
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !(value > 0.0) || value > 3600.0)
        return false;
    seconds = value;
    return true;
}

}  // namespace

void warn_if_readable(const std::string& path)
{
    if (readable_by_others(path)) {
        std::fprintf(stderr, "oledctl: warning: %s is readable by others than its owner: chmod 600 %s\n", path.c_str(),
                     path.c_str());
    }
}

std::string parse_cli(int argc, char** argv, CliOptions& options)
{
    enum Long {
        kJson = 256,
        kStats,
        kNoCheck,
        kAll,
        kViaGroup,
        kBox,
        kIface,
        kPort,
        kTimeout,
        kRaw,
        kListen,
        kSubnet,
        kTokenFile,
        kMetricsTokenFile,
        kFormat,
        kOutput,
        kKeyFile
    };
    static const option kOptions[] = {
        {"help", no_argument, nullptr, 'h'},
        {"all", no_argument, nullptr, kAll},
        {"via-group", no_argument, nullptr, kViaGroup},
        {"json", no_argument, nullptr, kJson},
        {"stats", no_argument, nullptr, kStats},
        {"no-check", no_argument, nullptr, kNoCheck},
        {"box", required_argument, nullptr, kBox},
        {"iface", required_argument, nullptr, kIface},
        {"port", required_argument, nullptr, kPort},
        {"timeout", required_argument, nullptr, kTimeout},
        {"raw", required_argument, nullptr, kRaw},
        {"listen", required_argument, nullptr, kListen},
        {"subnet", required_argument, nullptr, kSubnet},
        {"token-file", required_argument, nullptr, kTokenFile},
        {"metrics-token-file", required_argument, nullptr, kMetricsTokenFile},
        {"format", required_argument, nullptr, kFormat},
        {"output", required_argument, nullptr, kOutput},
        {"key-file", required_argument, nullptr, kKeyFile},
        {nullptr, 0, nullptr, 0},
    };
    opterr = 0;  // the reasons below are ours
    optind = 0;  // from the start, also when called again (the tests)
    int given;
    // "-": the verb and its items come back in their order, options may
    // stand anywhere; ":": a missing value is told apart.
    while ((given = getopt_long(argc, argv, "-:h", kOptions, nullptr)) != -1) {
        const std::string value = optarg != nullptr ? optarg : "";
        switch (given) {
            case 1:  // a word that is no option: the verb, then its items
                if (options.verb.empty()) {
                    options.verb = value;
                } else {
                    options.arguments.push_back(value);
                }
                break;
            case 'h':
                options.help = true;
                break;
            case kAll:
                options.all = true;
                break;
            case kViaGroup:
                options.via_group = true;
                break;
            case kJson:
                options.json = true;
                break;
            case kStats:
                options.stats = true;
                break;
            case kNoCheck:
                options.no_check = true;
                break;
            case kBox:
                if (!protocol::is_ipv4(value))
                    return "bad address '" + value + "': expected dotted IPv4";
                options.box = value;
                break;
            case kIface:
                options.iface = value;
                break;
            case kListen:
                options.listen = value;
                break;
            case kTokenFile:
                options.token_file = value;
                break;
            case kMetricsTokenFile:
                options.metrics_token_file = value;
                break;
            case kFormat:
                if (value != "text" && value != "json" && value != "prometheus-sd") {
                    return "bad format '" + value + "': text, json or prometheus-sd";
                }
                options.format = value;
                break;
            case kOutput:
                options.output = value;
                break;
            case kKeyFile: {
                const std::string error = signing::read_key_file(value, options.key);
                if (!error.empty())
                    return error;
                warn_if_readable(value);
                break;
            }
            case kSubnet: {
                if (options.subnet_given)
                    return "--subnet given twice: list the subnets in one, joined by commas";
                const std::string error = subnets::parse(value, options.subnet_addresses);
                if (!error.empty())
                    return error;
                options.subnet_given = true;
                break;
            }
            case kPort:
                if (!read_port(value, options.port))
                    return "bad port '" + value + "': expected 1..65535";
                break;
            case kTimeout:
                if (!read_timeout(value, options.timeout))
                    return "bad timeout '" + value + "': seconds, 0 < t <= 3600";
                break;
            case kRaw:
                options.raw_given = true;
                options.raw = value;
                break;
            case ':':
                return std::string(argv[optind - 1]) + " needs a value";
            default: {
                const std::string word = argv[optind - 1];
                return "unknown option " +
                       (optopt != 0 ? "-" + std::string(1, static_cast<char>(optopt)) : word.substr(0, word.find('=')));
            }
        }
    }
    return "";
}
