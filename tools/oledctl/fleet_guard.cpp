#include "fleet_guard.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "protocol.h"

namespace fleet {
namespace {

bool is_port(const std::string& text, int& port)
{
    if (text.empty() || text.size() > 5)
        return false;
    for (char c : text) {
        if (c < '0' || c > '9')
            return false;
    }
    port = std::atoi(text.c_str());
    return port >= 1 && port <= 65535;
}

}  // namespace

std::string new_token()
{
    unsigned char bytes[16];
    if (getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes))
        return "";
    std::string token;
    for (unsigned char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        token += digits;
    }
    return token;
}

std::string read_token_file(const std::string& path, std::string& token)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    if (!file || !(content << file.rdbuf()))
        return "cannot read the token file " + path;
    const std::string text = content.str();
    const char* const blank = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blank);
    const std::string trimmed =
        first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(blank) + 1 - first);
    // Short tokens can be guessed; spaces and control bytes cannot travel in a header.
    bool printable = trimmed.size() >= 16 && trimmed.size() <= 256;
    for (char c : trimmed)
        printable = printable && c > ' ' && c <= '~';
    if (!printable)
        return "token file " + path + ": the token must be 16 to 256 printable characters without spaces";
    token = trimmed;
    return "";
}

std::string default_token_path(int port)
{
    const std::string name = "oledctl-serve-" + std::to_string(port) + ".token";
    for (const char* variable : {"XDG_RUNTIME_DIR", "HOME"}) {
        const char* folder = std::getenv(variable);
        if (folder != nullptr && folder[0] == '/')
            return std::string(folder) + "/" + name;
    }
    return "";
}

std::string write_token_file(const std::string& path, const std::string& token)
{
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0)
        return "cannot write the token file " + path + ": " + std::strerror(errno);
    const std::string line = token + "\n";
    struct stat file {};
    std::string failure;
    if (::fstat(fd, &file) != 0) {
        failure = std::strerror(errno);
    } else if (!S_ISREG(file.st_mode) || file.st_uid != ::geteuid()) {
        failure = "not a file of this user";  // someone else's is not ours to fill
    } else if (::fchmod(fd, 0600) != 0 || ::ftruncate(fd, 0) != 0 ||
               ::write(fd, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        failure = std::strerror(errno);
    }
    if (::close(fd) != 0 && failure.empty())
        failure = std::strerror(errno);
    if (!failure.empty())
        return "cannot write the token file " + path + ": " + failure;
    return "";
}

bool same_token(const std::string& given, const std::string& token)
{
    if (token.empty() || given.size() != token.size())
        return false;
    unsigned char difference = 0;
    for (std::size_t i = 0; i < token.size(); ++i) {
        difference |= static_cast<unsigned char>(given[i] ^ token[i]);
    }
    return difference == 0;
}

bool host_allowed(const std::string& host)
{
    const std::size_t colon = host.rfind(':');
    int port = 0;
    if (colon != std::string::npos && !is_port(host.substr(colon + 1), port))
        return false;
    const std::string name = host.substr(0, colon);
    return name == "localhost" || protocol::is_ipv4(name);
}

bool origin_allowed(const std::string& origin, const std::string& host)
{
    return origin.empty() || origin == "http://" + host;
}

std::string parse_listen(const std::string& text, std::string& address, int& port)
{
    const std::size_t colon = text.find(':');
    address = text.substr(0, colon);
    port = kDefaultListenPort;
    if (!protocol::is_ipv4(address))
        return "bad listen address '" + text + "': expected IPv4[:PORT]";
    if (colon != std::string::npos && !is_port(text.substr(colon + 1), port)) {
        return "bad listen port in '" + text + "': expected 1..65535";
    }
    return "";
}

bool is_loopback(const std::string& address)
{
    return address.compare(0, 4, "127.") == 0;
}

}  // namespace fleet
