// A whole snapshot taken on the test's thread: what each VM's items say, in their order, and how
// an off-host snapshot differs. What the shadow paths lead to is read through the tool.
#include "snapshot_test_support.h"

#include "common/exc/convert.h"
#include "common/format/format.h"
#include "documents/snapshot_ids.h"
#include "spec/hv_backup_spec.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace snapshot_test;

namespace {

const std::wstring shadowPrefix = L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy";

// The item's fullPath below its shadow device, or the whole path if it isn't on one.
std::wstring below_device(const std::wstring& fullPath) {
    if (fullPath.rfind(shadowPrefix, 0) != 0)
        return fullPath;
    return fullPath.substr(fullPath.find(L'\\', shadowPrefix.size()) + 1);
}

struct item_t {
    std::wstring path, mask;
    std::uint32_t recursive;
    std::wstring relativePath, belowDevice;
    bool operator==(const item_t&) const = default;
    bool operator<(const item_t& o) const { return relativePath < o.relativePath; }
};

std::vector<item_t> shown(const ItemsList& items) {
    std::vector<item_t> seen;
    for (const auto& item : items)
        seen.push_back(
            {item.path, item.mask, item.recursive, item.relativePath, below_device(item.fullPath)});
    return seen;
}

} // namespace

TEST(Snapshot, EachVmGetsItsFilesOnTheShadowCopiesInTheOrderOfFinding) {
    hyperv_host_t host;
    auto snapshot = take_snapshot(spec_xml(three_vms(), usual_providers));
    const auto result = snapshot->BuildResult();

    const ItemsList local = items_of(*result, local_vm);
    ASSERT_EQ(local.size(), 7u);
    for (const auto& item : local)
        EXPECT_EQ(item.fullPath.rfind(shadowPrefix, 0), 0u) << to_ansi(item.fullPath);
    // Direct files first, missing or not, as the writer words them; a mask with '?' alone is a
    // search all the same.
    EXPECT_EQ(
        shown({local[0], local[1], local[2]}),
        (std::vector<item_t>{
            {L"C:\\VMs\\local\\", L"local.vhdx", 0, L"local.vhdx", L"VMs\\local\\local.vhdx"},
            {L"C:\\VMs\\local\\", L"gone.vhdx", 0, L"gone.vhdx", L"VMs\\local\\gone.vhdx"},
            {L"%VmRoot%\\local\\", L"local_?.avhdx", 0, L"local_1.avhdx", L"VMs\\local\\local_1.avhdx"}}));
    // A recursive search enters only the directories that its mask matches.
    std::vector<item_t> searched = shown({local[3], local[4], local[5]});
    std::sort(searched.begin(), searched.end());
    EXPECT_EQ(searched, (std::vector<item_t>{
                            {L"%VmRoot%\\local\\", L"Snap*", 1, L"Snapfile.bin", L"VMs\\local\\Snapfile.bin"},
                            {L"%VmRoot%\\local\\", L"Snap*", 1, L"Snapshots\\Snap-a.vmrs",
                             L"VMs\\local\\Snapshots\\Snap-a.vmrs"},
                            {L"%VmRoot%\\local\\", L"Snap*", 1, L"Snapshots\\Snapdeep\\Snap-b.vmrs",
                             L"VMs\\local\\Snapshots\\Snapdeep\\Snap-b.vmrs"}}));
    EXPECT_EQ(shown({local[6]}), (std::vector<item_t>{{L"C:\\VMs\\local", L"notes.txt", 0, L"notes.txt",
                                                       L"VMs\\local\\notes.txt"}}));

    const ItemsList csv = items_of(*result, csv_vm);
    ASSERT_EQ(csv.size(), 2u);
    const ItemsList smb = items_of(*result, smb_vm);
    ASSERT_EQ(smb.size(), 1u);
    EXPECT_EQ(shown(smb), (std::vector<item_t>{
                              {L"\\\\fs01\\vms\\smb\\", L"smb.vhdx", 0, L"smb.vhdx", L"smb\\smb.vhdx"}}));
    EXPECT_NE(below_device(csv[0].fullPath), below_device(csv[1].fullPath));
    EXPECT_NE(local[0].fullPath.substr(0, 50), smb[0].fullPath.substr(0, 50)) << "one device per volume";

    EXPECT_TRUE(items_of(*result, idle_vm).empty()) << "a VM nobody asked for isn't selected";
}

TEST(Snapshot, TransportableSnapshotKeepsVolumeNamePathsAndListsItsSnapshots) {
    hyperv_host_t host;
    log_capture_t log;
    auto snapshot = take_snapshot(
        spec_xml({{local_vm}}, R"(<VSSProvider type="3" id="7f1d0000-0000-0000-0000-00000000aaaa"/>
                                  <Offhost type="1"/>)"));

    ASSERT_NE(host.first_call("SetContext"), std::string::npos);
    EXPECT_GT(host.first_call("SetContext"), host.first_call("GetWriterMetadata")) << "after the metadata";
    EXPECT_EQ(host.count("SetContext"), 1u);
    EXPECT_EQ(host.count("GetSnapshotProperties"), 0u);
    EXPECT_FALSE(log.has("Checking whether all files exist on snapshot volumes."));

    const auto result = snapshot->BuildResult();
    const ItemsList local = items_of(*result, local_vm);
    ASSERT_FALSE(local.empty());
    EXPECT_EQ(local[0].fullPath, to_unicode(c_volume) + L"VMs\\local\\local.vhdx");
    SnapshotIdList ids;
    DeserializeSnapshotIds(result->info->SnapshotsXML, ids);
    EXPECT_EQ(ids.size(), 1u);
}

TEST(Snapshot, AProviderThatRefusesOnceIsAskedAgainAfterThePauseAndServes) {
    hyperv_host_t host("", R"(refuse="1")");
    auto snapshot = take_snapshot(spec_xml({{local_vm}}, usual_providers));
    EXPECT_EQ(host.count("IsVolumeSupported"), 2u);
    EXPECT_EQ(host.count("DoSnapshotSet"), 1u);
    EXPECT_FALSE(items_of(*snapshot->BuildResult(), local_vm).empty());
}
