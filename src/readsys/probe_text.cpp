#include "probe_text.h"

std::string probe_text(std::string (*probe)())
{
    try {
        return probe();
    } catch (...) {
        return std::string();
    }
}
