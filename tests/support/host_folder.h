// A fresh folder for one test's simulated host, selected through MIRRACK_HOST for as long as
// the object lives and removed with it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace test_support {

class host_folder_t {
public:
    // prefix names the folder in the temporary folder, for a look after a failed run.
    explicit host_folder_t(const std::string& prefix);
    ~host_folder_t();
    host_folder_t(const host_folder_t&) = delete;
    host_folder_t& operator=(const host_folder_t&) = delete;

    const std::filesystem::path& dir() const { return dir_; }
    // Selects this host again, after another one was made.
    void select() const;
    void write(const std::string& relative, const std::string& content) const;
    // The non-empty lines of a file the host keeps its state in.
    std::vector<std::string> state_lines(const std::string& file) const;

private:
    std::filesystem::path dir_;
};

} // namespace test_support
