#include "probe_scene.h"

#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

ProbeScene::ProbeScene(const std::string& fixture, ProbeInput input) : old_input_(probe_input())
{
    namespace fs = std::filesystem;
    if (!fixture.empty()) {
        fs::copy(fs::path(OLED_FIXTURES) / fixture, root_.path(), fs::copy_options::recursive);
    }
    root_.make_folder("/home/public");
    root_.make_folder("/tmp");
    old_dir_ = fs::current_path().string();
    fs::current_path(root_.host("/home/public"));
    const char* path = getenv("PATH");
    old_path_ = path != nullptr ? path : "/usr/bin:/bin";
    setenv("PATH", (root_.host("/bin") + ":" + old_path_).c_str(), 1);
    setenv("LC_ALL", "C", 1);
    set_probe_input(input);
}

ProbeScene::~ProbeScene()
{
    set_probe_input(old_input_);
    setenv("PATH", old_path_.c_str(), 1);
    if (chdir(old_dir_.c_str()) != 0) {
        perror("chdir");
    }
}

void ProbeScene::write_tool(const std::string& box_path, const std::string& script) const
{
    root_.write(box_path, script);
    chmod(root_.host(box_path).c_str(), 0755);
}

void ProbeScene::remove(const std::string& box_path) const
{
    std::filesystem::remove(root_.host(box_path));
}

NoFreeDescriptors::NoFreeDescriptors()
{
    struct rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    saved_limit_ = limit.rlim_cur;
    const int lowest_free = dup(0);
    close(lowest_free);
    limit.rlim_cur = static_cast<rlim_t>(lowest_free);
    setrlimit(RLIMIT_NOFILE, &limit);
}

NoFreeDescriptors::~NoFreeDescriptors()
{
    struct rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = static_cast<rlim_t>(saved_limit_);
    setrlimit(RLIMIT_NOFILE, &limit);
}

const char kThrows[] = "<out_of_range>";

std::string outcome(std::string (*probe)())
{
    try {
        return probe();
    } catch (const std::out_of_range&) {
        return kThrows;
    }
}

int open_descriptors()
{
    namespace fs = std::filesystem;
    return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}
