// The rules that the VSS and cluster reference documentation states, call by call: where it
// forbids something (a requester's mistakes among them) the simulator refuses it with the
// documented answer, and where it allows something the simulator allows it too.
#include "scratch_host.h"

#include "compat/cluster_api.h"
#include "hostsim/host.h"
#include "hostsim/host_access.h"
#include "hostsim/wide_text.h"

#include <gtest/gtest.h>

#include <regex>

using namespace hostsim_test;
using compat::com_ptr_t;

namespace {

const wchar_t csv_disk[] = L"C:\\ClusterStorage\\Volume1\\vm2\\Disks\\vm2.vhdx";
const wchar_t csv_folder[] = L"C:\\ClusterStorage\\Volume1\\vm2\\";
const char csv_volume[] = R"(\\?\Volume{6a1b0c3e-0000-0000-0000-000000000002}\)";
const GUID unknown_id = {0x12345678, 0, 0, {0, 0, 0, 0, 0, 0, 0, 9}};
const wchar_t vm2_component[] = L"C7D8E9F0-1A2B-4C3D-8E4F-5A6B7C8D9E0F";

DWORD prepare_csv(const wchar_t* path) {
    WCHAR mount[MAX_PATH], name[MAX_PATH];
    DWORD mount_length = MAX_PATH, name_length = MAX_PATH;
    return ClusterPrepareSharedVolumeForBackup(path, mount, &mount_length, name, &name_length);
}

// Starts a set and prepares the cluster shared volume through two of its paths; the set's id.
std::string start_and_prepare_twice(IVssBackupComponents* backup) {
    const std::string set = hostsim::to_utf8(hostsim::guid_text(start_set(backup)));
    EXPECT_EQ(prepare_csv(csv_disk), DWORD(0));
    EXPECT_EQ(prepare_csv(csv_folder), DWORD(0));
    return set;
}

HRESULT status_of(IVssAsync* async) {
    HRESULT status = E_FAIL;
    EXPECT_EQ(async->QueryStatus(&status, nullptr), S_OK);
    return status;
}

} // namespace

// A lock whose holder is dead goes.
TEST(StartSnapshotSet, OneCreationRunsPerHostFromTheStartUntilDoSnapshotSetHasEnded) {
    scratch_host_t host;
    host.write("state/creation.txt", "{00000000-0000-0000-0000-0000000000aa}\t" + std::to_string(dead_pid()) +
                                         ":1\t2026-01-01 00:00:00 UTC\n");
    auto first = prepared_backup();
    EXPECT_NE(host.count("RemoveAbandonedCreation", "{00000000-0000-0000-0000-0000000000aa}"), 0u);
    auto second = gathered_backup();
    VSS_ID set_id{};
    EXPECT_EQ(second->StartSnapshotSet(&set_id), VSS_E_SNAPSHOT_SET_IN_PROGRESS);
    const auto lock = host.state_lines("creation.txt");
    ASSERT_EQ(lock.size(), 1u);
    EXPECT_TRUE(std::regex_match(lock[0], std::regex("\\{[-0-9a-f]{36}\\}\t" + this_process_text() +
                                                     "\t\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d UTC")))
        << "the set, its process and since when: " << lock[0];

    EXPECT_TRUE(in_child_process([] {
        VSS_ID id{};
        return gathered_backup()->StartSnapshotSet(&id) == VSS_E_SNAPSHOT_SET_IN_PROGRESS ? 0 : 1;
    })) << "another process on the host meets the same lock";

    ASSERT_EQ(run(first.get(), &IVssBackupComponents::DoSnapshotSet), VSS_S_ASYNC_FINISHED);
    EXPECT_TRUE(host.state_lines("creation.txt").empty());
    EXPECT_EQ(second->StartSnapshotSet(&set_id), S_OK) << "the first still holds its snapshot, not the lock";
}

TEST(AddToSnapshotSet, TakesAtMost64Volumes) {
    std::string volumes;
    for (int i = 10; i < 74; ++i)
        volumes += R"(<Volume name="\\?\Volume{7a000000-0000-0000-0000-0000000000)" + std::to_string(i) +
                   R"(}\" dir="v)" + std::to_string(i) + R"(" mount="M:\)" + std::to_string(i) + R"(\"/>)";
    scratch_host_t host(sample_host_xml(volumes));
    auto backup = gathered_backup();
    start_set(backup.get());
    for (int i = 10; i < 74; ++i)
        ASSERT_EQ(add_volume(backup.get(), L"M:\\" + std::to_wstring(i) + L"\\"), S_OK) << i;
    EXPECT_EQ(add_volume(backup.get(), L"C:\\"), VSS_E_MAXIMUM_NUMBER_OF_VOLUMES_REACHED);
}

// Another creation (of another node of the cluster, say) that has prepared the cluster shared
// volume holds it.
TEST(AddToSnapshotSet, NamesMustEndInABackslashAndAClusterSharedVolumeThatAnotherCreationHoldsIsInProgress) {
    scratch_host_t host;
    auto backup = gathered_backup();
    start_set(backup.get());
    BOOL supported = FALSE;
    for (const wchar_t* name :
         {L"C:", L"\\\\?\\Volume{6a1b0c3e-0000-0000-0000-000000000001}", L"\\\\fs01\\vms"}) {
        std::wstring volume = name;
        EXPECT_EQ(add_volume(backup.get(), volume), E_INVALIDARG) << hostsim::to_utf8(volume);
        EXPECT_EQ(backup->IsVolumeSupported(system_provider_id, volume.data(), &supported), E_INVALIDARG)
            << hostsim::to_utf8(volume);
    }
    EXPECT_EQ(add_volume(backup.get(), L"\\\\fs01\\vms\\"), S_OK);

    const std::string other = "{00000000-0000-0000-0000-0000000000bb}";
    host.write("state/creation.txt", read_file(host.dir() / "state/creation.txt") + other + "\t" +
                                         std::to_string(getppid()) + ":0\t2026-01-01 00:00:00 UTC\n");
    host.write("state/csv.txt", std::string(csv_volume) + "\t" + other + "\t" + std::to_string(getppid()) +
                                    ":0\tC:\\ClusterStorage\\Volume1\\x\n");
    EXPECT_EQ(add_volume(backup.get(), L"C:\\ClusterStorage\\Volume1\\"), VSS_E_SNAPSHOT_SET_IN_PROGRESS);
    EXPECT_EQ(add_volume(backup.get(), L"C:\\"), S_OK) << "other volumes are not held";
}

TEST(AbortBackup,
     MakesTheWritersStableAndEndsTheBackupWithoutAResultAndAReleaseBeforeTheCompletionImpliesIt) {
    scratch_host_t host(sample_host_xml(
        R"(<WriterFault writer="{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}" at="prepare" state="7" hr="0x800423f4"/>)"));
    auto backup = prepared_backup();
    EXPECT_EQ(writer_states(backup.get()),
              (std::vector<VSS_WRITER_STATE>{VSS_WS_FAILED_AT_PREPARE_BACKUP, VSS_WS_WAITING_FOR_FREEZE}));
    ASSERT_EQ(backup->AbortBackup(), S_OK);
    EXPECT_EQ(writer_states(backup.get()), (std::vector<VSS_WRITER_STATE>{VSS_WS_STABLE, VSS_WS_STABLE}));
    EXPECT_EQ(run(backup.get(), &IVssBackupComponents::DoSnapshotSet), VSS_E_BAD_STATE);
    EXPECT_TRUE(host.state_lines("creation.txt").empty()) << "the creation ends with the backup";
    backup = nullptr;
    EXPECT_TRUE(host.state_lines("backups.txt").empty());

    // A release between the prepare and the completion implies it.
    start_set(gathered_backup().get());

    auto completed = prepared_backup();
    ASSERT_EQ(run(completed.get(), &IVssBackupComponents::DoSnapshotSet), VSS_S_ASYNC_FINISHED);
    ASSERT_EQ(run(completed.get(), &IVssBackupComponents::BackupComplete), VSS_S_ASYNC_FINISHED);
    completed = nullptr;
    EXPECT_EQ(host.count("ImplicitAbort"), 0u)
        << "not after an abort, nor without a prepare or after the completion";

    auto prepared = prepared_backup();
    ASSERT_EQ(run(prepared.get(), &IVssBackupComponents::DoSnapshotSet), VSS_S_ASYNC_FINISHED);
    prepared = nullptr;
    EXPECT_NE(host.count("ImplicitAbort"), 0u);
}

TEST(IVssAsyncCancel, AnswersHowTheOperationEnded) {
    scratch_host_t host(sample_host_xml(R"(<Fault op="PrepareForBackup" nth="1" status="0x800423f4"/>
                                           <Fault op="DoSnapshotSet" delayMs="600000"/>)"));
    auto backup = gathered_backup();
    ASSERT_EQ(backup->SetBackupState(true, true, VSS_BT_FULL, false), S_OK);
    com_ptr_t<IVssAsync> failed;
    ASSERT_EQ(backup->PrepareForBackup(failed.put()), S_OK);
    ASSERT_EQ(status_of(failed.get()), VSS_E_WRITERERROR_NONRETRYABLE);
    EXPECT_EQ(failed->Cancel(), VSS_E_WRITERERROR_NONRETRYABLE) << "the error the operation met";

    com_ptr_t<IVssAsync> finished;
    ASSERT_EQ(backup->GatherWriterStatus(finished.put()), S_OK);
    ASSERT_EQ(status_of(finished.get()), VSS_S_ASYNC_FINISHED);
    EXPECT_EQ(finished->Cancel(), VSS_S_ASYNC_FINISHED);

    auto delayed = prepared_backup();
    com_ptr_t<IVssAsync> pending;
    ASSERT_EQ(delayed->DoSnapshotSet(pending.put()), S_OK);
    ASSERT_EQ(status_of(pending.get()), VSS_S_ASYNC_PENDING);
    EXPECT_EQ(pending->Cancel(), S_OK);
    EXPECT_EQ(status_of(pending.get()), VSS_S_ASYNC_CANCELLED);
    EXPECT_EQ(pending->Cancel(), VSS_S_ASYNC_CANCELLED);
    EXPECT_TRUE(host.state_lines("shadows.txt").empty()) << "a cancelled snapshot set leaves no copies";
    EXPECT_TRUE(host.state_lines("creation.txt").empty());
}

TEST(AfterTheMetadata, SetContextIsTakenOnceEnablingWritersHasNoEffectAndTheStatusNeedsTheMetadata) {
    scratch_host_t host;
    auto backup = gathered_backup();
    EXPECT_EQ(backup->SetContext(VSS_VOLSNAP_ATTR_TRANSPORTABLE), S_OK);
    EXPECT_EQ(backup->SetContext(VSS_CTX_BACKUP), VSS_E_BAD_STATE);
    EXPECT_NE(host.count("SetContext", "0"), 0u);
    EXPECT_EQ(backup->EnableWriterClasses(&hyperv_writer_id, 1), S_OK);
    UINT count = 0;
    ASSERT_EQ(backup->GetWriterMetadataCount(&count), S_OK);
    EXPECT_EQ(count, 2u) << "the system writer still takes part";
    EXPECT_EQ(writer_states(backup.get()).size(), 2u);
    EXPECT_TRUE(writer_states(initialised_backup().get()).empty()) << "without gathered metadata, no writers";
}

TEST(ClusterSharedVolumeBackupState, BelongsToTheVolumeEndsWithTheJobThatPreparedItOrAClearForEveryJob) {
    scratch_host_t host;
    auto backup = gathered_backup();
    std::string set = start_and_prepare_twice(backup.get());
    const std::string job = set + "\t" + this_process_text() + "\t";
    EXPECT_EQ(host.state_lines("csv.txt"),
              std::vector<std::string>{std::string(csv_volume) + "\t" + job + hostsim::to_utf8(csv_disk) +
                                       "\t" + job + hostsim::to_utf8(csv_folder)});
    backup = nullptr;
    EXPECT_TRUE(host.state_lines("csv.txt").empty()) << "the release ends the job";
    EXPECT_NE(host.count("CsvBackupStateEnded", csv_volume), 0u);

    backup = gathered_backup();
    set = start_and_prepare_twice(backup.get());
    EXPECT_EQ(ClusterClearBackupStateForSharedVolume(L"C:\\VMs\\vm1\\vm1.vhdx"),
              DWORD(ERROR_INVALID_PARAMETER));
    ASSERT_EQ(ClusterClearBackupStateForSharedVolume(csv_folder), DWORD(0));
    EXPECT_TRUE(host.state_lines("csv.txt").empty()) << "the other path's preparation went too";
    EXPECT_EQ(host.calls("CsvBackupStateCleared"),
              std::vector<std::string>{"CsvBackupStateCleared\t" + std::string(csv_volume) + "\t" + set})
        << "the jobs that lost their preparation are named";
    backup = nullptr;

    auto completed = prepared_backup();
    ASSERT_EQ(prepare_csv(csv_disk), DWORD(0)) << "prepared by a job whose creation runs";
    ASSERT_EQ(run(completed.get(), &IVssBackupComponents::DoSnapshotSet), VSS_S_ASYNC_FINISHED);
    EXPECT_EQ(host.state_lines("csv.txt").size(), 1u) << "the snapshot alone doesn't end the job";
    ASSERT_EQ(run(completed.get(), &IVssBackupComponents::BackupComplete), VSS_S_ASYNC_FINISHED);
    EXPECT_TRUE(host.state_lines("csv.txt").empty());
}

TEST(ClusterSharedVolumeBackupState, EndsWithTheLastLiveProcessThatPreparedIt) {
    scratch_host_t host;
    // A job that dies holding its preparation, as a killed requester does.
    auto prepare_and_die = [] {
        auto backup = gathered_backup();
        start_set(backup.get());
        const DWORD prepared = prepare_csv(csv_disk);
        backup.detach();
        return prepared == 0 ? 0 : 2;
    };
    ASSERT_TRUE(in_child_process(prepare_and_die));
    // The volume, the job's set, its process and the prepared path.
    const std::string prepared = host.state_lines("csv.txt").at(0);
    const std::size_t owner = prepared.find('\t', prepared.find('\t') + 1) + 1;
    hostsim::host_t::open(host.dir());
    EXPECT_TRUE(host.state_lines("csv.txt").empty());
    EXPECT_EQ(host.calls("RemoveAbandonedCsvBackupState"),
              std::vector<std::string>{"RemoveAbandonedCsvBackupState\t" + prepared.substr(0, owner) +
                                       "owner " + prepared.substr(owner, prepared.find(':', owner) - owner) +
                                       " is gone"});

    ASSERT_EQ(prepare_csv(csv_folder), DWORD(0)) << "a live process's preparation";
    ASSERT_TRUE(in_child_process(prepare_and_die));
    hostsim::host_t::open(host.dir());
    EXPECT_NE(host.state_lines("csv.txt").at(0).find(hostsim::to_utf8(csv_disk)), std::string::npos)
        << "the volume stays in backup while one who prepared it lives";
}

// The errors VSS gives for a requester's mistakes.
TEST(VssErrors, UnknownsAreNotFoundOrNotSupportedAndSomethingAddedTwiceAlreadyExists) {
    scratch_host_t host;
    auto backup = gathered_backup();
    start_set(backup.get());
    EXPECT_EQ(add_volume(backup.get(), L"E:\\", GUID_NULL), VSS_E_OBJECT_NOT_FOUND);
    EXPECT_EQ(add_component(backup.get(), L"no such VM"), VSS_E_OBJECT_NOT_FOUND);
    EXPECT_EQ(backup->AddComponent(unknown_id, hyperv_writer_id, VSS_CT_FILEGROUP, L"", vm1_component),
              VSS_E_OBJECT_NOT_FOUND)
        << "the writer instance must be the writer's";
    BOOL supported = TRUE;
    WCHAR volume[] = L"Z:\\";
    EXPECT_EQ(backup->IsVolumeSupported(system_provider_id, volume, &supported), VSS_E_OBJECT_NOT_FOUND);
    VSS_SNAPSHOT_PROP prop{};
    EXPECT_EQ(backup->GetSnapshotProperties(unknown_id, &prop), VSS_E_OBJECT_NOT_FOUND);
    // Providers serve only what they support.
    EXPECT_EQ(add_volume(backup.get(), L"\\\\fs01\\vms\\", system_provider_id),
              VSS_E_VOLUME_NOT_SUPPORTED_BY_PROVIDER);
    EXPECT_EQ(add_volume(backup.get(), L"C:\\ClusterStorage\\Volume1\\", hardware_provider_id),
              VSS_E_VOLUME_NOT_SUPPORTED_BY_PROVIDER)
        << "the hardware provider lists C: only";
    EXPECT_EQ(add_volume(backup.get(), c_volume_name, unknown_id), VSS_E_PROVIDER_NOT_REGISTERED);
    WCHAR share[] = L"\\\\fs01\\vms\\";
    ASSERT_EQ(backup->IsVolumeSupported(system_provider_id, share, &supported), S_OK);
    EXPECT_FALSE(supported) << "an unsupported volume is an answer, not an error";
    EXPECT_EQ(backup->IsVolumeSupported(unknown_id, share, &supported), VSS_E_PROVIDER_NOT_REGISTERED);
    ASSERT_EQ(add_volume(backup.get(), c_volume_name, system_provider_id), S_OK);
    EXPECT_EQ(add_volume(backup.get(), L"c:\\", system_provider_id), VSS_E_OBJECT_ALREADY_EXISTS)
        << "a mount point names the same volume";
    ASSERT_EQ(add_component(backup.get()), S_OK);
    EXPECT_EQ(add_component(backup.get()), VSS_E_OBJECT_ALREADY_EXISTS);

    // Transportable sets need a transportable provider.
    backup = gathered_backup();
    ASSERT_EQ(backup->SetContext(VSS_VOLSNAP_ATTR_TRANSPORTABLE), S_OK);
    start_set(backup.get());
    EXPECT_EQ(add_volume(backup.get(), c_volume_name, system_provider_id),
              VSS_E_VOLUME_NOT_SUPPORTED_BY_PROVIDER);
    EXPECT_EQ(add_volume(backup.get(), L"\\\\fs01\\vms\\", GUID_NULL), VSS_E_VOLUME_NOT_SUPPORTED)
        << "no provider can make a transportable copy of a share";
    EXPECT_EQ(add_volume(backup.get(), c_volume_name, GUID_NULL), S_OK) << "the hardware provider is chosen";
}

TEST(VssErrors, CallsOutOfOrderOrRepeatedAreInABadState) {
    scratch_host_t host;
    auto fresh = new_backup();
    UINT count = 0;
    VSS_ID set_id{};
    EXPECT_EQ(fresh->StartSnapshotSet(&set_id), VSS_E_BAD_STATE) << "before InitializeForBackup";
    ASSERT_EQ(fresh->InitializeForBackup(), S_OK);
    EXPECT_EQ(fresh->InitializeForBackup(), VSS_E_BAD_STATE) << "initialized twice";
    EXPECT_EQ(fresh->GetWriterMetadataCount(&count), VSS_E_BAD_STATE) << "before the metadata is gathered";
    EXPECT_EQ(fresh->GetWriterStatusCount(&count), VSS_E_BAD_STATE) << "before the status is gathered";
    EXPECT_EQ(add_volume(fresh.get(), c_volume_name, GUID_NULL), VSS_E_BAD_STATE)
        << "before StartSnapshotSet";

    compat::com_ptr_t<IVssAsync> pending;
    ASSERT_EQ(fresh->GatherWriterMetadata(pending.put()), S_OK);
    EXPECT_EQ(fresh->GetWriterMetadataCount(&count), VSS_E_BAD_STATE)
        << "before the gathering has been seen to end";
    ASSERT_EQ(wait_for(pending), VSS_S_ASYNC_FINISHED);

    ASSERT_EQ(fresh->StartSnapshotSet(&set_id), S_OK);
    EXPECT_EQ(fresh->StartSnapshotSet(&set_id), VSS_E_SNAPSHOT_SET_IN_PROGRESS);
    EXPECT_EQ(fresh->SetContext(VSS_VOLSNAP_ATTR_TRANSPORTABLE), VSS_E_BAD_STATE)
        << "after the set was started";
    ASSERT_EQ(add_volume(fresh.get(), c_volume_name, GUID_NULL), S_OK);
    EXPECT_EQ(run(fresh.get(), &IVssBackupComponents::PrepareForBackup), VSS_E_BAD_STATE)
        << "no backup state";
    EXPECT_EQ(run(fresh.get(), &IVssBackupComponents::DoSnapshotSet), VSS_E_BAD_STATE) << "not prepared";
    EXPECT_EQ(run(fresh.get(), &IVssBackupComponents::BackupComplete), VSS_E_BAD_STATE) << "no snapshot";
    EXPECT_EQ(set_outcome(fresh.get(), vm1_component, true), VSS_E_BAD_STATE);
    EXPECT_EQ(run(fresh.get(), &IVssBackupComponents::ImportSnapshots), VSS_E_BAD_STATE)
        << "nothing to import without a document";

    // Steps that cannot be repeated, once the creation that fresh holds has gone.
    fresh = nullptr;
    auto backup = prepared_backup();
    EXPECT_EQ(run(backup.get(), &IVssBackupComponents::PrepareForBackup), VSS_E_BAD_STATE);
    EXPECT_EQ(add_component(backup.get(), vm2_component), VSS_E_BAD_STATE)
        << "components are chosen before the prepare";
    ASSERT_EQ(run(backup.get(), &IVssBackupComponents::DoSnapshotSet), VSS_S_ASYNC_FINISHED);
    EXPECT_EQ(run(backup.get(), &IVssBackupComponents::DoSnapshotSet), VSS_E_BAD_STATE);
    EXPECT_EQ(add_volume(backup.get(), L"\\\\fs01\\vms\\", GUID_NULL), VSS_E_BAD_STATE);
    EXPECT_EQ(set_outcome(backup.get(), vm2_component, true), VSS_E_OBJECT_NOT_FOUND)
        << "only components of the backup have an outcome";
    ASSERT_EQ(run(backup.get(), &IVssBackupComponents::BackupComplete), VSS_S_ASYNC_FINISHED);
    EXPECT_EQ(run(backup.get(), &IVssBackupComponents::BackupComplete), VSS_E_BAD_STATE);
}

TEST(VssErrors, ADocumentThatIsNotABackupDocumentIsInvalidAndAnotherInterfaceIsRefused) {
    scratch_host_t host;
    for (const wchar_t* text :
         {L"<not xml", L"<Writer/>", L"<BackupComponents><SnapshotSet id=\"nope\"/></BackupComponents>"}) {
        auto backup = new_backup();
        BSTR document = SysAllocString(text);
        EXPECT_EQ(backup->InitializeForBackup(document), VSS_E_INVALID_XML_DOCUMENT) << text;
        SysFreeString(document);
    }
    auto backup = gathered_backup();
    com_ptr_t<IVssAsync> not_an_async;
    EXPECT_EQ(backup.query(IID_IVssAsync, not_an_async), E_NOINTERFACE);
}
