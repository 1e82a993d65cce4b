// The volume set: which volume each item lands on, how its path is rewritten, and how cluster shared
// volumes are prepared per item and cleared again after a failed task.
#include "vss_test_support.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "vssutils/volumes_holder.h"

#include <gtest/gtest.h>

using namespace VSSUtils;
using namespace vssutils_test;

namespace {

const std::wstring c_volume = c_volume_name;
const std::wstring csv_volume = L"\\\\?\\Volume{6a1b0c3e-0000-0000-0000-000000000002}\\";
const std::wstring csv_disk = L"C:\\ClusterStorage\\Volume1\\vm2\\Disks\\vm2.vhdx";
const std::wstring csv_new_file = L"C:\\ClusterStorage\\Volume1\\vm2\\Disks\\new\\vm2.avhdx";

} // namespace

TEST(VolumesHolder, ItemsOfOneVolumeShareItWhateverTheCaseOrMountPointAndAShareItemMapsThroughItsRoot) {
    scratch_host_t host(
        sample_host_xml(R"(<Share unc="\\fs02\data\" root="\\fs02.corp\data\" dir="shares/fs02"/>)"));
    host.write("volumes/c/VMs/vm1/more.vhdx", "x");
    host.write("shares/fs02/vm4/vm4.vhdx", "disk of vm4");
    CVolumesHolder holder;
    log_capture_t log;
    auto backup = gathered_backup();
    EXPECT_EQ(holder.AddBackupItem(L"C:\\VMs\\vm1\\vm1.vhdx", backup), c_volume + L"VMs\\vm1\\vm1.vhdx");
    EXPECT_EQ(holder.AddBackupItem(L"c:\\VMs\\vm1\\vm1_A1.avhdx", backup),
              c_volume + L"VMs\\vm1\\vm1_A1.avhdx");
    EXPECT_EQ(holder.AddBackupItem(L"D:\\Mounted\\VMs\\vm1\\more.vhdx", backup),
              c_volume + L"VMs\\vm1\\more.vhdx");

    EXPECT_EQ(holder.volumesToSnapshot, std::vector<std::wstring>{c_volume});
    EXPECT_EQ(log.count("- volume to snapshot '"), 1u);
    EXPECT_EQ(holder.mountPoints.size(), 2u) << "C:\\ and c:\\ are one entry, D:\\Mounted\\ another";
    EXPECT_TRUE(iequals(holder.FindMountPoint(c_volume), L"C:\\")) << "the first entry in map order";
    EXPECT_EQ(failure_lines([&] { holder.FindMountPoint(L"\\\\?\\Volume{unknown}\\"); }),
              std::vector<std::string>{
                  "Unable to lookup volume mount point by volume name '\\\\?\\Volume{unknown}\\'."});

    holder.LogMappings();
    EXPECT_TRUE(log.has("The following volumes should be snapshotted:"));
    EXPECT_TRUE(log.has("    'D:\\Mounted\\'. UniqueName: '" + to_ansi(c_volume) + "'"));

    // The root that VSS gives a share is its volume.
    CVolumesHolder share;
    EXPECT_EQ(share.AddBackupItem(L"\\\\fs02\\data\\vm4\\vm4.vhdx", backup),
              L"\\\\fs02.corp\\data\\vm4\\vm4.vhdx");
    EXPECT_EQ(share.mountPoints.at(L"\\\\fs02\\data\\"), L"\\\\fs02.corp\\data\\");
    EXPECT_EQ(share.volumesToSnapshot, std::vector<std::wstring>{L"\\\\fs02.corp\\data\\"});
}

// One clear that fails does not keep the other items prepared.
TEST(VolumesHolder, EachCsvItemIsPreparedAFailedTaskClearsThemAllAndAMadeSnapshotKeepsThem) {
    scratch_host_t host(
        sample_host_xml(R"(<Fault op="ClusterClearBackupStateForSharedVolume" nth="1" err="5"/>)"));
    log_capture_t log;
    {
        CVolumesHolder holder;
        auto backup = gathered_backup();
        EXPECT_EQ(holder.AddBackupItem(csv_disk, backup), csv_volume + L"vm2\\Disks\\vm2.vhdx");
        // Not there yet: judged by the folder above it.
        EXPECT_EQ(holder.AddBackupItem(csv_new_file, backup), csv_volume + L"vm2\\Disks\\new\\vm2.avhdx");
        EXPECT_EQ(holder.preparedCsvFiles, (std::vector<std::wstring>{csv_disk, csv_new_file}));
        EXPECT_EQ(holder.volumesToSnapshot, std::vector<std::wstring>{csv_volume});
        EXPECT_EQ(host.state_lines("csv.txt").size(), 1u) << "the backup state is the volume's";
    }
    EXPECT_EQ(journal_count(host, "ClusterClearBackupStateForSharedVolume"), 2u);
    EXPECT_TRUE(host.state_lines("csv.txt").empty()) << "the second file's clear clears the volume";
    EXPECT_TRUE(log.has("Failed to clear CSV backup state."));
    EXPECT_EQ(log.count("CSV backup state is cleared."), 1u);
    // A CSV reached by its volume name begins with two backslashes, like a share, and is still a CSV.
    {
        const std::wstring item = csv_volume + L"vm2\\Disks\\vm2.vhdx";
        CVolumesHolder holder;
        holder.AddBackupItem(item, gathered_backup());
        EXPECT_EQ(holder.preparedCsvFiles, std::vector<std::wstring>{item});
        EXPECT_EQ(holder.volumesToSnapshot, std::vector<std::wstring>{csv_volume});
        EXPECT_EQ(journal_count(host, "GetRootAndLogicalPrefixPaths"), 0u);
        holder.keepCsvState = true; // a snapshot was made
    }
    EXPECT_EQ(journal_count(host, "ClusterClearBackupStateForSharedVolume"), 2u);
    EXPECT_EQ(host.state_lines("csv.txt").size(), 1u);
}

TEST(VolumesHolder, AFailedItemNamesItselfAfterTheCause) {
    struct failing_item_t {
        std::string fault;
        std::wstring item;
        std::vector<std::string> lines; // after the system's text of the error, where there is one
    };
    const std::string obtain = "Failed to obtain shadow path for backup item '%1'.";
    std::vector<failing_item_t> cases = {
        {R"(<Fault op="ClusterPrepareSharedVolumeForBackup" err="5"/>)",
         csv_disk,
         {exc::sys_error_text(5),
          "Failed to prepare cluster shared volume for backup. File name: [" + to_ansi(csv_disk) + "]"}},
        {R"(<Fault op="GetVolumePathNameW" err="5"/>)",
         L"C:\\VMs\\vm1\\vm1.vhdx",
         {exc::sys_error_text(5), "Failed to get volume mount point. File name: [C:\\VMs\\vm1\\vm1.vhdx]"}},
        // A "no" under the cluster storage root is the cluster API failing, not a local path.
        {"",
         L"C:\\ClusterStorage\\Volume9\\vm9.vhdx",
         {"Failed to call function 'ClusterIsPathOnSharedVolume'. Path: "
          "'C:\\ClusterStorage\\Volume9\\vm9.vhdx'."}},
    };
    for (const auto& c : cases) {
        scratch_host_t host(sample_host_xml(c.fault));
        host.write("volumes/c/ClusterStorage/Volume9/vm9.vhdx", "not on a cluster shared volume");
        CVolumesHolder holder;
        auto expected = c.lines;
        expected.push_back(format_message(obtain, to_ansi(c.item)));
        EXPECT_EQ(failure_lines([&] { holder.AddBackupItem(c.item, gathered_backup()); }), expected);
        EXPECT_TRUE(holder.volumesToSnapshot.empty());
    }
}
