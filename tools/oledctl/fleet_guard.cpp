#include "fleet_guard.h"

#include <arpa/inet.h>
#include <sys/random.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "protocol.h"

namespace fleet {
namespace {

bool is_port(const std::string& text, int& port) {
    if (text.empty() || text.size() > 5) return false;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
    }
    port = std::atoi(text.c_str());
    return port >= 1 && port <= 65535;
}

}  // namespace

std::string new_token() {
    unsigned char bytes[16];
    if (getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes)) return "";
    std::string token;
    for (unsigned char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        token += digits;
    }
    return token;
}

std::string read_token_file(const std::string& path, std::string& token) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    if (!file || !(content << file.rdbuf())) return "cannot read the token file " + path;
    const std::string text = content.str();
    const char* const blank = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blank);
    const std::string trimmed =
        first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(blank) + 1 - first);
    // Short tokens can be guessed; spaces and control bytes cannot travel in a header.
    bool printable = trimmed.size() >= 16 && trimmed.size() <= 256;
    for (char c : trimmed) printable = printable && c > ' ' && c <= '~';
    if (!printable) return "token file " + path + ": the token must be 16 to 256 printable characters without spaces";
    token = trimmed;
    return "";
}

bool same_token(const std::string& given, const std::string& token) {
    if (token.empty() || given.size() != token.size()) return false;
    unsigned char difference = 0;
    for (std::size_t i = 0; i < token.size(); ++i) {
        difference |= static_cast<unsigned char>(given[i] ^ token[i]);
    }
    return difference == 0;
}

bool host_allowed(const std::string& host) {
    const std::size_t colon = host.rfind(':');
    int port = 0;
    if (colon != std::string::npos && !is_port(host.substr(colon + 1), port)) return false;
    const std::string name = host.substr(0, colon);
    return name == "localhost" || protocol::is_ipv4(name);
}

bool origin_allowed(const std::string& origin, const std::string& host) {
    return origin.empty() || origin == "http://" + host;
}

std::string parse_listen(const std::string& text, std::string& address, int& port) {
    const std::size_t colon = text.find(':');
    address = text.substr(0, colon);
    port = kDefaultListenPort;
    if (!protocol::is_ipv4(address)) return "bad listen address '" + text + "': expected IPv4[:PORT]";
    if (colon != std::string::npos && !is_port(text.substr(colon + 1), port)) {
        return "bad listen port in '" + text + "': expected 1..65535";
    }
    return "";
}

bool is_loopback(const std::string& address) { return address.compare(0, 4, "127.") == 0; }

}  // namespace fleet
