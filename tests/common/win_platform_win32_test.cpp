// Windows only: the wrappers over the system's own volumes, registry, code pages and version
// resources, with what every Windows system (and Wine) has: the temporary folder's volume, the
// system's registry values, this test's own executable.
#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/codepage.h"
#include "common/format/format.h"
#include "common/logging/command_line.h"
#include "common/logging/system_info.h"
#include "common/win/registry.h"
#include "common/win/volume.h"
#include "log_test_support.h"
#include "tests/support/failure_lines.h"

#include <gtest/gtest.h>

#include <algorithm>

TEST(Volumes, AFileResolvesToItsMountPointItsVolumeAndBackAndWhatNamesNoVolumeFails) {
    const std::wstring file = (std::filesystem::temp_directory_path() / "mirrack-volume-probe").wstring();
    const std::wstring mount_point = win::volume_mount_point(file);
    ASSERT_TRUE(mount_point.ends_with(L'\\')) << to_ansi(mount_point);
    EXPECT_TRUE(iequals(file.substr(0, mount_point.size()), mount_point)) << to_ansi(mount_point);
    const std::wstring volume = win::volume_device_name(mount_point);
    EXPECT_TRUE(volume.starts_with(L"\\\\?\\Volume{") && volume.ends_with(L"}\\")) << to_ansi(volume);
    EXPECT_TRUE(std::ranges::any_of(win::volume_mount_points(volume), [&](const std::wstring& point) {
        return iequals(point, mount_point);
    })) << to_ansi(mount_point);
    const std::wstring unknown = L"\\\\?\\Volume{00000000-0000-0000-0000-00000000beef}\\";
    EXPECT_EQ(failure_lines([] { win::volume_mount_point(L""); }, 1),
              std::vector<std::string>{"Failed to get volume mount point. File name: []"});
    EXPECT_EQ(failure_lines([] { win::volume_device_name(L"Q:\\no\\such\\mount\\"); }, 1),
              std::vector<std::string>{
                  "Failed to get volume device name. Volume mount point: [Q:\\no\\such\\mount\\]"});
    EXPECT_EQ(failure_lines([&] { win::volume_mount_points(unknown); }, 1),
              std::vector<std::string>{"Failed to get volume mount points. Volume name: [" +
                                       to_ansi(unknown) + "]"});
}

TEST(Registry, TheSystemsOwnValuesReadAsTheirTypeAndNoOther) {
    const win::win_reg_key_t key =
        win::reg_open_subkey(L"SYSTEM\\CurrentControlSet\\Control\\Windows", win::reg_access_read_64);
    DWORD service_pack = 0xFFFFFFFF;
    EXPECT_TRUE(win::reg_read_dword(key, L"CSDVersion", service_pack));
    EXPECT_LT(service_pack, 0x10000u);
    std::wstring text;
    EXPECT_THROW(win::reg_read_string(key, L"CSDVersion", text), exc::exc_base_t);
    EXPECT_FALSE(win::reg_read_dword(key, L"MirrackNoSuchValue", service_pack));
}

// An empty text is the one the system's conversions refuse; the wrappers never hand it on.
TEST(CodePages, TheSystemsRefusalIsNoTextAndItsError) {
    using format::code_page_t;
    for (const code_page_t code_page : {code_page_t::ansi, code_page_t::utf8}) {
        std::uint32_t error = 0;
        EXPECT_FALSE(format::wide_to_multibyte(code_page, L"", error).has_value());
        EXPECT_EQ(error, static_cast<std::uint32_t>(ERROR_INVALID_PARAMETER));
        error = 0;
        EXPECT_FALSE(format::multibyte_to_wide(code_page, "", error).has_value());
        EXPECT_EQ(error, static_cast<std::uint32_t>(ERROR_INVALID_PARAMETER));
    }
}

TEST(ProcessFacts, TheCommandLineAndTheVersionOfAModuleThatHasNone) {
    const std::vector<std::wstring> arguments = logging::platform::process_arguments();
    ASSERT_FALSE(arguments.empty());
    EXPECT_TRUE(to_lower(arguments.front()).ends_with(L"test_common.exe")) << to_ansi(arguments.front());
    EXPECT_TRUE(logging::platform::executable_module_path().ends_with("test_common.exe"));

    const win_test::temp_tree_t tree;
    const std::string plain = (tree.root() / "plain.txt").string();
    std::ofstream(plain) << "no version resource";
    EXPECT_EQ(failure_lines([&] { logging::platform::module_version(plain); }, 1),
              std::vector<std::string>{"Cannot retrieve the version of the specified module. Module path: [" +
                                       plain + "]."});
}
