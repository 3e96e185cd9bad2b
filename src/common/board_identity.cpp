#include "board_identity.h"

#include <stdio.h>
#include <string.h>

#include <cjson/cJSON.h>

#include "file_helpers.h"
#include "trace.h"

int GetJsonValue(const char* json, const char* key, char* out)
{
    cJSON* root = cJSON_Parse(json);
    if (root == nullptr) {
        const char* error = cJSON_GetErrorPtr();
        if (error == nullptr) {
            return 0;
        }
        trace_prefix("GetJsonValue", 83);
        printf("Error before: %s", error);
        return 0;
    }
    const cJSON* item = cJSON_GetObjectItemCaseSensitive(root, key);
    if (item == nullptr) {
        cJSON_Delete(root);
        return 0;
    }
    if (cJSON_IsString(item) && item->valuestring != nullptr) {
        // Bounded: an identifier that does not fit is cut, never overflows.
        snprintf(out, kBoardIdSize, "%s", item->valuestring);
    }
    cJSON_Delete(root);
    return 1;
}

void get_hw_version(char* str)
{
    std::string content = ReadSthFile("/version/hardware_info", true);
    if (GetJsonValue(content.c_str(), "board", str) == 0) {
        trace_prefix("get_hw_version", 1209);
        puts("GetJsonValue() from file-hardware_info failed!");
    }
    puts(str);
}

void ReadHardwareInfo(std::string& result, bool media)
{
    char path[100];
    if (media) {
        snprintf(path, sizeof(path), "%s%s/%s", "/media", "/version", "hardware_info");
    } else {
        snprintf(path, sizeof(path), "%s/%s", "/version", "hardware_info");
    }
    result = ReadSthFile(path, true);
    std::string::size_type key = result.find("\"board\":");
    if (key == std::string::npos) {
        return;
    }
    std::string::size_type open = result.find('"', key + 8);
    if (open == std::string::npos) {
        return;
    }
    std::string::size_type close = result.find('"', open + 1);
    result = result.substr(open + 1, close == std::string::npos ? std::string::npos : close - open - 1);
}
