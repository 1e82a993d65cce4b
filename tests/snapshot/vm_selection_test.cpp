// Which VMs a specification selects, and how a VM the writer doesn't know fails the task.
#include "snapshot_test_support.h"

#include "common/exc/convert.h"

#include <gtest/gtest.h>

using namespace snapshot_test;

TEST(VmSelection, IdsMatchTheWritersNamesInAnyLetterCaseAndKeepTheWritersSpelling) {
    hyperv_host_t host;
    std::string lower = csv_vm;
    for (auto& c : lower)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    auto snapshot = take_snapshot(spec_xml({lower}, usual_providers));
    ASSERT_EQ(snapshot->GetVms().size(), 1u);
    EXPECT_EQ(snapshot->GetVms().begin()->first, to_unicode(csv_vm));
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
