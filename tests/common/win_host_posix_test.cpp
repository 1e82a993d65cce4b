// POSIX only: the simulated host stands in for the registry and the volumes, and native paths are mapped.
// The wrappers against a simulated host: registry, volume names and injected
// failures of the file-system calls.
#include "common/exc/exc.h"
#include "common/runtime/search_or_warn.h"
#include "common/win/folder.h"
#include "common/win/local_path.h"
#include "common/win/registry.h"
#include "common/win/volume.h"
#include "sys_failure.h"
#include "tests/support/failure_lines.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

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

class SimulatedHost : public ::testing::Test {
protected:
    SimulatedHost() : host(host_xml) {
        host.tree().add_file("volumes/c/VMs/vm1/a.vhdx");
        host.tree().add_file("volumes/c/VMs/faulty/a.vhdx");
        host.tree().add_file("volumes/c/VMs/faulty/b.vhdx");
    }
    win_test::selected_host_t host;
};

const wchar_t* const keepsafe = L"SOFTWARE\\Orlix\\Orlix Keepsafe";

} // namespace

TEST_F(SimulatedHost, RegistryValuesOfTheRightTypeQuietAnswersForWhatIsNotThereAndFailuresOtherwise) {
    win_reg_key_t key = reg_open_subkey(keepsafe, reg_access_read_64);
    ASSERT_TRUE(key.valid());
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
}

TEST_F(SimulatedHost, VolumeNamesAndMountPointsAndTheirFailures) {
    EXPECT_EQ(volume_mount_point(L"C:\\VMs\\vm1\\a.vhdx"), L"C:\\");
    const std::wstring volume = L"\\\\?\\Volume{6a1b0c3e-0000-0000-0000-000000000001}\\";
    EXPECT_EQ(volume_device_name(L"C:\\"), volume);
    EXPECT_EQ(volume_mount_points(volume), (std::vector<std::wstring>{L"C:\\", L"E:\\mnt\\"}));
    EXPECT_EQ(cluster_storage_root(), L"C:\\ClusterStorage");
    // Failures carry their texts.
    EXPECT_EQ(sys_failure([] { volume_mount_point(L"C:\\notready\\x"); }),
              "21 Failed to get volume mount point. File name: [C:\\notready\\x]");
    EXPECT_TRUE(sys_failure([] {
                    volume_device_name(L"Z:\\");
                }).ends_with(" Failed to get volume device name. Volume mount point: [Z:\\]"));
}

TEST_F(SimulatedHost, SearchThroughMountPointsAndVolumeNamesAndItsFailures) {
    win_file_search_t by_drive(L"c:\\vms\\VM1\\*.VHDX");
    ASSERT_TRUE(by_drive.found());
    EXPECT_EQ(by_drive.current().name, L"a.vhdx");
    EXPECT_TRUE(folder_exists(L"\\\\?\\Volume{6a1b0c3e-0000-0000-0000-000000000001}\\VMs"));
    EXPECT_TRUE(folder_exists(L"C:\\"));
    // Failures name their mask.
    host.tree().add_file("volumes/c/locked/a.vhdx");
    EXPECT_FALSE(runtime::search_or_warn(L"C:\\locked\\*").found());
    EXPECT_EQ(sys_failure([] { win_file_search_t(L"C:\\locked\\*"); }),
              "5 File search operation has failed. Search mask: [C:\\locked\\*].");

    // A search that fails after its first entry throws, and is over.
    win_file_search_t search(L"C:\\VMs\\faulty\\*.vhdx");
    ASSERT_TRUE(search.found());
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
