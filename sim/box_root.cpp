#include "box_root.h"

#include <cstring>

#include "path_on_box.h"

namespace {
// Never destroyed: the loops still run probes while the process exits.
std::string& g_root = *new std::string;
}  // namespace

void set_box_root(const std::string& root)
{
    g_root = root;
    while (g_root.size() > 1 && g_root[g_root.size() - 1] == '/') {
        g_root.erase(g_root.size() - 1);
    }
    if (g_root == "/") {
        g_root.clear();
    }
}

const std::string& box_root()
{
    return g_root;
}

std::string path_on_box(const char* path)
{
    if (path[0] != '/' || g_root.empty()) {
        return path;
    }
    return g_root + path;
}

std::string command_on_box(const char* command)
{
    // Every word that begins with "/" is an appliance path: the commands the
    // daemon runs name only such paths ("cat /proc/umap/vo | grep X").
    std::string text(command);
    if (g_root.empty()) {
        return text;
    }
    std::string out;
    out.reserve(text.size() + 4 * g_root.size());
    for (std::string::size_type i = 0; i < text.size(); ++i) {
        const bool word_start = i == 0 || text[i - 1] == ' ' || text[i - 1] == '>' || text[i - 1] == '<';
        if (text[i] == '/' && word_start) {
            out += g_root;
        }
        out += text[i];
    }
    return out;
}
