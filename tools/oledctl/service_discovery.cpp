#include "service_discovery.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <libgen.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <tuple>

namespace service_discovery {
namespace {

using Json = nlohmann::ordered_json;

std::string system_error(const std::string& what)
{
    return what + ": " + std::strerror(errno);
}

// Dotted addresses numerically, anything an operator wrote otherwise after them.
bool before(const std::string& a, const std::string& b)
{
    auto key = [](const std::string& text) {
        in_addr address{};
        const bool dotted = inet_pton(AF_INET, text.c_str(), &address) == 1;
        return std::make_tuple(!dotted, dotted ? ntohl(address.s_addr) : 0u, text);
    };
    return key(a) < key(b);
}

std::string check_entry(const Json& entry)
{
    if (!entry.is_object())
        return "an entry is not an object";
    const auto targets = entry.find("targets");
    if (targets == entry.end() || !targets->is_array())
        return "an entry has no \"targets\" list";
    for (const Json& target : *targets) {
        if (!target.is_string())
            return "a target is not a text";
    }
    const auto labels = entry.find("labels");
    if (labels == entry.end())
        return "";
    if (!labels->is_object())
        return "\"labels\" is not an object";
    for (const Json& value : *labels) {
        if (!value.is_string())
            return "a label's value is not a text";
    }
    return "";
}

}  // namespace

std::string merge(const std::string& existing, const std::vector<std::string>& found, std::string& list)
{
    Json entries = Json::array();
    if (existing.find_first_not_of(" \t\r\n") != std::string::npos) {
        entries = Json::parse(existing, nullptr, false);
        if (entries.is_discarded() || !entries.is_array())
            return "not a JSON list of target groups";
        for (const Json& entry : entries) {
            const std::string error = check_entry(entry);
            if (!error.empty())
                return error;
        }
    }
    std::set<std::string> listed;
    Json* plain = nullptr;
    for (Json& entry : entries) {
        for (const Json& target : entry["targets"])
            listed.insert(target.get<std::string>());
        const auto labels = entry.find("labels");
        if (plain == nullptr && (labels == entry.end() || labels->empty()))
            plain = &entry;
    }
    std::vector<std::string> added;
    for (const std::string& address : found) {
        if (listed.insert(address).second)
            added.push_back(address);
    }
    if (!added.empty()) {
        if (plain == nullptr) {
            entries.push_back({{"targets", Json::array()}, {"labels", Json::object()}});
            plain = &entries.back();
        }
        std::vector<std::string> targets = (*plain)["targets"].get<std::vector<std::string>>();
        targets.insert(targets.end(), added.begin(), added.end());
        std::sort(targets.begin(), targets.end(), before);
        (*plain)["targets"] = targets;
    }
    list = entries.dump(2) + "\n";
    return "";
}

std::string read_file(const std::string& path, std::string& text)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return errno == ENOENT ? "" : std::strerror(errno);
    std::ostringstream content;
    content << file.rdbuf();
    if (file.bad())
        return std::strerror(errno);
    text = content.str();
    return "";
}

std::string write_atomically(const std::string& path, const std::string& text)
{
    std::string folder = path;
    folder = dirname(&folder[0]);
    std::string temporary = path + ".XXXXXX";
    const int fd = mkostemp(&temporary[0], O_CLOEXEC);
    if (fd < 0)
        return system_error("cannot write beside " + path);
    struct stat old {};
    const mode_t mode = ::stat(path.c_str(), &old) == 0 ? (old.st_mode & 07777) : 0644;
    std::string error;
    std::size_t written = 0;
    while (error.empty() && written < text.size()) {
        const ssize_t now = ::write(fd, text.data() + written, text.size() - written);
        if (now < 0 && errno != EINTR)
            error = system_error(temporary);
        if (now > 0)
            written += static_cast<std::size_t>(now);
    }
    if (error.empty() && (::fchmod(fd, mode) != 0 || ::fsync(fd) != 0))
        error = system_error(temporary);
    if (::close(fd) != 0 && error.empty())
        error = system_error(temporary);
    if (error.empty() && ::rename(temporary.c_str(), path.c_str()) != 0)
        error = system_error(path);
    if (!error.empty()) {
        ::unlink(temporary.c_str());
        return error;
    }
    // The rename itself survives a power cut only once the folder is flushed.
    const int dir = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
    return "";
}

}  // namespace service_discovery
