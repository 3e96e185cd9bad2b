#include "box_settings.h"

#include <cjson/cJSON.h>
#include <stdio.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

#include "file_helpers.h"
#include "path_on_box.h"
#include "pin_text.h"

namespace {

bool read_text(const std::string& host_path, std::string* text)
{
    std::ifstream in(host_path.c_str(), std::ios::binary);
    if (!in.is_open()) {
        return false;
    }
    text->assign((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return true;
}

std::string board_of(const std::string& json)
{
    std::string board;
    cJSON* root = cJSON_Parse(json.c_str());
    if (root == nullptr) {
        return board;
    }
    const cJSON* item = cJSON_GetObjectItemCaseSensitive(root, "board");
    if (cJSON_IsString(item) && item->valuestring != nullptr) {
        board = std::string(item->valuestring).substr(0, 127);
    }
    cJSON_Delete(root);
    return board;
}

}  // namespace

BoxSettings read_box_settings()
{
    BoxSettings box;
    std::string json;
    if (read_text(path_on_box("/version/hardware_info"), &json)) {
        if (!json.empty() && json[json.size() - 1] == '\n') {
            json.erase(json.size() - 1);
        }
        box.board = board_of(json);
    }
    box.values = SoftwareConfig::DefaultValues(box.board.c_str());
    // Where the daemon will look: /data/oled.ini, or ./oled.ini when /data
    // is missing and cannot be made (the working directory is home/public).
    std::string text;
    if (!read_text(path_on_box("/data/oled.ini"), &text) && access(path_on_box("/data").c_str(), F_OK) != 0) {
        read_text("oled.ini", &text);
    }
    SoftwareConfig::ApplySettingsText(text, box.values);
    return box;
}

bool parse_pin(const std::string& text, int* group, int* bit)
{
    return read_pin_text(text, *group, *bit) && pin_exists(*group, *bit);
}
