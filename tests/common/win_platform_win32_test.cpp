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

namespace {

std::string last_line(const std::function<void()>& call) {
    const auto lines = failure_lines(call);
    return lines.empty() ? "" : lines.back();
}

} // namespace

TEST(Volumes, AFileResolvesToItsMountPointItsVolumeAndBackAndWhatNamesNoVolumeFails) {
    const std::wstring file = (std::filesystem::temp_directory_path() / "mirrack-volume-probe").wstring();
    const std::wstring mount_point = win::volume_mount_point(file);
    ASSERT_FALSE(mount_point.empty());
    EXPECT_EQ(mount_point.back(), L'\\');
    EXPECT_TRUE(iequals(file.substr(0, mount_point.size()), mount_point)) << to_ansi(mount_point);
    const std::wstring volume = win::volume_device_name(mount_point);
    EXPECT_TRUE(volume.starts_with(L"\\\\?\\Volume{") && volume.ends_with(L"}\\")) << to_ansi(volume);
    bool found = false;
    for (const std::wstring& point : win::volume_mount_points(volume))
        found = found || iequals(point, mount_point);
    EXPECT_TRUE(found) << to_ansi(mount_point);
    EXPECT_EQ(last_line([] { win::volume_mount_point(L""); }),
              "Failed to get volume mount point. File name: []");
    EXPECT_EQ(last_line([] { win::volume_device_name(L"Q:\\no\\such\\mount\\"); }),
              "Failed to get volume device name. Volume mount point: [Q:\\no\\such\\mount\\]");
    const std::wstring unknown = L"\\\\?\\Volume{00000000-0000-0000-0000-00000000beef}\\";
    EXPECT_EQ(last_line([&] { win::volume_mount_points(unknown); }),
              "Failed to get volume mount points. Volume name: [" + to_ansi(unknown) + "]");
}

TEST(Registry, TheSystemsOwnValuesReadAsTheirTypeAndNoOther) {
    const win::win_reg_key_t key =
        win::reg_open_subkey(L"SYSTEM\\CurrentControlSet\\Control\\Windows", win::reg_access_read_64);
    ASSERT_TRUE(key.valid());
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
    const std::filesystem::path& folder = tree.root();
    const std::string plain = (folder / "plain.txt").string();
    std::ofstream(plain) << "no version resource";
    EXPECT_EQ(last_line([&] { logging::platform::module_version(plain); }),
              "Cannot retrieve the version of the specified module. Module path: [" + plain + "].");
}
