#include "register_trace.h"

#include <stdlib.h>

#include <sstream>

#include "soc.h"

RegisterTrace::RegisterTrace() : stream_(open_memstream(&buffer_, &size_))
{
    SimSoc::instance().reset();
    SimSoc::instance().trace_to(stream_);
}

RegisterTrace::~RegisterTrace()
{
    SimSoc::instance().trace_to(nullptr);
    fclose(stream_);
    free(buffer_);
}

std::vector<std::string> RegisterTrace::lines()
{
    fflush(stream_);
    std::istringstream in(std::string(buffer_ + start_, size_ - start_));
    std::vector<std::string> out;
    for (std::string line; std::getline(in, line);) {
        out.push_back(line);
    }
    return out;
}

void RegisterTrace::clear()
{
    fflush(stream_);
    start_ = size_;
}
