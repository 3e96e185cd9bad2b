// Arbitrary command output through every status probe, called the way the
// loops call them (probe_text). The first byte picks the probe, the rest is
// what its command prints: the status file itself for the file-printing
// commands, read in-process; for the two real tools the stand-ins below
// take the place of the program launcher.
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "fuzz_box.h"
#include "line_source.h"
#include "probes.h"
#include "program_launch.h"

namespace {

const uint8_t* g_output = nullptr;
size_t g_output_size = 0;
unsigned long g_launched = 0;

bool has_prefix(const std::string& text, const char* prefix)
{
    return text.compare(0, strlen(prefix), prefix) == 0;
}

bool only_digits_and_blanks(const std::string& text, size_t from)
{
    return text.find_first_not_of("0123456789 ", from) == std::string::npos;
}

bool cpu_valid(const std::string& text)
{
    return text.empty() || (has_prefix(text, "CPU:") && text.size() > 8 && text[text.size() - 1] == '%');
}

bool temperature_valid(const std::string& text)
{
    return has_prefix(text, "TEMP:") && text.size() <= 5 + 99 && only_digits_and_blanks(text, 5);
}

bool hdmi_valid(const std::string& text)
{
    // Empty when the page has no HotPlug row (the probe throws then).
    return text.empty() || text == "YES" || text == "NO";
}

bool vdec_valid(const std::string& text)
{
    return has_prefix(text, "VDEC:") && text.size() <= 5 + 1023;
}

bool vo_valid(const std::string& text)
{
    return has_prefix(text, "VO:") && text.find(';') != std::string::npos;
}

bool venc_valid(const std::string& text)
{
    return text.empty() || text == "VENC_TYPE:" || text == "VENC_TYPE:H264" || text == "VENC_TYPE:H265" ||
           text == "VENC_TYPE:MJPEG";
}

bool first_line_valid(const std::string& text)
{
    const std::string::size_type newline = text.find('\n');
    return text.size() <= 99 && (newline == std::string::npos || newline == text.size() - 1);
}

bool io_valid(const std::string& text)
{
    return text.size() <= 99;
}

bool ethernet_valid(const std::string& text)
{
    return text == "ETH_SPEED:NO LINK" || (has_prefix(text, "ETH_SPEED:") && only_digits_and_blanks(text, 10));
}

bool audio_valid(const std::string& text)
{
    // Empty when a short row leaves a digit of an older line in the
    // buffer (the probe throws then).
    return text.empty() || text == "NO_AI" || (has_prefix(text, "AIOSR:") && text.find("NO") == std::string::npos);
}

struct ProbeCase {
    std::string (*probe)();
    const char* file;  // appliance path of the status file; null for a tool
    bool (*valid)(const std::string&);
};

const ProbeCase kCases[] = {
    {CheckCpuFile, nullptr, cpu_valid},
    {CheckTemperature, nullptr, temperature_valid},
    {CheckHDMIFile, "/proc/umap/hdmi0", hdmi_valid},
    {CheckVdecFile, "/proc/umap/vdec", vdec_valid},
    {CheckVoFile, "/proc/umap/vo", vo_valid},
    {CheckVencFile, "/data/venc.ini", venc_valid},
    {CheckViFile, "/tmp/vi0", first_line_valid},
    {CheckVi1File, "/tmp/vi1", first_line_valid},
    {CheckIOFile, "/data/remserial.ini", io_valid},
    {CheckIO1File, "/data/remserial.ini", io_valid},
    {CheckEthspeedFile, "/sys/class/net/eth0/speed", ethernet_valid},
    {CheckAiFile, "/proc/umap/ai", audio_valid},
};

}  // namespace

// The tools' stand-ins, linked in place of the probes' program launcher:
// only the two real tools may get here, file-printing commands are read
// in-process, and nothing goes through the shell.
ProgramStart start_program_reader(const ProgramCommand& command, ProgramReader& reader)
{
    if (command.words != std::vector<std::string>{"iostat", "-c"} || !command.output.empty()) {
        fprintf(stderr, "unexpected program: %s\n", command.words[0].c_str());
        abort();
    }
    ++g_launched;
    reader.pid = -1;
    reader.status = 0;
    reader.stream = fmemopen(const_cast<uint8_t*>(g_output), g_output_size, "r");
    return reader.stream != nullptr ? ProgramStart::started : ProgramStart::failed;
}

int close_program_reader(ProgramReader& reader)
{
    fclose(reader.stream);
    reader.stream = nullptr;
    return reader.status;
}

ProgramStart run_program(const ProgramCommand& command, int& status)
{
    if (command.words != std::vector<std::string>{"./get_temperature"} || command.output != "/tmp/temperature") {
        fprintf(stderr, "unexpected program: %s\n", command.words[0].c_str());
        abort();
    }
    ++g_launched;
    write_box_file("/tmp/temperature", g_output, g_output_size);
    status = 0;
    return ProgramStart::started;
}

unsigned long programs_started()
{
    return g_launched;
}

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    silence_stdout();
    fuzz_box_root();
    write_box_file("/home/public/get_temperature", std::string("#!/bin/sh\n"));
    set_probe_input(ProbeInput::in_process);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) {
        return 0;
    }
    const ProbeCase& chosen = kCases[data[0] % (sizeof kCases / sizeof kCases[0])];
    g_output = data + 1;
    g_output_size = size - 1;
    if (chosen.file != nullptr) {
        write_box_file(chosen.file, g_output, g_output_size);
    }
    const unsigned long launched = g_launched;
    const std::string text = probe_text(chosen.probe);
    if (!chosen.valid(text)) {
        fprintf(stderr, "probe %d gave an impossible text: \"%s\"\n", data[0] % 12, text.c_str());
        abort();
    }
    // The file probes never start a process; each tool probe exactly one.
    if (g_launched - launched != (chosen.file == nullptr ? 1u : 0u)) {
        abort();
    }
    return 0;
}
