#include "tests/support/host_folder.h"

#include <cstdlib>
#include <fstream>

#include <unistd.h>

namespace test_support {

namespace fs = std::filesystem;

host_folder_t::host_folder_t(const std::string& prefix) {
    std::string pattern = (fs::temp_directory_path() / (prefix + "-XXXXXX")).string();
    dir_ = ::mkdtemp(pattern.data());
    select();
}

host_folder_t::~host_folder_t() {
    ::unsetenv("MIRRACK_HOST");
    std::error_code ignored;
    fs::remove_all(dir_, ignored);
}

void host_folder_t::select() const {
    ::setenv("MIRRACK_HOST", dir_.c_str(), 1);
}

void host_folder_t::write(const std::string& relative, const std::string& content) const {
    fs::create_directories((dir_ / relative).parent_path());
    std::ofstream(dir_ / relative, std::ios::binary | std::ios::trunc) << content;
}

std::vector<std::string> host_folder_t::state_lines(const std::string& file) const {
    std::ifstream in(dir_ / "state" / file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        if (!line.empty())
            lines.push_back(line);
    return lines;
}

} // namespace test_support
