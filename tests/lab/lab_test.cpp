// mirrack-lab: sample hosts that the tool can back up, and the views of a host's state.
#include "lab/lab_commands.h"
#include "lab/sample_host.h"

#include "common/win/file_search.h"
#include "compat/cluster_api.h"
#include "hostsim/host.h"
#include "hostsim/wide_text.h"
#include "scratch_host.h"

#include <gtest/gtest.h>

#include <sstream>

namespace fs = std::filesystem;
using hostsim_test::hyperv_writer_id;
using test_support::contains;

namespace {

int run_lab(const std::vector<std::string>& args, std::string* out = nullptr) {
    std::ostringstream o, e;
    int code = lab::run_lab_command(args, o, e);
    if (out)
        *out = o.str() + e.str();
    return code;
}

std::wstring expanded(std::wstring path) {
    const std::wstring var = L"%SystemDrive%";
    if (path.rfind(var, 0) == 0)
        path = L"C:" + path.substr(var.size());
    return path;
}

// Files a spec finds, named or by wildcards, walking directories whose names match as the tool does.
std::size_t files_found(const hostsim::host_t& host, const hostsim::file_spec_t& spec,
                        const std::wstring& prefix = L"") {
    auto dir = host.map_path(expanded(spec.path) + prefix);
    std::size_t found = 0;
    std::error_code ec;
    for (fs::directory_iterator it(*dir, ec), end; !ec && it != end; ++it) {
        auto name = hostsim::from_utf8(it->path().filename().string());
        if (!win::mask_matches(spec.spec, name))
            continue;
        if (it->is_directory())
            found += spec.recursive ? files_found(host, spec, prefix + name + L"\\") : 0;
        else
            ++found;
    }
    return found;
}

} // namespace

TEST(SampleHost, EveryVmsFilesAreWhereItsWriterSaysTheyAreAndResolveMapsTheirPaths) {
    const test_support::host_folder_t lab_dir("mirrack-lab");
    ASSERT_EQ(run_lab({"create", lab_dir.dir().string(), "--vms", "3", "--volumes", "2", "--files-per-vm",
                       "6", "--file-size", "3K"}),
              0);
    auto host = hostsim::host_t::open(lab_dir.dir());
    ASSERT_TRUE(host->usable()) << host->complaint();

    const auto& writer = host->model().writers.front();
    EXPECT_EQ(writer.id, hyperv_writer_id);
    ASSERT_EQ(writer.components.size(), 5u) << "three local, one on the CSV, one on the share";
    std::vector<std::wstring> roots;
    for (auto& component : writer.components) {
        std::size_t files = 0;
        for (auto& spec : component.files)
            files += files_found(*host, spec);
        EXPECT_EQ(files, 6u) << hostsim::to_utf8(component.caption);
        roots.push_back(host->locate(expanded(component.files.front().path)).root);
    }
    EXPECT_EQ(roots, (std::vector<std::wstring>{L"C:\\", L"C:\\Mounts\\Volume02\\", L"C:\\",
                                                L"C:\\ClusterStorage\\Volume1\\", L"\\\\fs01\\vms\\"}))
        << "the local VMs take turns on the local volumes";
    EXPECT_EQ(fs::file_size(*host->map_path(L"C:\\Hyper-V\\vm1\\Virtual Hard Disks\\vm1.vhdx")), 3072u);
    std::string out;
    ASSERT_EQ(
        run_lab({"resolve", lab_dir.dir().string(), "\\\\FS01\\vms\\VM-SMB\\virtual hard disks\\vm-smb.vhdx"},
                &out),
        0);
    EXPECT_EQ(out, (lab_dir.dir() / "shares/fs01-vms/vm-smb/Virtual Hard Disks/vm-smb.vhdx").string() + "\n");
    EXPECT_EQ(run_lab({"resolve", lab_dir.dir().string(), "Q:\\nowhere"}, &out), 3);
}

TEST(SampleHost, AProxyHostOffersTheTransportableProviderAndCreateRefusesAnExistingHost) {
    const test_support::host_folder_t lab_dir("mirrack-lab");
    ASSERT_EQ(run_lab({"create", lab_dir.dir().string(), "--proxy"}), 0);
    auto host = hostsim::host_t::open(lab_dir.dir());
    ASSERT_TRUE(host->usable()) << host->complaint();
    EXPECT_EQ(host->model().name, L"PROXY01");
    const auto* hardware = host->find_provider(*hostsim::parse_guid(lab::hardware_provider_id));
    EXPECT_TRUE(hardware && hardware->transportable);
    EXPECT_TRUE(host->model().writers.size() == 1 && host->model().writers[0].id != hyperv_writer_id);
    std::string out;
    EXPECT_EQ(run_lab({"create", lab_dir.dir().string()}, &out), 1);
    EXPECT_EQ(out, "mirrack-lab: There is a host in " + lab_dir.dir().string() + " already.\n");
}

// --help shows the use and makes nothing; what looks like an option is never taken for a folder;
// a bad option of create is named, and makes nothing either.
TEST(LabCommandLine, HelpMakesNothingAndAnOptionIsNoFolder) {
    const test_support::host_folder_t lab_dir("mirrack-lab");
    const fs::path host = lab_dir.dir() / "host";
    const fs::path previous = fs::current_path();
    fs::current_path(lab_dir.dir()); // where "create --help" made its folder
    const std::vector<std::pair<std::vector<std::string>, int>> lines = {
        {{"create", "--help"}, 0},
        {{"create", host.string(), "--help"}, 0},
        {{"state", "-h"}, 0},
        {{"resolve", "--help"}, 0},
        {{"create", "--vms", "2"}, 2},
        {{"state", "--all"}, 2},
        {{"resolve", "-x", "C:\\"}, 2},
        {{"frobnicate"}, 2},
        {{"create", host.string(), "--file-size", "3Q"}, 1},
        {{"create", host.string(), "--colour", "red"}, 1}};
    for (const auto& [line, status] : lines) {
        std::string out;
        EXPECT_EQ(run_lab(line, &out), status) << out;
        EXPECT_EQ(contains(out, "Usage:"), status != 1) << out;
    }
    fs::current_path(previous);
    EXPECT_TRUE(fs::is_empty(lab_dir.dir()));
}

TEST(LabViews, StateShowsTheCreationInProgressShadowCopiesVolumesInBackupAndResults) {
    const test_support::host_folder_t lab_dir("mirrack-lab");
    ASSERT_EQ(run_lab({"create", lab_dir.dir().string(), "--vms", "1", "--file-size", "1K"}), 0);
    auto host = hostsim::host_t::open(lab_dir.dir());
    const auto& vm1 = host->model().writers.front().components.front();

    const auto backup = hostsim_test::gathered_backup();
    const std::string set_text = hostsim::to_utf8(hostsim::guid_text(hostsim_test::start_set(backup.get())));
    const GUID instance = host->model().writers.front().instance;
    ASSERT_EQ(backup->AddComponent(instance, hyperv_writer_id, VSS_CT_FILEGROUP, L"", vm1.name.c_str()),
              S_OK);
    ASSERT_EQ(hostsim_test::add_volume(backup.get(), L"C:\\"), S_OK);
    WCHAR mount[MAX_PATH], name[MAX_PATH];
    DWORD mount_length = MAX_PATH, name_length = MAX_PATH;
    ASSERT_EQ(ClusterPrepareSharedVolumeForBackup(L"C:\\ClusterStorage\\Volume1\\vm-csv\\a.vhdx", mount,
                                                  &mount_length, name, &name_length),
              DWORD(0));
    std::string report;
    ASSERT_EQ(run_lab({"state", lab_dir.dir().string()}, &report), 0);
    EXPECT_TRUE(contains(report, "Shadow-copy creation: in progress for set " + set_text + ", pid " +
                                     std::to_string(getpid()) + ", since "))
        << report;
    EXPECT_TRUE(contains(report, "Cluster shared volumes in backup: 1\n  " +
                                     hostsim::to_utf8(lab::sample_csv_volume) +
                                     "  C:\\ClusterStorage\\Volume1\\\n    prepared by set " + set_text +
                                     " for C:\\ClusterStorage\\Volume1\\vm-csv\\a.vhdx\n"))
        << report;

    ASSERT_EQ(backup->SetBackupState(true, true, VSS_BT_FULL, false), S_OK);
    ASSERT_EQ(hostsim_test::run(backup.get(), &IVssBackupComponents::PrepareForBackup), VSS_S_ASYNC_FINISHED);
    ASSERT_EQ(hostsim_test::run(backup.get(), &IVssBackupComponents::DoSnapshotSet), VSS_S_ASYNC_FINISHED);
    ASSERT_EQ(
        backup->SetBackupSucceeded(instance, hyperv_writer_id, VSS_CT_FILEGROUP, L"", vm1.name.c_str(), true),
        S_OK);
    ASSERT_EQ(hostsim_test::run(backup.get(), &IVssBackupComponents::BackupComplete), VSS_S_ASYNC_FINISHED);

    ASSERT_EQ(run_lab({"state", lab_dir.dir().string()}, &report), 0);
    EXPECT_TRUE(contains(report, "Shadow-copy creation: none in progress\nLive shadow copies: 1\n"))
        << report;
    EXPECT_TRUE(contains(report, "HarddiskVolumeShadowCopy1")) << report;
    EXPECT_TRUE(contains(report, hostsim::to_utf8(vm1.name) + "    vm1             succeeded\n")) << report;
}
