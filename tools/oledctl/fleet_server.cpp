#include "fleet_server.h"

#include <httplib.h>
#include <signal.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <thread>

#include "fleet_api.h"
#include "fleet_guard.h"
#include "fleet_page.h"
#include "metrics.h"
#include "probe.h"

namespace fleet {
namespace {

constexpr int kFine = 0;
constexpr int kFailed = 1;
constexpr int kBadInput = 2;

const char* const kJson = "application/json";
// The API's largest request, items for every box of a sweep, is far below.
constexpr std::size_t kMaxBody = 64 * 1024;
// A probe of a silent box holds a worker for its whole wait; Prometheus
// spreads a fleet's scrapes over the interval, so with a 2 s --timeout
// this many wait for about 120 silent boxes a second, 3,600 in a 30 s
// round. Past that the queue grows and every scrape times out. An idle
// worker costs a stack's untouched pages.
constexpr std::size_t kWorkers = 256;

int fail(int status, const std::string& reason)
{
    std::fprintf(stderr, "oledctl: %s\n", reason.c_str());
    return status;
}

void send(httplib::Response& response, const Reply& reply)
{
    response.status = reply.status;
    response.set_content(reply.body, kJson);
}

// The status that refuses a request for its method or body, 0 for none.
// The library reads a body whole before the routes, and one without a
// stated length until the sender stops: only a stated, small length passes.
int body_refusal(const httplib::Request& request, std::string& reason)
{
    const bool bodiless = request.method == "GET" || request.method == "HEAD";
    if (!bodiless && request.path.compare(0, 5, "/api/") != 0) {
        reason = "only GET is served outside /api/";
        return 405;
    }
    const std::string length = request.get_header_value("Content-Length");
    if (request.has_header("Transfer-Encoding") || (!bodiless && length.empty())) {
        reason = "send the request body with a Content-Length";
        return 411;
    }
    // strtoul gives its largest number for a longer one.
    if (length.find_first_not_of("0123456789") != std::string::npos ||
        std::strtoul(length.c_str(), nullptr, 10) > kMaxBody) {
        reason = "a request body may have at most 64 KiB";
        return 413;
    }
    return 0;
}

void send_metrics(httplib::Response& response, const Reply& reply)
{
    response.status = reply.status;
    response.set_content(reply.body, reply.status == 200 ? metrics::kContentType : "text/plain; charset=utf-8");
}

// Refuses what does not come from the holder of the token through a page
// of ours, and bodies that are not worth reading, before the body is read;
// everything else goes on to the routes.
httplib::Server::HandlerResponse guard(const httplib::Request& request, httplib::Response& response,
                                       const std::string& token, const std::string& metrics_token)
{
    std::string why_not;
    const int status = body_refusal(request, why_not);
    if (status != 0) {
        if (status == 405)
            response.set_header("Allow", "GET, HEAD");
        send(response, refusal(status, why_not));
        return httplib::Server::HandlerResponse::Handled;
    }
    const std::string host = request.get_header_value("Host");
    // A scrape names the server as its config does, a host name too; a
    // page that rebinds a name to us cannot send the token it lacks.
    if (request.path == "/metrics" || request.path == "/probe") {
        const std::string given = request.get_header_value("Authorization");
        if (same_token(given, "Bearer " + token) ||
            (!metrics_token.empty() && same_token(given, "Bearer " + metrics_token))) {
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
    if (reason.empty())
        return httplib::Server::HandlerResponse::Unhandled;
    send(response, refusal(403, reason));
    return httplib::Server::HandlerResponse::Handled;
}

void add_routes(httplib::Server& server, Api& api, const Network& network)
{
    server.Get("/", [](const httplib::Request&, httplib::Response& response) {
        response.set_content(kPageHtml, "text/html; charset=utf-8");
    });
    server.Get("/fleet.css", [](const httplib::Request&, httplib::Response& response) {
        response.set_content(kPageCss, "text/css; charset=utf-8");
    });
    server.Get("/fleet.js", [](const httplib::Request&, httplib::Response& response) {
        response.set_content(kPageScript, "text/javascript; charset=utf-8");
    });
    server.Get("/metrics",
               [&api](const httplib::Request&, httplib::Response& response) { send_metrics(response, api.scrape()); });
    server.Get("/probe", [&network](const httplib::Request& request, httplib::Response& response) {
        // The library gzips a text reply the scraper accepts so, after this
        // handler: for a probe's few hundred bytes zlib's 256 KiB of state
        // cost more than the probe. The request is the library's own
        // non-const object, handed over as const.
        const_cast<httplib::Request&>(request).headers.erase("Accept-Encoding");
        std::vector<std::string> targets;
        const auto given = request.params.equal_range("target");
        for (auto param = given.first; param != given.second; ++param)
            targets.push_back(param->second);
        send_metrics(response, probe::answer(targets, request.get_header_value(probe::kScrapeTimeoutHeader), network));
    });
    server.Get("/api/keys",
               [&api](const httplib::Request&, httplib::Response& response) { send(response, api.keys()); });
    server.Get("/api/boxes",
               [&api](const httplib::Request&, httplib::Response& response) { send(response, api.list()); });
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
bool wait_for_stop_signal(const sigset_t& signals, const std::atomic<bool>& serving)
{
    const timespec tick{0, 200 * 1000 * 1000};
    while (serving) {
        if (sigtimedwait(&signals, nullptr, &tick) > 0)
            return true;
    }
    return false;
}

}  // namespace

int serve(const CliOptions& options)
{
    std::string address;
    int port = 0;
    const std::string error = parse_listen(options.listen.empty() ? kDefaultListen : options.listen, address, port);
    if (!error.empty())
        return fail(kBadInput, error);
    std::string token;
    std::string token_file = options.token_file;
    std::string metrics_token;
    if (!options.metrics_token_file.empty()) {
        const std::string unusable = read_token_file(options.metrics_token_file, metrics_token);
        if (!unusable.empty())
            return fail(kBadInput, unusable);
        warn_if_readable(options.metrics_token_file);
    }
    if (!token_file.empty()) {
        const std::string unusable = read_token_file(token_file, token);
        if (!unusable.empty())
            return fail(kBadInput, unusable);
        warn_if_readable(token_file);
        if (token == metrics_token)
            return fail(kBadInput, "the scrape token must differ from the session token");
    } else {
        token = new_token();
        if (token.empty())
            return fail(kFailed, std::string("no random bytes for the session token: ") + std::strerror(errno));
        token_file = default_token_path(port);
        if (token_file.empty())
            return fail(kFailed, "no folder for the token file in XDG_RUNTIME_DIR or HOME: give --token-file");
        const std::string unwritten = write_token_file(token_file, token);
        if (!unwritten.empty())
            return fail(kFailed, unwritten);
    }

    // Only this thread takes the stop signals; the server's threads,
    // started after this, inherit the mask.
    sigset_t signals;
    sigemptyset(&signals);
    for (int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, number);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    const Network network{options.port, options.iface, options.timeout, options.subnet_addresses, options.key};
    Api api(network);
    httplib::Server server;
    server.new_task_queue = [] { return new httplib::ThreadPool(kWorkers); };
    // The library writes a reply's head and body apart; with Nagle's wait
    // the body would sit out the scraper's delayed acknowledgement (40 ms).
    server.set_tcp_nodelay(true);
    server.set_default_headers({{"Cache-Control", "no-store"},
                                {"X-Content-Type-Options", "nosniff"},
                                {"X-Frame-Options", "DENY"},
                                {"Referrer-Policy", "no-referrer"},
                                {"Content-Security-Policy", "default-src 'self'; frame-ancestors 'none'"}});
    // The library's default adds SO_REUSEPORT, which lets a second
    // server take the same port and half of the requests.
    socket_t listening = INVALID_SOCKET;
    server.set_socket_options([&listening](socket_t sock) {
        int yes = 1;
        setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        listening = sock;
    });
    // A connection kept open holds a worker that wakes every 10 ms to look
    // for the next request: with a scraper's pool of idle connections that
    // costs more than a new connection for each scrape.
    server.set_keep_alive_max_count(1);
    // Each connection holds a worker until its headers are in, and the
    // library has no deadline for them: a client silent for a second
    // between two lines is let go, so slow connections sending a line every
    // few seconds cannot hold every worker for long.
    server.set_read_timeout(1, 0);
    server.set_pre_routing_handler([&](const httplib::Request& request, httplib::Response& response) {
        return guard(request, response, token, metrics_token);
    });
    // A client that asks before it sends a body (Expect: 100-continue)
    // learns the refusal and sends nothing.
    server.set_expect_100_continue_handler([&](const httplib::Request& request, httplib::Response& response) {
        return guard(request, response, token, metrics_token) == httplib::Server::HandlerResponse::Handled
                   ? response.status
                   : 100;
    });
    server.set_payload_max_length(kMaxBody);
    add_routes(server, api, network);
    if (!server.bind_to_port(address.c_str(), port)) {
        return fail(kFailed, "cannot listen on " + address + ":" + std::to_string(port) + ": " + std::strerror(errno));
    }
    // The library's queue of 5 connections drops a burst of scrapes, and a
    // dropped one waits a second for its retry; listen again to widen it.
    ::listen(listening, SOMAXCONN);
    if (!is_loopback(address)) {
        std::fprintf(stderr,
                     "oledctl: warning: listening on %s, not on loopback: whoever reaches this PC and learns the "
                     "token can drive the boxes\n",
                     address.c_str());
    }
    const std::string shown = address == "0.0.0.0" ? "127.0.0.1" : address;
    // The token stays in its file, out of logs that keep this output.
    std::printf("fleet page: http://%s:%d/?token=TOKEN (the token in %s)\n(Ctrl-C ends it)\n", shown.c_str(), port,
                token_file.c_str());
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
    if (!asked)
        return fail(kFailed, "the web server stopped");
    std::printf("stopped\n");
    return kFine;
}

}  // namespace fleet
