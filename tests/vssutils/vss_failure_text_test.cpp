// Every checked VSS call, failed by the host: the step's words, then the VSS error text, then the
// lines that the callers add, in that order.
#include "vss_test_support.h"

#include "vssutils/async_wait.h"
#include "vssutils/backup_components.h"
#include "vssutils/snapshot_info.h"
#include "vssutils/vss_error_text.h"
#include "vssutils/writer_classes.h"
#include "vssutils/writer_components.h"
#include "vssutils/writer_metadata.h"
#include "vssutils/writer_status.h"

#include <gtest/gtest.h>

using namespace VSSUtils;
using namespace vssutils_test;

namespace {

const HRESULT some_failure = static_cast<HRESULT>(0x80042302);

WriterMetadataPtr hyperv_metadata(BackupComponentsPtr backup) {
    CVssMetaCache cache(HyperVWriterClassId);
    EnumWritersMetadata(backup, cache, nullptr);
    return cache.Get(HyperVWriterClassId)->metadata;
}

WmFiledescPtr first_file(BackupComponentsPtr backup) {
    return GetWmFile(GetWmComponent(hyperv_metadata(backup), 0), 0);
}

// How far the backup has come when the failing step runs.
enum class start_t { nothing, initialised, gathered };

struct failure_case_t {
    start_t start;
    std::string fault; // attributes of the <Fault> element, hr="..." added
    HRESULT hr;
    std::function<void(BackupComponentsPtr)> act;
    std::string words;
    std::vector<std::string> added = {};
};

const std::string verify_line = "Failed to verify writers state.";
const std::string create_line = "Failed to create VSS backup object.";

std::vector<failure_case_t> failure_cases() {
    const std::string instance = "{0e2b0000-0000-0000-0000-000000000001}";
    return {
        {start_t::nothing,
         "op=\"CreateVssBackupComponentsInternal\"",
         E_ACCESSDENIED,
         [](BackupComponentsPtr) { CreateVssBackupObject(L""); },
         "Failed to create VSS component.",
         {create_line}},
        {start_t::nothing,
         "op=\"InitializeForBackup\"",
         some_failure,
         [](BackupComponentsPtr) { CreateVssBackupObject(L""); },
         "Failed to initialize VSS component",
         {create_line}},
        {start_t::gathered, "op=\"SetContext\"", some_failure,
         [](BackupComponentsPtr b) { SetVssContext(b, AllSnapshotsContext); },
         "Failed to set VSS context to [4294967295]"},
        {start_t::gathered, "op=\"StartSnapshotSet\"", some_failure,
         [](BackupComponentsPtr b) { StartSnapshotSet(b); }, "Failed to create VSS snapshot set."},
        {start_t::gathered, "op=\"SetBackupState\"", some_failure,
         [](BackupComponentsPtr b) { SetBackupState(b); }, "Failed to set VSS backup state"},
        {start_t::gathered, "op=\"PrepareForBackup\"", some_failure,
         [](BackupComponentsPtr b) { PrepareForBackup(b); }, "Failed to prepare for backup"},
        {start_t::gathered, "op=\"DoSnapshotSet\"", some_failure,
         [](BackupComponentsPtr b) { DoSnapshotSet(b); }, "Failed to take VSS snapshot set"},
        {start_t::gathered, "op=\"ImportSnapshots\"", some_failure,
         [](BackupComponentsPtr b) { ImportSnapshots(b); }, "Failed to initiate snapshot import procedure."},
        {start_t::gathered, "op=\"BackupComplete\"", some_failure,
         [](BackupComponentsPtr b) { BackupComplete(b); }, "BackupComplete failed"},
        {start_t::gathered, "op=\"SaveAsXML\"", some_failure,
         [](BackupComponentsPtr b) { SaveComponentsAsXml(b); }, "SaveAsXML failed"},
        {start_t::initialised, "op=\"SaveAsXML\" match=\"Hyper-V\"", some_failure,
         [](BackupComponentsPtr b) { SaveWriterMetadataAsXml(hyperv_metadata(b)); }, "SaveAsXML failed"},
        {start_t::gathered, "op=\"EnableWriterClasses\"", some_failure,
         [](BackupComponentsPtr b) {
             EnableWriterClass(b, string_to_guid(std::string(CsvWriterClassIdText)), "CSV");
         },
         "Failed to enable 'CSV' writer."},
        {start_t::gathered, "op=\"AddComponent\"", some_failure,
         [](BackupComponentsPtr b) {
             AddComponent(b, hostsim_test::hyperv_writer_instance, HyperVWriterClassId, VSS_CT_FILEGROUP, L"",
                          hostsim_test::vm1_component);
         },
         "Failed to add VM with ID [" + instance + "] to the snapshot."},
        {start_t::gathered, "op=\"SetBackupSucceeded\"", some_failure,
         [](BackupComponentsPtr b) {
             SetBackupSucceeded(b, hostsim_test::hyperv_writer_instance, HyperVWriterClassId,
                                VSS_CT_FILEGROUP, L"", hostsim_test::vm1_component, true);
         },
         "Failed to set VM backup status. VM ID: [" + instance + "]"},
        {start_t::gathered, "op=\"AddToSnapshotSet\"", some_failure,
         [](BackupComponentsPtr b) { AddVolumeToSnapshotSet(b, L"C:\\", hostsim_test::system_provider_id); },
         "Failed to add volume [C:\\] to the VSS snapshot set"},
        {start_t::gathered, "op=\"IsVolumeSupported\"", some_failure,
         [](BackupComponentsPtr b) { IsVolumeSupported(b, L"C:\\", hostsim_test::system_provider_id); },
         "Failed to check whether provider '{b5946137-7b9f-4925-af80-51abd60b20d5}' supports shadow copies "
         "on the "
         "volume 'C:\\'."},
        {start_t::gathered, "op=\"GetRootAndLogicalPrefixPaths\"", some_failure,
         [](BackupComponentsPtr b) { GetFileShareRoot(b, L"\\\\fs01\\vms\\vm3\\vm3.vhdx"); },
         "Failed to get SMB share root path. File name: '\\\\fs01\\vms\\vm3\\vm3.vhdx'."},
        {start_t::gathered, "op=\"GetSnapshotProperties\"", some_failure,
         [](BackupComponentsPtr b) { GetSnapshotInfo(b, GUID_NULL); }, "Failed to get snapshot properties"},
        {start_t::initialised, "op=\"GetComponent\"", some_failure,
         [](BackupComponentsPtr b) { GetWmComponent(hyperv_metadata(b), 0); },
         "Writer was unable to provide VM metadata. Component ordinal number: '0'."},
        {start_t::initialised, "op=\"GetComponentInfo\"", some_failure,
         [](BackupComponentsPtr b) { GetWmComponentInfo(GetWmComponent(hyperv_metadata(b), 0)); },
         "Failed to get VSS component information"},
        {start_t::initialised, "op=\"GetFile\"", some_failure,
         [](BackupComponentsPtr b) { GetWmFile(GetWmComponent(hyperv_metadata(b), 0), 1); },
         "Failed to get information about specific VM file. File index: [1]"},
        {start_t::initialised, "op=\"GetPath\"", some_failure,
         [](BackupComponentsPtr b) { GetWmFilePath(first_file(b)); },
         "Failed to get fully qualified directory path for the specified IVssVMFiledesc object."},
        {start_t::initialised, "op=\"GetFilespec\"", some_failure,
         [](BackupComponentsPtr b) { GetWmFileMask(first_file(b)); },
         "Failed to get file mask for the specified IVssVMFiledesc object."},
        {start_t::initialised, "op=\"GetRecursive\"", some_failure,
         [](BackupComponentsPtr b) { GetWmFileRecursive(first_file(b)); },
         "Failed to get recursive flag for the specified IVssWMFiledesc object."},
        {start_t::initialised, "op=\"GatherWriterMetadata\"", some_failure,
         [](BackupComponentsPtr b) { hyperv_metadata(b); }, "Failed to collect VSS writers metadata."},
        {start_t::initialised, "op=\"GetWriterMetadataCount\"", some_failure,
         [](BackupComponentsPtr b) { hyperv_metadata(b); },
         "Failed to get number of items in VSS metadata collection."},
        {start_t::gathered,
         "op=\"GatherWriterStatus\"",
         some_failure,
         [](BackupComponentsPtr b) { VerifyWriters(b, nullptr, true); },
         "Failed to collect writers status",
         {verify_line}},
        {start_t::gathered,
         "op=\"GetWriterStatusCount\"",
         some_failure,
         [](BackupComponentsPtr b) { VerifyWriters(b, nullptr, true); },
         "Failed to get number of writer statuses",
         {verify_line}},
        {start_t::gathered,
         "op=\"GetWriterStatus\"",
         some_failure,
         [](BackupComponentsPtr b) { VerifyWriters(b, nullptr, true); },
         "Failed to get status info for specific writer. Index=[0]",
         {verify_line}},
        // Only S_OK counts as an answer: a warning from QueryStatus itself is a failure.
        {start_t::gathered,
         "op=\"QueryStatus\" nth=\"2\"",
         S_FALSE,
         [](BackupComponentsPtr b) { VerifyWriters(b, nullptr, true); },
         "Failed to query status of async operation",
         {verify_line}},
    };
}

} // namespace

TEST(VssFailureText, EveryCheckedCallFailsWithItsWordsThenTheVssTextThenTheCallersLines) {
    for (const auto& c : failure_cases()) {
        SCOPED_TRACE(c.fault);
        hostsim_test::scratch_host_t host(
            hostsim_test::sample_host_xml("<Fault " + c.fault + " hr=\"" + hex_to_string(c.hr) + "\"/>"));
        BackupComponentsPtr backup = c.start == start_t::gathered      ? gathered_backup()
                                     : c.start == start_t::initialised ? initialised_backup()
                                                                       : BackupComponentsPtr();
        std::vector<std::string> expected = {c.words, VssErrorText(c.hr)};
        expected.insert(expected.end(), c.added.begin(), c.added.end());
        EXPECT_EQ(failure_lines([&] { c.act(backup); }), expected);
    }
}

TEST(VssFailureText, AnOperationThatEndsWithAFailureIsReportedWithTheUnknownStatusText) {
    hostsim_test::scratch_host_t host(
        hostsim_test::sample_host_xml(R"(<Fault op="GatherWriterStatus" status="0x80042306"/>)"));
    auto backup = gathered_backup();
    EXPECT_EQ(failure_lines([&] { VerifyWriters(backup, nullptr, false); }),
              (std::vector<std::string>{"Unknown status of async operation",
                                        VssErrorText(VSS_E_PROVIDER_VETO), verify_line}));
}

// A call that answers with a warning has done its work as far as this layer can tell.
TEST(VssFailureText, AWarningResultOfACallIsNoFailure) {
    const std::vector<std::pair<std::string, std::function<void(BackupComponentsPtr)>>> calls = {
        {"SetContext", [](BackupComponentsPtr b) { SetVssContext(b, TransportableContext); }},
        {"StartSnapshotSet", [](BackupComponentsPtr b) { StartSnapshotSet(b); }},
        {"SetBackupState", [](BackupComponentsPtr b) { SetBackupState(b); }},
        {"EnableWriterClasses",
         [](BackupComponentsPtr b) { EnableWriterClass(b, HyperVWriterClassId, HyperVWriterLabel); }},
        {"AddComponent",
         [](BackupComponentsPtr b) {
             AddComponent(b, hostsim_test::hyperv_writer_instance, HyperVWriterClassId, VSS_CT_FILEGROUP, L"",
                          hostsim_test::vm1_component);
         }},
        {"IsVolumeSupported",
         [](BackupComponentsPtr b) { IsVolumeSupported(b, L"C:\\", hostsim_test::system_provider_id); }},
    };
    for (const auto& [op, act] : calls) {
        SCOPED_TRACE(op);
        hostsim_test::scratch_host_t host(hostsim_test::sample_host_xml(
            "<Fault op=\"" + op + "\" hr=\"" + hex_to_string(VSS_S_SOME_SNAPSHOTS_NOT_IMPORTED) + "\"/>"));
        auto backup = gathered_backup();
        EXPECT_NO_THROW(act(backup));
        EXPECT_EQ(journal_count(host, op), 1u);
    }
}
