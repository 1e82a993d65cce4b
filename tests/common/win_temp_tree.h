// Temporary folders for tests of the file-system wrappers, and a simulated
// host selected for the length of a test.
#pragma once

#include "tests/support/process_env.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace win_test {

class temp_tree_t {
public:
    temp_tree_t() {
        std::random_device random;
        root_ = std::filesystem::temp_directory_path() / ("mirrack-win-" + std::to_string(random()));
        std::filesystem::create_directories(root_);
    }
    ~temp_tree_t() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    temp_tree_t(const temp_tree_t&) = delete;
    temp_tree_t& operator=(const temp_tree_t&) = delete;

    const std::filesystem::path& root() const { return root_; }
    // A native root ('/' leads) with the rest in the Windows form.
    std::wstring wide(const std::string& relative = std::string()) const {
        std::wstring rest = std::filesystem::path(relative).wstring();
        std::replace(rest.begin(), rest.end(), L'/', L'\\');
        return rest.empty() ? root_.wstring() : root_.wstring() + L"\\" + rest;
    }
    void add_file(const std::string& relative, const std::string& content = "x") const {
        const auto path = root_ / relative;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << content;
    }
    void add_folder(const std::string& relative) const {
        std::filesystem::create_directories(root_ / relative);
    }

private:
    std::filesystem::path root_;
};

// MIRRACK_HOST set to a folder of its own with the given host.xml, unset again at the end.
class selected_host_t {
public:
    explicit selected_host_t(const std::string& host_xml) {
        describe(host_xml);
        test_env::set("MIRRACK_HOST", tree_.root().string());
    }
    ~selected_host_t() { test_env::unset("MIRRACK_HOST"); }

    // Takes effect where the host is next read.
    void describe(const std::string& host_xml) const { std::ofstream(tree_.root() / "host.xml") << host_xml; }
    const temp_tree_t& tree() const { return tree_; }
    const std::filesystem::path& root() const { return tree_.root(); }

private:
    temp_tree_t tree_;
};

} // namespace win_test
