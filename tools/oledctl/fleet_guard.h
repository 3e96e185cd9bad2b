#ifndef OLEDCTL_FLEET_GUARD_H
#define OLEDCTL_FLEET_GUARD_H

#include <string>

// Who may drive the boxes through the fleet page: the one who holds the
// session token, from a browser tab of this server's own.
namespace fleet {

constexpr const char* kDefaultListen = "127.0.0.1";
constexpr int kDefaultListenPort = 16180;
constexpr const char* kTokenHeader = "X-Fleet-Token";

// 32 hexadecimal digits from the kernel's random source; empty when it
// could not be read.
std::string new_token();

// The token an operator keeps in a file, as Prometheus reads its
// credentials file: surrounding white space dropped. Empty result: fine,
// else a one-line reason.
std::string read_token_file(const std::string& path, std::string& token);

// Where serve keeps a token it made, so that it stays out of logs and
// terminals: the user's runtime folder (only they can enter it, and it is
// emptied at logout), else the home folder. Empty when neither is known.
std::string default_token_path(int port);

// Writes the token readable by its owner only (mode 0600, also over an
// older file). Empty result: fine, else a one-line reason.
std::string write_token_file(const std::string& path, const std::string& token);

// Takes as long for a guess that is right up to its last digit as for
// one wrong from the first, so timing tells nothing about the token.
bool same_token(const std::string& given, const std::string& token);

// A Host header naming this server by address or as localhost. A page
// that rebinds its own hostname to 127.0.0.1 still sends that hostname.
bool host_allowed(const std::string& host);

// A browser names the page a request comes from; only our own page may
// send one. Tools that send no Origin are judged by the token alone.
bool origin_allowed(const std::string& origin, const std::string& host);

// "ADDRESS" or "ADDRESS:PORT", IPv4. Empty result: fine, else the reason.
std::string parse_listen(const std::string& text, std::string& address, int& port);

bool is_loopback(const std::string& address);

}  // namespace fleet

#endif
