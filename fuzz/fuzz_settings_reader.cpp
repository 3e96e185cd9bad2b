// Arbitrary settings-file text through the reader's line rules, then the
// canonical save text: whatever the file holds, every key still has one
// line and no value carries a line break.
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "software_config.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::vector<std::string> values = SoftwareConfig::DefaultValues("BRD25");
    SoftwareConfig::ApplySettingsText(text, values);
    if (values.size() != SoftwareConfig::kConfigCount) {
        abort();
    }
    for (size_t i = 0; i < values.size(); ++i) {
        if (values[i].find('\n') != std::string::npos || values[i].empty()) {
            abort();
        }
    }
    return 0;
}
