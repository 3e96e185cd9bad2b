#include "fleet_server.h"

#include <httplib.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <thread>

#include "fleet_api.h"
#include "fleet_guard.h"
#include "fleet_page.h"
#include "metrics.h"

namespace fleet {
namespace {

constexpr int kFine = 0;
constexpr int kFailed = 1;
constexpr int kBadInput = 2;

const char* const kJson = "application/json";

int fail(int status, const std::string& reason) {
    std::fprintf(stderr, "oledctl: %s\n", reason.c_str());
    return status;
}

void send(httplib::Response& response, const Reply& reply) {
    response.status = reply.status;
    response.set_content(reply.body, kJson);
}

// Refuses what does not come from the holder of the token through a page
// of ours; everything else goes on to the routes.
httplib::Server::HandlerResponse guard(const httplib::Request& request, httplib::Response& response,
                                       const std::string& token) {
    const std::string host = request.get_header_value("Host");
    // A scrape names the server as its config does, a host name too; a
    // page that rebinds a name to us cannot send the token it lacks.
    if (request.path == "/metrics") {
        if (same_token(request.get_header_value("Authorization"), "Bearer " + token)) {
            return httplib::Server::HandlerResponse::Unhandled;
        }
        response.status = 401;
        response.set_header("WWW-Authenticate", "Bearer");
        response.set_content("the session token is missing or wrong: send 'Authorization: Bearer TOKEN'\n",
                             "text/plain; charset=utf-8");
        return httplib::Server::HandlerResponse::Handled;
    }
    std::string reason;
    if (!host_allowed(host)) {
        reason = "unexpected Host header: open the page by the address oledctl serve printed";
    } else if (request.path.compare(0, 5, "/api/") == 0) {
        if (!same_token(request.get_header_value(kTokenHeader), token)) {
            reason = std::string("the session token is missing or wrong: send it in the ") + kTokenHeader + " header";
        } else if (!origin_allowed(request.get_header_value("Origin"), host)) {
            reason = "requests from other pages are refused";
        }
    }
    if (reason.empty()) return httplib::Server::HandlerResponse::Unhandled;
    send(response, refusal(403, reason));
    return httplib::Server::HandlerResponse::Handled;
}

void add_routes(httplib::Server& server, Api& api) {
    server.Get("/", [](const httplib::Request&, httplib::Response& response) {
        response.set_content(kPageHtml, "text/html; charset=utf-8");
    });
    server.Get("/fleet.css", [](const httplib::Request&, httplib::Response& response) {
        response.set_content(kPageCss, "text/css; charset=utf-8");
    });
    server.Get("/fleet.js", [](const httplib::Request&, httplib::Response& response) {
        response.set_content(kPageScript, "text/javascript; charset=utf-8");
    });
    server.Get("/metrics", [&api](const httplib::Request&, httplib::Response& response) {
        const Reply reply = api.scrape();
        response.status = reply.status;
        response.set_content(reply.body, reply.status == 200 ? metrics::kContentType : "text/plain; charset=utf-8");
    });
    server.Get("/api/keys", [&api](const httplib::Request&, httplib::Response& response) { send(response, api.keys()); });
    server.Get("/api/boxes", [&api](const httplib::Request&, httplib::Response& response) { send(response, api.list()); });
    server.Get(R"(/api/boxes/([^/]+))", [&api](const httplib::Request& request, httplib::Response& response) {
        send(response, api.read(request.matches[1]));
    });
    server.Post("/api/set", [&api](const httplib::Request& request, httplib::Response& response) {
        send(response, api.change(request.body));
    });
    server.Post("/api/led-test", [&api](const httplib::Request& request, httplib::Response& response) {
        send(response, api.led_test(request.body));
    });
}

// Waits for Ctrl-C (or SIGTERM, SIGHUP) while the server runs; false
// when the server ended by itself.
bool wait_for_stop_signal(const sigset_t& signals, const std::atomic<bool>& serving) {
    const timespec tick{0, 200 * 1000 * 1000};
    while (serving) {
        if (sigtimedwait(&signals, nullptr, &tick) > 0) return true;
    }
    return false;
}

}  // namespace

int serve(const CliOptions& options) {
    std::string address;
    int port = 0;
    const std::string error = parse_listen(options.listen.empty() ? kDefaultListen : options.listen, address, port);
    if (!error.empty()) return fail(kBadInput, error);
    std::string token;
    if (!options.token_file.empty()) {
        const std::string unusable = read_token_file(options.token_file, token);
        if (!unusable.empty()) return fail(kBadInput, unusable);
    } else {
        token = new_token();
        if (token.empty()) return fail(kFailed, std::string("no random bytes for the session token: ") + std::strerror(errno));
    }

    // Only this thread takes the stop signals; the server's threads,
    // started after this, inherit the mask.
    sigset_t signals;
    sigemptyset(&signals);
    for (int number : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, number);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    Api api(Network{options.port, options.iface, options.timeout, options.subnet_addresses, options.key});
    httplib::Server server;
    server.set_default_headers({{"Cache-Control", "no-store"},
                                {"X-Content-Type-Options", "nosniff"},
                                {"X-Frame-Options", "DENY"},
                                {"Referrer-Policy", "no-referrer"},
                                {"Content-Security-Policy", "default-src 'self'; frame-ancestors 'none'"}});
    // The library's default adds SO_REUSEPORT, which lets a second
    // server take the same port and half of the requests.
    server.set_socket_options([](socket_t sock) {
        int yes = 1;
        setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    server.set_pre_routing_handler(
        [&token](const httplib::Request& request, httplib::Response& response) { return guard(request, response, token); });
    add_routes(server, api);
    if (!server.bind_to_port(address.c_str(), port)) {
        return fail(kFailed, "cannot listen on " + address + ":" + std::to_string(port) + ": " + std::strerror(errno));
    }
    if (!is_loopback(address)) {
        std::fprintf(stderr,
                     "oledctl: warning: listening on %s, not on loopback: whoever reaches this PC and learns the "
                     "token can drive the boxes\n",
                     address.c_str());
    }
    const std::string shown = address == "0.0.0.0" ? "127.0.0.1" : address;
    if (options.token_file.empty()) {
        std::printf("fleet page: http://%s:%d/?token=%s\n(Ctrl-C ends it)\n", shown.c_str(), port, token.c_str());
    } else {
        // The token stays in its file, out of logs that keep this output.
        std::printf("fleet page: http://%s:%d/?token=TOKEN (the token in %s)\n(Ctrl-C ends it)\n", shown.c_str(),
                    port, options.token_file.c_str());
    }
    std::fflush(stdout);

    std::atomic<bool> serving{true};
    std::thread listener([&] {
        server.listen_after_bind();
        serving = false;
    });
    const bool asked = wait_for_stop_signal(signals, serving);
    // A stop before the listener has begun does nothing: repeat it.
    while (serving) {
        server.stop();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    listener.join();
    if (!asked) return fail(kFailed, "the web server stopped");
    std::printf("stopped\n");
    return kFine;
}

}  // namespace fleet
