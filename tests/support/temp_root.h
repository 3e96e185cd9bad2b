#ifndef OLED_TESTS_TEMP_ROOT_H
#define OLED_TESTS_TEMP_ROOT_H

#include <string>

// A fresh box root folder for one test, made the path seam's root while it
// lives and removed with everything in it afterwards.
class TempRoot {
public:
    TempRoot();
    ~TempRoot();
    TempRoot(const TempRoot&) = delete;
    TempRoot& operator=(const TempRoot&) = delete;

    const std::string& path() const { return path_; }
    // Host path of an appliance path ("/data/oled.ini").
    std::string host(const std::string& box_path) const { return path_ + box_path; }
    // Writes a file at an appliance path, making its folders.
    void write(const std::string& box_path, const std::string& content) const;
    // Content of the file at an appliance path ("" when missing).
    std::string read(const std::string& box_path) const;
    bool exists(const std::string& box_path) const;
    void make_folder(const std::string& box_path) const;

private:
    std::string path_;
};

#endif
