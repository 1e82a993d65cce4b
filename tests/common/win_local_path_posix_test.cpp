// POSIX only: the mapping of native paths, which Windows does not have.
#include "common/win/local_path.h"

#include <gtest/gtest.h>

#include <filesystem>

// A relative path is resolved against the current directory, as Windows does, so that
// "-log Mirrack.log" lands beside the caller; Windows-form and native paths are not touched.
TEST(LocalPath, RelativePathsFollowTheCurrentDirectory) {
    const auto cwd = std::filesystem::current_path();
    EXPECT_EQ(win::local_path(L"Mirrack.log"), cwd / "Mirrack.log");
    EXPECT_EQ(win::local_path(L"logs\\Mirrack.log"), cwd / "logs/Mirrack.log");
    EXPECT_EQ(win::local_path(L"/var/tmp\\x.log"), std::filesystem::path("/var/tmp/x.log"));
    EXPECT_FALSE(win::local_path(L"").has_value());
}
