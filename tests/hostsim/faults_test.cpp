// Faults from the host description: failing calls, failing and slow operations, failing writers.
#include "scratch_host.h"

#include "hostsim/wide_text.h"

#include <gtest/gtest.h>

using namespace hostsim_test;
using compat::com_ptr_t;

TEST(Faults, NthAndMatchLimitAFaultToTheirCallsAndWithoutThemEveryCallFails) {
    const wchar_t* share = L"\\\\fs01\\vms\\";
    const wchar_t* csv = L"C:\\ClusterStorage\\Volume1\\";
    struct case_t {
        std::string conditions;
        std::vector<std::pair<const wchar_t*, HRESULT>> calls;
    };
    const case_t cases[] = {
        {"",
         {{L"C:\\", VSS_E_MAXIMUM_NUMBER_OF_VOLUMES_REACHED},
          {share, VSS_E_MAXIMUM_NUMBER_OF_VOLUMES_REACHED}}},
        {R"(nth="2")", {{L"C:\\", S_OK}, {share, VSS_E_MAXIMUM_NUMBER_OF_VOLUMES_REACHED}, {share, S_OK}}},
        {R"(match="clusterstorage")", {{L"C:\\", S_OK}, {csv, VSS_E_MAXIMUM_NUMBER_OF_VOLUMES_REACHED}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.conditions);
        scratch_host_t host(
            sample_host_xml(R"(<Fault op="AddToSnapshotSet" hr="0x80042312" )" + c.conditions + "/>"));
        auto backup = gathered_backup();
        start_set(backup.get());
        for (const auto& [volume, hr] : c.calls)
            EXPECT_EQ(add_volume(backup.get(), volume), hr) << hostsim::to_utf8(volume);
    }
}

// Cancelled is a success code, yet a cancelled operation ends without its effect, as a failed one.
TEST(Faults, AStatusEndsTheOperationAndOneThatFailedOrWasCancelledLeavesNothing) {
    scratch_host_t host(sample_host_xml(R"(<Fault op="DoSnapshotSet" nth="1" status="0x80042306"/>
                                           <Fault op="DoSnapshotSet" nth="2" status="0x0004230B"/>
                                           <Fault op="GatherWriterMetadata" nth="3" status="0x0004230B"/>)"));
    auto backup = prepared_backup();
    EXPECT_EQ(run(backup.get(), &IVssBackupComponents::DoSnapshotSet), VSS_E_PROVIDER_VETO);
    EXPECT_TRUE(host.state_lines("shadows.txt").empty());
    EXPECT_TRUE(std::filesystem::is_empty(host.dir() / "state" / "shadows"));
    EXPECT_EQ(run(backup.get(), &IVssBackupComponents::BackupComplete), VSS_E_BAD_STATE);

    VSS_ID snapshot{};
    auto cancelled = prepared_backup(&snapshot);
    EXPECT_EQ(run(cancelled.get(), &IVssBackupComponents::DoSnapshotSet), VSS_S_ASYNC_CANCELLED);
    EXPECT_TRUE(host.state_lines("shadows.txt").empty()) << "no shadow copy was made";
    EXPECT_TRUE(host.state_lines("creation.txt").empty());
    VSS_SNAPSHOT_PROP prop{};
    EXPECT_EQ(cancelled->GetSnapshotProperties(snapshot, &prop), VSS_E_OBJECT_NOT_FOUND);
    auto ungathered = initialised_backup();
    EXPECT_EQ(run(ungathered.get(), &IVssBackupComponents::GatherWriterMetadata), VSS_S_ASYNC_CANCELLED);
    UINT count = 0;
    EXPECT_EQ(ungathered->GetWriterMetadataCount(&count), VSS_E_BAD_STATE) << "no metadata was gathered";
}

TEST(Faults, AWriterReportsTheFaultFromItsPhaseOn) {
    struct case_t {
        std::string phase;
        VSS_WRITER_STATE state;
        HRESULT hr;
    };
    for (const case_t& c :
         {case_t{"identify", VSS_WS_FAILED_AT_IDENTIFY, VSS_E_WRITERERROR_RETRYABLE},
          case_t{"prepare", VSS_WS_FAILED_AT_PREPARE_BACKUP, VSS_E_WRITERERROR_NONRETRYABLE},
          case_t{"snapshot", VSS_WS_FAILED_AT_FREEZE, VSS_E_WRITERERROR_TIMEOUT},
          case_t{"complete", VSS_WS_FAILED_AT_BACKUP_COMPLETE, S_OK}}) {
        SCOPED_TRACE(c.phase);
        scratch_host_t host(
            sample_host_xml(R"(<WriterFault writer="{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}" at=")" + c.phase +
                            "\" state=\"" + std::to_string(c.state) + "\" hr=\"" +
                            std::to_string(static_cast<std::uint32_t>(c.hr)) + "\"/>"));

        auto backup = prepared_backup();
        bool failed = c.phase == "identify" || c.phase == "prepare";
        EXPECT_EQ(writer_states(backup.get()).at(0), failed ? c.state : VSS_WS_WAITING_FOR_FREEZE);

        ASSERT_EQ(run(backup.get(), &IVssBackupComponents::DoSnapshotSet), VSS_S_ASYNC_FINISHED);
        failed = failed || c.phase == "snapshot";
        EXPECT_EQ(writer_states(backup.get()).at(0), failed ? c.state : VSS_WS_WAITING_FOR_BACKUP_COMPLETE);

        ASSERT_EQ(run(backup.get(), &IVssBackupComponents::BackupComplete), VSS_S_ASYNC_FINISHED);
        std::vector<HRESULT> failures;
        EXPECT_EQ(writer_states(backup.get(), &failures).at(0), c.state);
        EXPECT_EQ(failures.at(0), c.hr);
    }
}
