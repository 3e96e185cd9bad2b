#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "service_discovery.h"

namespace {

nlohmann::json merged(const std::string& existing, const std::vector<std::string>& found)
{
    std::string list;
    const std::string error = service_discovery::merge(existing, found, list);
    return error.empty() ? nlohmann::json::parse(list) : nlohmann::json("refused: " + error);
}

TEST(ServiceDiscovery, FoundBoxesJoinTheListAndListedOnesStay)
{
    EXPECT_EQ(merged("", {"10.0.0.10", "10.0.0.9"}),
              nlohmann::json::parse(R"([{"targets": ["10.0.0.9", "10.0.0.10"], "labels": {}}])"));
    const std::string kept = R"([{"targets": ["10.1.0.9"], "labels": {"site": "north"}},
                                 {"targets": ["10.0.0.20", "box7:16124"]}])";
    EXPECT_EQ(merged(kept, {"10.1.0.9", "10.0.0.5", "10.0.0.20"}),
              nlohmann::json::parse(R"([{"targets": ["10.1.0.9"], "labels": {"site": "north"}},
                                        {"targets": ["10.0.0.5", "10.0.0.20", "box7:16124"]}])"));
    EXPECT_EQ(merged(R"([{"targets": [], "labels": {"site": "north"}}])", {"10.0.0.5"}),
              nlohmann::json::parse(R"([{"targets": [], "labels": {"site": "north"}},
                                        {"targets": ["10.0.0.5"], "labels": {}}])"));
    EXPECT_EQ(merged("{}", {}), "refused: not a JSON list of target groups");
    for (const char* bad : {"[1]", R"([{"targets": "10.0.0.5"}])", R"([{"targets": [5]}])",
                            R"([{"targets": [], "labels": {"a": 1}}])", R"([{"targets": [], "labels": []}])", "[{"}) {
        EXPECT_EQ(merged(bad, {"10.0.0.5"}).get<std::string>().compare(0, 9, "refused: "), 0) << bad;
    }
}

TEST(ServiceDiscovery, FileReplacedWholeKeepingItsPermissions)
{
    char folder_template[] = "/tmp/oled-sd-XXXXXX";
    const std::filesystem::path folder = mkdtemp(folder_template);
    const std::string path = folder / "boxes.json";
    std::string text = "unread";
    EXPECT_EQ(service_discovery::read_file(path, text), "");
    EXPECT_EQ(text, "unread");
    std::ofstream(path) << "old";
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    EXPECT_EQ(service_discovery::write_atomically(path, "new\n"), "");
    EXPECT_EQ(service_discovery::read_file(path, text), "");
    EXPECT_EQ(text, "new\n");
    struct stat written {};
    ASSERT_EQ(stat(path.c_str(), &written), 0);
    EXPECT_EQ(written.st_mode & 07777, 0640u);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
    EXPECT_NE(service_discovery::write_atomically((folder / "gone" / "boxes.json").string(), "x"), "");
    std::filesystem::remove_all(folder);
}

}  // namespace
