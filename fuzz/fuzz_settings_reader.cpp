// Arbitrary settings-file text through the reader's line rules, then the
// canonical save text: whatever the file holds, every key still has one
// line and no value carries a line break. The reader's key search is also
// checked against the rules done the slow, obvious way.
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "software_config.h"

namespace {

// Each key takes the value after "key=" on the first line, comments aside,
// that holds it anywhere; an empty value keeps the default.
std::vector<std::string> read_plainly(const std::string& text, std::vector<std::string> values)
{
    std::vector<std::string> lines;
    for (std::string::size_type pos = 0; pos < text.size();) {
        std::string::size_type lf = text.find('\n', pos);
        if (lf == std::string::npos) {
            lf = text.size();
        }
        std::string line = text.substr(pos, lf - pos);
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(line);
        pos = lf + 1;
    }
    for (size_t id = 0; id < values.size(); ++id) {
        const std::string key = std::string(SoftwareConfig::KeyName(static_cast<int>(id))) + "=";
        for (const std::string& line : lines) {
            const std::string::size_type at = line.find(key);
            if (line.find_first_of(";!#") == 0 || at == std::string::npos) {
                continue;
            }
            if (at + key.size() < line.size()) {
                values[id] = line.substr(at + key.size());
            }
            break;
        }
    }
    return values;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> defaults = SoftwareConfig::DefaultValues("BRD25");
    std::vector<std::string> values = defaults;
    SoftwareConfig::ApplySettingsText(text, values);
    if (values.size() != SoftwareConfig::kConfigCount || values != read_plainly(text, defaults)) {
        abort();
    }
    for (size_t i = 0; i < values.size(); ++i) {
        if (values[i].find('\n') != std::string::npos || values[i].empty()) {
            abort();
        }
    }
    return 0;
}
