// A snapshot taken on the test's thread and its steps: which VMs a specification selects, the
// provider each volume gets, the file set of each VM and where its items move, and how an off-host
// snapshot differs. What the shadow paths lead to is read through the tool.
#include "snapshot_test_support.h"

#include "common/exc/convert.h"
#include "common/format/format.h"
#include "documents/snapshot_ids.h"
#include "snapshot/provider_choice.h"
#include "snapshot/shadow_paths.h"
#include "snapshot/vm_file_set.h"
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

// An id matches the writer's name in any letter case, and the VM keeps the writer's spelling. A
// provider that refuses once is asked again after the pause, and serves.
TEST(Snapshot, EachVmGetsItsFilesOnTheShadowCopiesInTheOrderOfFinding) {
    hyperv_host_t host("", R"(refuse="1")");
    const std::vector<spec_vm_t> vms{{local_vm, false, {R"(C:\VMs\local\notes.txt)"}},
                                     {"a1000000-0000-4000-8000-000000000002"},
                                     {smb_vm, true}};
    auto snapshot = take_snapshot(spec_xml(vms, usual_providers));
    const auto csvVm = snapshot->GetVms().find(to_unicode(csv_vm));
    ASSERT_NE(csvVm, snapshot->GetVms().end());
    EXPECT_EQ(csvVm->first, to_unicode(csv_vm));
    EXPECT_EQ(host.count("IsVolumeSupported", "b5946137-7b9f-4925-af80-51abd60b20d5"), 2u);
    EXPECT_EQ(host.count("DoSnapshotSet"), 1u);
    const auto result = snapshot->BuildResult();

    // Direct files first, missing or not, as the writer words them; a mask with '?' alone is a
    // search all the same. A recursive search enters only the directories that its mask matches,
    // in no set order.
    std::vector<item_t> local = shown(items_of(*result, local_vm));
    ASSERT_EQ(local.size(), 7u);
    std::sort(local.begin() + 3, local.begin() + 6);
    EXPECT_EQ(local,
              (std::vector<item_t>{
                  {L"C:\\VMs\\local\\", L"local.vhdx", 0, L"local.vhdx", L"VMs\\local\\local.vhdx"},
                  {L"C:\\VMs\\local\\", L"gone.vhdx", 0, L"gone.vhdx", L"VMs\\local\\gone.vhdx"},
                  {L"%VmRoot%\\local\\", L"local_?.avhdx", 0, L"local_1.avhdx", L"VMs\\local\\local_1.avhdx"},
                  {L"%VmRoot%\\local\\", L"Snap*", 1, L"Snapfile.bin", L"VMs\\local\\Snapfile.bin"},
                  {L"%VmRoot%\\local\\", L"Snap*", 1, L"Snapshots\\Snap-a.vmrs",
                   L"VMs\\local\\Snapshots\\Snap-a.vmrs"},
                  {L"%VmRoot%\\local\\", L"Snap*", 1, L"Snapshots\\Snapdeep\\Snap-b.vmrs",
                   L"VMs\\local\\Snapshots\\Snapdeep\\Snap-b.vmrs"},
                  {L"C:\\VMs\\local", L"notes.txt", 0, L"notes.txt", L"VMs\\local\\notes.txt"}}));

    const ItemsList csv = items_of(*result, csv_vm);
    ASSERT_EQ(csv.size(), 2u);
    const ItemsList smb = items_of(*result, smb_vm);
    ASSERT_EQ(shown(smb), (std::vector<item_t>{
                              {L"\\\\fs01\\vms\\smb\\", L"smb.vhdx", 0, L"smb.vhdx", L"smb\\smb.vhdx"}}));
    EXPECT_NE(below_device(csv[0].fullPath), below_device(csv[1].fullPath));
    EXPECT_NE(items_of(*result, local_vm)[0].fullPath.substr(0, 50), smb[0].fullPath.substr(0, 50))
        << "one device per volume";

    EXPECT_TRUE(items_of(*result, idle_vm).empty()) << "a VM nobody asked for isn't selected";
}

TEST(Snapshot, TransportableSnapshotKeepsVolumeNamePathsAndListsItsSnapshots) {
    hyperv_host_t host;
    log_capture_t log;
    auto snapshot = take_snapshot(
        spec_xml({{local_vm}}, R"(<VSSProvider type="3" id="7f1d0000-0000-0000-0000-00000000aaaa"/>
                                  <Offhost type="1"/>)"));

    ASSERT_EQ(host.count("SetContext"), 1u);
    EXPECT_GT(host.first_call("SetContext"), host.first_call("GetWriterMetadata")) << "after the metadata";
    EXPECT_EQ(host.count("GetSnapshotProperties"), 0u);
    EXPECT_FALSE(log.has("Checking whether all files exist on snapshot volumes."));

    const auto result = snapshot->BuildResult();
    EXPECT_EQ(items_of(*result, local_vm).at(0).fullPath, to_unicode(c_volume) + L"VMs\\local\\local.vhdx");
    SnapshotIdList ids;
    DeserializeSnapshotIds(result->info->SnapshotsXML, ids);
    EXPECT_EQ(ids.size(), 1u);
}

// Nothing stops the task before the snapshot, and VSS accepts a set without volumes.
TEST(VmSelection, AnEmptyListReadsNoComponentAndGoesOnWithAnEmptySet) {
    hyperv_host_t host;
    auto snapshot = take_snapshot(spec_xml({}, usual_providers));
    EXPECT_TRUE(snapshot->GetVms().empty());
    EXPECT_EQ(host.count("GetComponent"), 0u);
    EXPECT_EQ(host.count("AddToSnapshotSet"), 0u);
    EXPECT_EQ(host.count("DoSnapshotSet"), 1u);
}

// The matched VMs go with the task: one missing VM fails the whole of it.
TEST(VmSelection, MissingVmsFailTheTaskWithTheirIdsJoined) {
    struct case_t {
        std::vector<spec_vm_t> vms;
        std::string listed;
    };
    for (const case_t& c :
         {case_t{{{local_vm}, {"a"}, {"b"}}, "a;b"},
          case_t{{{csv_vm}, {std::string("{") + local_vm + "}"}}, std::string("{") + local_vm + "}"},
          case_t{{{local_vm}, {local_vm}}, local_vm}}) {
        SCOPED_TRACE(c.listed);
        hyperv_host_t host;
        log_capture_t log;
        const auto lines = failure_lines([&] { take_snapshot(spec_xml(c.vms, usual_providers)); });
        EXPECT_EQ(lines,
                  (std::vector<std::string>{
                      "There is no VSS metadata for VMs, or they are not registered on Hyper-V host. VMs: '" +
                          c.listed + "'.",
                      "Failed to specify VMs that should be backed up."}));
        EXPECT_EQ(log.count("Excluding VM from backup list"), c.vms.size() - 1);
        EXPECT_EQ(host.count("StartSnapshotSet"), 0u);
    }
}

TEST(ProviderChoice, FollowsTheTypeOfTheVolumesEntry) {
    const std::string other = "{12345678-aaaa-bbbb-cccc-1234567890ab}";
    // A provider by the volume's mount point, with an id that it ignores.
    const auto volume = [&](const char* type, const char* mountPoint) {
        return "<volumes><volProvider type=\"" + std::string(type) + "\" id=\"" + other +
               "\" volMountPoint=\"" + mountPoint + "\"/></volumes>";
    };
    struct case_t {
        std::string providers;
        std::wstring mountPoint;
        std::string id;
        std::string line;
    };
    for (const case_t& c :
         {case_t{"", L"C:\\", "{00000000-0000-0000-0000-000000000000}",
                 "Snapshot provider is not specified for volume [C:\\]. Default one will be used."},
          case_t{"<VSSProvider type=\"1\" id=\"" + other + "\"/>", L"C:\\",
                 "{b5946137-7b9f-4925-af80-51abd60b20d5}", "System provider will be used for volume [C:\\]."},
          case_t{volume("4", "\\\\fs\\s"), L"\\\\FS\\S\\", "{89300202-3cec-4981-9171-19f59559e0f2}",
                 "File share provider will be used for the volume [\\\\FS\\S\\]."},
          case_t{volume("5", "C:\\CS\\V1"), L"c:\\cs\\v1\\", "{400a2ff4-5eb1-44b0-8a05-1fcac0bcf9ff}",
                 "CSV provider will be used for the volume [c:\\cs\\v1\\]."},
          case_t{"<VSSProvider type=\"2\" id=\"" + other + "\"/>", L"C:\\", other,
                 "Software provider [" + other + "] will be used for volume [C:\\]."},
          case_t{"<VSSProvider type=\"7\" id=\"" + other + "\"/>", L"C:\\", other,
                 "Hardware provider [" + other + "] will be used for the volume [C:\\]."}}) {
        SCOPED_TRACE(c.line);
        auto spec = parse_spec(spec_xml({}, c.providers));
        log_capture_t log;
        EXPECT_EQ(guid_to_string(impl::ChooseProvider(*spec, c.mountPoint)), c.id);
        EXPECT_TRUE(log.has(c.line)) << log.text();
    }
}

TEST(ShadowPaths, ItemsOnTheOldVolumeInAnyCaseMoveToTheNewOneOthersStayAndTheResultAnswersPerVm) {
    const std::wstring oldVolume = L"\\\\?\\Volume{aa}\\";
    const std::wstring device = L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy7";
    const auto item = [](const std::wstring& fullPath) {
        return CFilesListItem(L"p", L"m", 0, L"r", fullPath);
    };
    ItemsList items{item(L"\\\\?\\VOLUME{AA}\\VMs\\a.vhdx"), item(oldVolume),
                    item(L"\\\\?\\Volume{bb}\\VMs\\a.vhdx")};
    impl::MapVmItems(items, oldVolume, device);
    EXPECT_EQ(items, (ItemsList{item(device + L"\\VMs\\a.vhdx"), item(device),
                                item(L"\\\\?\\Volume{bb}\\VMs\\a.vhdx")}));
    const GUID known = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    const GUID unknown = {9, 9, 9, {9, 9, 9, 9, 9, 9, 9, 9}};
    CVssSnapshotResult result(std::make_shared<impl::CSnapshotInfo>(), {{known, {item(L"f")}}});
    EXPECT_NE(result.ListVmFiles(known).find("FullPath=\"f\""), std::string::npos);
    EXPECT_EQ(failure_lines([&] { result.ListVmFiles(unknown); }),
              std::vector<std::string>{"Cannot find VM with ID: [{00000009-0009-0009-0909-090909090909}]"});
}

TEST(VmFileSet, AFailedSearchNamesEveryLevelOfTheWalkAndAuxFilesAreAddedOnceUnchecked) {
    hyperv_host_t host(R"(<Fault op="FindNextFileW" match="Snapdeep" err="5"/>)");
    ItemsList items;
    const auto lines =
        failure_lines([&] { impl::SearchFiles(items, L"%VmRoot%\\local\\", L"Snap*", true, L""); });
    const std::string level =
        "Failed to search the directory [%VmRoot%\\local\\] for a file [Snap*]. Is search recursive: [true].";
    EXPECT_EQ(
        lines,
        (std::vector<std::string>{
            exc::sys_error_text(5),
            "File search operation has failed. Search mask: [C:\\VMs\\local\\Snapshots\\Snapdeep\\Snap*].",
            level, level, level}));
    // Aux files are added once, by path equality, without being checked.
    ItemsList listed{CFilesListItem(L"C:\\VMs\\", L"a.vhdx", 0, L"a.vhdx", L"C:\\VMs\\a.vhdx")};
    impl::AddAuxFiles(listed,
                      {"c:\\vms\\\\A.VHDX", "C:\\VMs\\notes.txt", "C:\\VMs\\notes.txt\\", "bare.txt"});
    EXPECT_EQ(listed,
              (ItemsList{CFilesListItem(L"C:\\VMs\\", L"a.vhdx", 0, L"a.vhdx", L"C:\\VMs\\a.vhdx"),
                         CFilesListItem(L"C:\\VMs", L"notes.txt", 0, L"notes.txt", L"C:\\VMs\\notes.txt"),
                         CFilesListItem(L"", L"bare.txt", 0, L"bare.txt", L"bare.txt")}));
}
