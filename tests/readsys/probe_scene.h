#ifndef OLED_TESTS_READSYS_PROBE_SCENE_H
#define OLED_TESTS_READSYS_PROBE_SCENE_H

#include <string>
#include <vector>

#include "line_source.h"
#include "temp_root.h"

// A box for the probes: a copy of one fixture root (tests/fixtures/NAME,
// or an empty root for ""), entered as oledd-sim enters it: the working
// directory is ROOT/home/public and ROOT/bin comes first on the PATH.
// The tools run in the C locale, as on the box. Restores all on exit.
class ProbeScene {
public:
    explicit ProbeScene(const std::string& fixture, ProbeInput input = ProbeInput::in_process);
    ~ProbeScene();
    ProbeScene(const ProbeScene&) = delete;
    ProbeScene& operator=(const ProbeScene&) = delete;

    const TempRoot& root() const { return root_; }
    void write(const std::string& box_path, const std::string& content) const { root_.write(box_path, content); }
    // A shell script at an appliance path, executable.
    void write_tool(const std::string& box_path, const std::string& script) const;
    void remove(const std::string& box_path) const;

private:
    TempRoot root_;
    std::string old_dir_;
    std::string old_path_;
    ProbeInput old_input_;
};

// While it lives, no file descriptor can be opened: popen cannot start a
// command and no file can be read.
class NoFreeDescriptors {
public:
    NoFreeDescriptors();
    ~NoFreeDescriptors();
    NoFreeDescriptors(const NoFreeDescriptors&) = delete;
    NoFreeDescriptors& operator=(const NoFreeDescriptors&) = delete;

private:
    unsigned long saved_limit_;
};

// Descriptors this process has open.
int open_descriptors();

// What a probe gives: its text, or kThrows when it throws out_of_range.
extern const char kThrows[];
std::string outcome(std::string (*probe)());

#endif
