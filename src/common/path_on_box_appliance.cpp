#include "path_on_box.h"

std::string path_on_box(const char* path)
{
    return path;
}

std::string command_on_box(const char* command)
{
    return command;
}
