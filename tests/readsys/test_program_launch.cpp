#include <gtest/gtest.h>

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <utility>

#include "capture_stdout.h"
#include "line_source.h"
#include "probe_scene.h"
#include "program_launch.h"

namespace {

// What a reading command gives in one probe input mode: output, status.
std::pair<std::string, int> read_all(const char* command, ProbeInput input)
{
    set_probe_input(input);
    std::string output;
    LineSource in;
    EXPECT_TRUE(in.open(command)) << command;
    char buffer[64];
    while (in.gets(buffer, sizeof buffer) != nullptr) {
        output += buffer;
    }
    return {output, in.close()};
}

}  // namespace

// The program gets its standard output and no other descriptor of ours,
// and the launcher keeps none once the program is done.
TEST(ProgramLaunch, DescriptorsNeitherReachTheProgramNorOutliveIt)
{
    ProbeScene scene("");
    scene.write_tool("/bin/fds", "#!/bin/sh\nls -l /proc/self/fd\n");
    scene.write_tool("/home/public/no-hashbang", "true\n");
    const int before = open_descriptors();
    ProgramCommand command;
    ASSERT_TRUE(parse_program_command("fds", command));
    ProgramReader reader;
    ASSERT_EQ(start_program_reader(command, reader), ProgramStart::started);
    ASSERT_EQ(open_descriptors(), before + 1) << "the read end only";
    struct stat info;
    ASSERT_EQ(fstat(fileno(reader.stream), &info), 0);
    std::string listing;
    char line[256];
    while (fgets(line, sizeof line, reader.stream) != nullptr) {
        listing += line;
    }
    close_program_reader(reader);
    EXPECT_EQ(occurrences(listing, "pipe:[" + std::to_string(info.st_ino) + "]"), 1) << listing;

    // With no standard input the file opened for "> FILE" lands on
    // descriptor 0 and must move.
    ASSERT_TRUE(parse_program_command("fds > /tmp/out", command));
    for (const bool no_input : {false, true}) {
        int status = -1;
        const int input = dup(STDIN_FILENO);
        if (no_input) {
            close(STDIN_FILENO);
        }
        EXPECT_EQ(run_program(command, status), ProgramStart::started);
        EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD) == -1, no_input) << "descriptor 0 kept";
        dup2(input, STDIN_FILENO);
        close(input);
        EXPECT_EQ(status, 0);
        const std::string written = scene.root().read("/tmp/out");
        EXPECT_EQ(occurrences(written, scene.root().host("/tmp/out")), 1) << written;
    }
    // Nothing started here: a child of someone else is not waited for.
    const pid_t other = fork();
    if (other == 0) {
        _exit(7);
    }
    int status = -1;
    for (const char* text : {"./no-hashbang", "no-such-program > /tmp/out"}) {
        ASSERT_TRUE(parse_program_command(text, command));
        run_program(command, status);
        start_program_reader(command, reader);
        close_program_reader(reader);
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(waitpid(other, &status, 0), other);
}

// A parent that ignores SIGCHLD has its children reaped for it: waitpid
// fails with ECHILD, and the launch must give up rather than wait on.
TEST(ProgramLaunch, AProgramReapedByTheSystemEndsTheWait)
{
    ProbeScene scene("");
    ProgramCommand command;
    ASSERT_TRUE(parse_program_command("true", command));
    struct sigaction ignore = {}, old = {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGCHLD, &ignore, &old);
    int status = 0;
    const ProgramStart start = run_program(command, status);
    sigaction(SIGCHLD, &old, nullptr);
    EXPECT_EQ(start, ProgramStart::started);
    EXPECT_EQ(status, -1);
}

// The system refuses to start a program: out of processes or memory is a
// failed probe for that pass (as popen failing), anything else the shell's
// status; no descriptor or child is left either way.
TEST(ProgramLaunch, AStartTheSystemRefusesLeavesNothingBehind)
{
    ProbeScene scene("");
    scene.write_tool("/bin/tool", "#!/bin/sh\necho up\n");
    ProgramCommand command;
    ASSERT_TRUE(parse_program_command("tool", command));
    static int refusal;
    set_spawn_call([](pid_t*, const char*, const posix_spawn_file_actions_t*, const posix_spawnattr_t*, char* const*,
                      char* const*) { return refusal; });
    const struct {
        int error;
        ProgramStart start;
    } kRefusals[] = {{EAGAIN, ProgramStart::failed},
                     {ENOMEM, ProgramStart::failed},
                     {EACCES, ProgramStart::started},
                     {ENOEXEC, ProgramStart::needs_shell}};
    for (const auto& row : kRefusals) {
        refusal = row.error;
        const int before = open_descriptors();
        ProgramReader reader;
        EXPECT_EQ(start_program_reader(command, reader), row.start) << strerror(row.error);
        EXPECT_EQ(reader.pid, -1) << strerror(row.error);
        if (reader.stream != nullptr) {
            close_program_reader(reader);
        }
        EXPECT_EQ(open_descriptors(), before) << strerror(row.error);
    }
    set_spawn_call(nullptr);
    int status = 0;
    EXPECT_EQ(run_program(command, status), ProgramStart::started);
    EXPECT_EQ(status, 0);
}

TEST(ProgramLaunch, PlainProgramCallsAreTheOnlyOnesStartedWithoutAShell)
{
    ProgramCommand program;
    ASSERT_TRUE(parse_program_command("./get_temperature > /tmp/temperature \n", program));
    EXPECT_EQ(program.words, std::vector<std::string>{"./get_temperature"});
    EXPECT_EQ(program.output, "/tmp/temperature");
    ASSERT_TRUE(parse_program_command("iostat -c", program));
    EXPECT_EQ(program.words, (std::vector<std::string>{"iostat", "-c"}));
    EXPECT_EQ(program.output, "");
    for (const char* shell : {"cat /tmp/vi0 | grep x", "iostat -c; reboot", "iostat\nreboot", "echo $HOME", "ls *",
                              "echo 'a b'", "x=1 iostat", "exit 3", "cd /tmp", "iostat > ", "a > b > c",
                              "iostat >/tmp/x", "iostat 2> /tmp/x", "iostat < /tmp/x", "~/tool", "", " \n"}) {
        EXPECT_FALSE(parse_program_command(shell, program)) << shell;
    }
}

TEST(ProgramLaunch, StatusOutputAndFilesAreTheShells)
{
    ProbeScene scene("");
    scene.write_tool("/bin/fails", "#!/bin/sh\necho partial\nexit 3\n");
    scene.write_tool("/bin/say", "#!/bin/sh\necho \"$@\"\n");
    scene.write_tool("/home/public/no-hashbang", "echo read by the shell\n");
    scene.write("/home/public/not-executable", "#!/bin/sh\necho never\n");
    const struct {
        const char* command;
        unsigned long processes;  // started directly
    } kReads[] = {{"fails", 1},          {"say -c /data/x", 1},          {"/bin/say", 1},
                  {"say > /tmp/out", 1}, {"no-such-program-here -c", 0}, {"./not-executable", 0},
                  {"./no-hashbang", 0}};
    for (const auto& read : kReads) {
        const char* command = read.command;
        const unsigned long programs = programs_started();
        const auto direct = read_all(command, ProbeInput::in_process);
        EXPECT_EQ(programs_started() - programs, read.processes) << command;
        EXPECT_EQ(direct, read_all(command, ProbeInput::literal_shell)) << command;
    }
    EXPECT_EQ(read_all("no-such-program-here", ProbeInput::in_process).second, 127 << 8);

    for (const char* command : {"./no-hashbang > /tmp/out", "say a b > /tmp/out \n", "fails > /tmp/out",
                                "no-such-program-here > /tmp/out", "say > /no-such-folder/out"}) {
        std::pair<int, std::string> got[2];
        for (int literal = 0; literal < 2; ++literal) {
            scene.write("/tmp/out", "old contents\n");
            set_probe_input(literal != 0 ? ProbeInput::literal_shell : ProbeInput::in_process);
            got[literal].first = run_command(command);
            got[literal].second = scene.root().read("/tmp/out");
        }
        EXPECT_EQ(got[0], got[1]) << command;
    }
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "every program waited for";
    EXPECT_EQ(errno, ECHILD);
}
