#ifndef OLED_TESTS_MAIN_CONTROL_FIXTURE_H
#define OLED_TESTS_MAIN_CONTROL_FIXTURE_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "control_datagram.h"
#include "temp_root.h"

// Replies collected instead of sent.
struct SentReply {
    std::string ip;
    unsigned int port;
    std::string payload;
};

class CollectReplies : public ReplySender {
public:
    void send(const char* ip, unsigned int port, const std::string& payload) override
    {
        sent.push_back(SentReply{ip, port, payload});
    }
    std::vector<SentReply> sent;
};

// A fresh box with the default settings saved, the run-time switches as
// start-up leaves them, and the handler's output collected per datagram.
class ControlDatagram : public ::testing::Test {
protected:
    void SetUp() override;

    // Runs one datagram from 192.168.1.1:40000 on a box at local; returns
    // whether it was obeyed. Its output lands in printed.
    bool handle(const std::string& text, const std::string& local = "192.168.1.20");
    bool handle_bytes(const char* data, long length, const std::string& local = "192.168.1.20");

    // The settings file as saved with the defaults, with key=value lines
    // replaced by the given ones.
    std::string defaults_with(const std::vector<std::string>& lines) const;
    std::string settings_file() const { return root.read("/data/oled.ini"); }

    static int count(const std::string& text, const std::string& what);

    TempRoot root;
    CollectReplies replies;
    std::string printed;
};

#endif
