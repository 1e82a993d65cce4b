// What the platform wrappers see of the host: paths, volumes, registry, environment and
// the cluster calls.
#include "scratch_host.h"

#include "compat/cluster_api.h"
#include "hostsim/host_access.h"

#include <gtest/gtest.h>

using namespace hostsim_test;
using hostsim::map_path;

// Paths lead to the files of their volume, share or shadow copy, volumes to their names, and the
// registry and environment come from the host first.
TEST(PlatformView, PathsVolumesRegistryAndEnvironmentAreTheHostsFirst) {
    scratch_host_t host;
    const auto c = host.dir() / "volumes" / "c";
    EXPECT_EQ(map_path(L"C:\\VMs\\vm1\\vm1.vhdx"), c / "VMs/vm1/vm1.vhdx");
    EXPECT_EQ(map_path(L"c:/vms/VM1/Vm1.vhdx"), c / "VMs/vm1/vm1.vhdx")
        << "directory names without regard to case";
    EXPECT_EQ(map_path(L"C:\\VMs\\vm1\\missing\\x.vhdx"), c / "VMs/vm1/missing/x.vhdx");
    EXPECT_EQ(map_path(L"D:\\Mounted\\VMs"), c / "VMs") << "a volume's second mount point";
    EXPECT_EQ(map_path(std::wstring(c_volume_name) + L"VMs\\vm1"), c / "VMs/vm1");
    EXPECT_EQ(map_path(L"\\\\?\\C:\\VMs"), c / "VMs");
    EXPECT_EQ(map_path(L"C:\\ClusterStorage\\Volume1\\vm2\\Disks\\vm2.vhdx"),
              host.dir() / "volumes/csv1/vm2/Disks/vm2.vhdx")
        << "the longest mount point wins";
    EXPECT_EQ(map_path(L"\\\\FS01\\VMS\\vm3\\vm3.vhdx"), host.dir() / "shares/fs01-vms/vm3/vm3.vhdx");
    EXPECT_EQ(map_path(L"\\\\?\\UNC\\fs01\\vms\\vm3"), host.dir() / "shares/fs01-vms/vm3");
    EXPECT_EQ(map_path(L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy12\\VMs"),
              host.dir() / "state/shadows/12/VMs");
    EXPECT_EQ(map_path(L"/tmp\\native/file"), std::filesystem::path("/tmp/native/file"));
    EXPECT_EQ(map_path(L"E:\\nothing"), std::nullopt);
    EXPECT_EQ(map_path(L"\\\\other\\share\\x"), std::nullopt);
    EXPECT_EQ(map_path(L"relative\\path"), std::nullopt);
    EXPECT_EQ(hostsim::volume_path_name(L"C:\\VMs\\vm1\\vm1.vhdx"), L"C:\\");
    EXPECT_EQ(hostsim::volume_path_name(L"C:\\ClusterStorage\\Volume1\\vm2"),
              L"C:\\ClusterStorage\\Volume1\\");
    EXPECT_EQ(hostsim::volume_path_name(L"\\\\fs01\\vms\\vm3\\vm3.vhdx"), L"\\\\fs01\\vms\\");
    EXPECT_EQ(hostsim::volume_path_name(L"Q:\\x"), std::nullopt);
    EXPECT_EQ(hostsim::volume_path_name(L"\\\\?\\C:\\VMs\\vm1\\vm1.vhdx"), L"\\\\?\\C:\\")
        << "the long path prefix stays";
    EXPECT_EQ(hostsim::volume_path_name(L"\\\\?\\UNC\\fs01\\vms\\vm3\\vm3.vhdx"), L"\\\\?\\UNC\\fs01\\vms\\");
    EXPECT_EQ(hostsim::volume_name_for_mount_point(L"c:\\"), c_volume_name);
    EXPECT_EQ(hostsim::volume_name_for_mount_point(L"C:"), std::nullopt)
        << "a mount point ends with a backslash";
    EXPECT_EQ(hostsim::mount_points_of_volume(c_volume_name),
              (std::vector<std::wstring>{L"C:\\", L"D:\\Mounted\\"}));
    EXPECT_TRUE(hostsim::registry_key_exists(L"SOFTWARE\\orlix\\Orlix Keepsafe"));
    EXPECT_TRUE(hostsim::registry_key_exists(L"SOFTWARE\\Orlix"));
    EXPECT_FALSE(hostsim::registry_key_exists(L"SOFTWARE\\OrliX\\Orlix NFS"));
    // Values' types and the ones that are missing are read through the registry wrappers' tests.
    EXPECT_EQ(hostsim::registry_value(L"SOFTWARE\\Orlix\\Orlix Keepsafe", L"Level").value().number, 16u)
        << "hexadecimal data";

    EXPECT_EQ(hostsim::environment_variable(L"VMROOT"), L"C:\\VMs");
    EXPECT_EQ(hostsim::environment_variable(L"SystemDrive"), L"C:");
    EXPECT_EQ(hostsim::environment_variable(L"ProgramData"), L"C:\\ProgramData");
    setenv("MIRRACK_TEST_ONLY_VAR", "from the process", 1);
    EXPECT_EQ(hostsim::environment_variable(L"MIRRACK_TEST_ONLY_VAR"), L"from the process");
    unsetenv("MIRRACK_TEST_ONLY_VAR");
    EXPECT_EQ(hostsim::environment_variable(L"NoSuchVariableAnywhere"), std::nullopt);
}

TEST(PlatformView, WithoutAHostNothingIsThere) {
    unsetenv("MIRRACK_HOST");
    EXPECT_FALSE(hostsim::host_selected());
    EXPECT_EQ(map_path(L"C:\\Windows"), std::nullopt);
    EXPECT_EQ(map_path(L"/etc/hostname"), std::filesystem::path("/etc/hostname"));
    EXPECT_FALSE(hostsim::registry_key_exists(L"SOFTWARE"));
    EXPECT_EQ(hostsim::win32_call("GetVolumePathNameW", L"C:\\"), std::nullopt);
    auto backup = gathered_backup();
    UINT writers = 9;
    ASSERT_EQ(backup->GetWriterMetadataCount(&writers), S_OK);
    EXPECT_EQ(writers, 0u);
}

// What a preparation leads to is the contract tests' and the volume set's; here, the call's own answers.
TEST(PlatformView, ClusterSharedVolumesArePreparedThroughTheirFiles) {
    scratch_host_t host;
    const wchar_t* file = L"C:\\ClusterStorage\\Volume1\\vm2\\Disks\\vm2.vhdx";
    EXPECT_FALSE(ClusterIsPathOnSharedVolume(L"C:\\VMs\\vm1\\vm1.vhdx"));
    WCHAR mount[MAX_PATH], name[MAX_PATH];
    DWORD mount_length = 5, name_length = MAX_PATH;
    EXPECT_EQ(ClusterPrepareSharedVolumeForBackup(file, mount, &mount_length, name, &name_length),
              DWORD(ERROR_MORE_DATA));
    mount_length = MAX_PATH;
    ASSERT_EQ(ClusterPrepareSharedVolumeForBackup(file, mount, &mount_length, name, &name_length), DWORD(0));
    EXPECT_STREQ(mount, L"C:\\ClusterStorage\\Volume1\\");
    EXPECT_EQ(host.state_lines("csv.txt"),
              std::vector<std::string>{"\\\\?\\Volume{6a1b0c3e-0000-0000-0000-000000000002}\\\t"
                                       "{00000000-0000-0000-0000-000000000000}\t" +
                                       this_process_text() +
                                       "\tC:\\ClusterStorage\\Volume1\\vm2\\Disks\\vm2.vhdx"})
        << "prepared outside any snapshot creation";
    EXPECT_EQ(ClusterPrepareSharedVolumeForBackup(L"C:\\VMs\\vm1\\vm1.vhdx", mount, &mount_length, name,
                                                  &name_length),
              DWORD(ERROR_INVALID_PARAMETER));
}
