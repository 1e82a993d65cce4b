// POSIX only: the simulated host stands in for the registry and the volumes, native paths are mapped,
// and errno is translated into the Win32 codes that Windows reports itself. The wrappers against a
// simulated host: registry, volume names and injected failures of the file-system calls; the code and
// text that a failing platform call reports, by the situation that made it fail, as Windows words it.
#include "common/exc/exc.h"
#include "common/runtime/search_or_warn.h"
#include "common/win/errno_posix.h"
#include "common/win/file.h"
#include "common/win/folder.h"
#include "common/win/local_path.h"
#include "common/win/registry.h"
#include "common/win/volume.h"
#include "sys_failure.h"
#include "tests/support/failure_lines.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include <unistd.h>

using namespace win;

namespace {

const char* const host_xml = R"(<Host name="T">
  <Registry>
    <Key path="SOFTWARE\Orlix\Orlix Keepsafe">
      <Value name="LogDirectory" type="REG_SZ" data="C:\Logs\"/>
      <Value name="Level" type="REG_DWORD" data="7"/>
    </Key>
    <Key path="SOFTWARE\Denied"/>
  </Registry>
  <Volume name="\\?\Volume{6a1b0c3e-0000-0000-0000-000000000001}\" dir="volumes/c" mount="C:\;E:\mnt\"/>
  <Fault op="FindNextFileW" err="1117" match="faulty"/>
  <Fault op="FindFirstFileW" err="5" match="locked"/>
  <Fault op="RegOpenKeyExW" err="5" match="Denied"/>
  <Fault op="GetVolumePathNameW" err="21" match="notready"/>
</Host>)";

const wchar_t* const keepsafe = L"SOFTWARE\\Orlix\\Orlix Keepsafe";

struct situation_t {
    const char* name;
    std::function<void(const win_test::temp_tree_t&)> fail;
    std::uint32_t code;
    const char* text;
};

const situation_t situations[] = {
    {"file_where_a_folder_is_expected",
     [](const win_test::temp_tree_t& tree) {
         tree.add_file("file");
         win::file_open(tree.wide("file\\inner"));
     },
     3, "The system cannot find the path specified.\r\n"},
    {"folder_opened_as_a_file",
     [](const win_test::temp_tree_t& tree) {
         tree.add_folder("folder");
         win::file_open(tree.wide("folder"));
     },
     5, "Access is denied.\r\n"},
    {"name_too_long",
     [](const win_test::temp_tree_t& tree) { win::create_folder(tree.wide(std::string(300, 'n'))); }, 206,
     "The filename or extension is too long.\r\n"},
    {"link_loop",
     [](const win_test::temp_tree_t& tree) {
         ASSERT_EQ(::symlink("loop", (tree.root() / "loop").c_str()), 0);
         win::file_open(tree.wide("loop"));
     },
     1921, "The name of the file cannot be resolved by the system.\r\n"},
};

} // namespace

TEST(SimulatedHost, RegistryVolumesAndSearchesAndTheirFailures) {
    const win_test::selected_host_t host(host_xml);
    for (const char* file : {"VMs/vm1/a.vhdx", "VMs/faulty/a.vhdx", "VMs/faulty/b.vhdx", "locked/a.vhdx"})
        host.tree().add_file(std::string("volumes/c/") + file);
    win_reg_key_t key = reg_open_subkey(keepsafe, reg_access_read_64);
    std::wstring text;
    EXPECT_TRUE(reg_read_string(key, L"LogDirectory", text));
    EXPECT_EQ(text, L"C:\\Logs\\");
    std::string narrow;
    EXPECT_TRUE(reg_read_string(key, std::string("logdirectory"), narrow));
    EXPECT_EQ(narrow, "C:\\Logs\\");
    DWORD number = 0;
    EXPECT_TRUE(reg_read_dword(key, L"Level", number));
    EXPECT_EQ(number, 7u);
    EXPECT_THROW((void)&key, exc::runtime_exc_t);
    // What is not there is a quiet answer.
    EXPECT_FALSE(reg_open_subkey(L"SOFTWARE\\OrliX\\Orlix NFS", reg_access_read_64).valid());
    text.clear();
    EXPECT_FALSE(reg_read_string(key, L"ExtLogHost", text));
    EXPECT_TRUE(text.empty());
    // Failures other than not there throw.
    EXPECT_EQ(
        failure_lines(
            [&] { reg_read_dword(reg_open_subkey(keepsafe, reg_access_read_64), L"LogDirectory", number); }),
        (std::vector<std::string>{
            "Unexpected registry type: [1].",
            "Cannot retrieve a registry value. Value name: [LogDirectory]. Expected value type: [4]."}));
    EXPECT_EQ(sys_failure([] { reg_open_subkey(L"SOFTWARE\\Denied", reg_access_read_64); }),
              "5 Failed to open subkey. Path: [SOFTWARE\\Denied].");
    EXPECT_EQ(failure_lines([&] { reg_read_string(win_reg_key_t(), L"X", text); }).front(),
              "Registry key object is not initialized.");
    // Volume names and mount points, and their failures.
    EXPECT_EQ(volume_mount_point(L"C:\\VMs\\vm1\\a.vhdx"), L"C:\\");
    const std::wstring volume = L"\\\\?\\Volume{6a1b0c3e-0000-0000-0000-000000000001}\\";
    EXPECT_EQ(volume_device_name(L"C:\\"), volume);
    EXPECT_EQ(volume_mount_points(volume), (std::vector<std::wstring>{L"C:\\", L"E:\\mnt\\"}));
    EXPECT_EQ(cluster_storage_root(), L"C:\\ClusterStorage");
    EXPECT_EQ(sys_failure([] { volume_mount_point(L"C:\\notready\\x"); }),
              "21 Failed to get volume mount point. File name: [C:\\notready\\x]");
    EXPECT_TRUE(sys_failure([] {
                    volume_device_name(L"Z:\\");
                }).ends_with(" Failed to get volume device name. Volume mount point: [Z:\\]"));
    // Search through mount points and volume names, and its failures.
    EXPECT_EQ(win_file_search_t(L"c:\\vms\\VM1\\*.VHDX").current().name, L"a.vhdx");
    EXPECT_TRUE(folder_exists(L"\\\\?\\Volume{6a1b0c3e-0000-0000-0000-000000000001}\\VMs"));
    EXPECT_TRUE(folder_exists(L"C:\\"));
    EXPECT_FALSE(runtime::search_or_warn(L"C:\\locked\\*").found());
    EXPECT_EQ(sys_failure([] { win_file_search_t(L"C:\\locked\\*"); }),
              "5 File search operation has failed. Search mask: [C:\\locked\\*].");

    // A search that fails after its first entry throws, and is over.
    win_file_search_t search(L"C:\\VMs\\faulty\\*.vhdx");
    EXPECT_EQ(sys_failure([&] { search.next(); }),
              "1117 File search operation has failed. Search mask: [C:\\VMs\\faulty\\*.vhdx].");
    EXPECT_FALSE(search.found());
}

// A relative path is resolved against the current directory, as Windows does, so that
// "-log Mirrack.log" lands beside the caller; Windows-form and native paths are not touched.
TEST(LocalPath, RelativePathsFollowTheCurrentDirectory) {
    const auto cwd = std::filesystem::current_path();
    EXPECT_EQ(win::local_path(L"Mirrack.log"), cwd / "Mirrack.log");
    EXPECT_EQ(win::local_path(L"logs\\Mirrack.log"), cwd / "logs/Mirrack.log");
    EXPECT_EQ(win::local_path(L"/var/tmp\\x.log"), std::filesystem::path("/var/tmp/x.log"));
    EXPECT_FALSE(win::local_path(L"").has_value());
}

TEST(FailingCallText, EachSituationGivesTheWindowsCodeAndTextAndEveryErrnoHasOne) {
    for (const situation_t& s : situations) {
        win_test::temp_tree_t tree;
        try {
            s.fail(tree);
            ADD_FAILURE() << s.name << ": no failure";
        } catch (const exc::win_sys_exc_t& e) {
            EXPECT_EQ(e.code(), s.code) << s.name;
            EXPECT_EQ(e.messages().front().text, s.text) << s.name;
        }
    }
    // No errno may reach the last-resort text, which only says that the code is unknown; and the
    // "not there" codes stay for the errnos that mean it.
    for (int error = 1; error < 134; ++error) {
        const DWORD code = win::win32_error_from_errno(error);
        const std::string text = exc::sys_error_text(code);
        EXPECT_EQ(text.find("Error code:"), std::string::npos) << error << " " << std::strerror(error);
        if (code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND) {
            EXPECT_TRUE(error == ENOENT || error == ENOTDIR || error == ECONNREFUSED) << std::strerror(error);
        }
    }
    EXPECT_EQ(exc::sys_error_text(win::win32_error_from_errno(EROFS)), "The media is write protected.\r\n");
    EXPECT_EQ(exc::sys_error_text(win::win32_error_from_errno(ENOTEMPTY)), "The directory is not empty.\r\n");
    EXPECT_EQ(exc::sys_error_text(win::win32_error_from_errno(EXDEV)),
              "The system cannot move the file to a different disk drive.\r\n");
    EXPECT_EQ(win::win32_error_from_errno(EDQUOT), win::win32_error_from_errno(ENOSPC));
}
