// VSS error texts, and every checked VSS call failed by the host: the step's words, then the VSS
// error text, then the lines that the callers add, in that order.
#include "vss_test_support.h"

#include "common/exc/convert.h"
#include "vssutils/backup_components.h"
#include "vssutils/snapshot_info.h"
#include "vssutils/vss_error_text.h"
#include "vssutils/writer_components.h"
#include "vssutils/writer_metadata.h"
#include "vssutils/writer_status.h"

#include <gtest/gtest.h>

using namespace VSSUtils;
using namespace vssutils_test;

namespace {

const HRESULT some_failure = static_cast<HRESULT>(0x80042302);
// The texts as VSS words them, written out here so that a wrong mapping of a code shows.
const std::string some_failure_text =
    "A Volume Shadow Copy Service component encountered an unexpected error. "
    "Check the Application event log for more information.";

WriterMetadataPtr hyperv_metadata(BackupComponentsPtr backup) {
    CVssMetaCache cache(hyperv_writer_id);
    EnumWritersMetadata(backup, cache, nullptr);
    return cache.Get(hyperv_writer_id)->metadata;
}

WmFiledescPtr first_file(BackupComponentsPtr backup) {
    return GetWmFile(GetWmComponent(hyperv_metadata(backup), 0), 0);
}

// How far the backup has come when the failing step runs.
enum class start_t { nothing, initialised, gathered };

using act_t = std::function<void(BackupComponentsPtr)>;

struct failure_case_t {
    std::string fault; // attributes of the <Fault> element, hr="..." added
    act_t act;
    std::string words;
    start_t start = start_t::gathered;
    std::vector<std::string> added = {};
    HRESULT hr = some_failure;
    std::string text = some_failure_text; // of hr
};

const std::vector<std::string> verify_line = {"Failed to verify writers state."};
const std::vector<std::string> create_line = {"Failed to create VSS backup object."};
const auto initialised = start_t::initialised;

void verify(BackupComponentsPtr b) {
    VerifyWriters(b, nullptr, true);
}

std::vector<failure_case_t> failure_cases() {
    const std::string instance = "{0e2b0000-0000-0000-0000-000000000001}";
    const auto create = [](auto) { CreateVssBackupObject(L""); };
    const auto metadata = [](auto b) { hyperv_metadata(b); };
    return {
        {"op=\"CreateVssBackupComponentsInternal\"", create, "Failed to create VSS component.",
         start_t::nothing, create_line, E_ACCESSDENIED, "Vss error: '0x80070005'"},
        {"op=\"InitializeForBackup\"", create, "Failed to initialize VSS component", start_t::nothing,
         create_line},
        {"op=\"SetContext\"", [](auto b) { SetVssContext(b, VSS_CTX_ALL); },
         "Failed to set VSS context to [4294967295]"},
        {"op=\"StartSnapshotSet\"", [](auto b) { StartSnapshotSet(b); },
         "Failed to create VSS snapshot set."},
        {"op=\"SetBackupState\"", [](auto b) { SetBackupState(b); }, "Failed to set VSS backup state"},
        {"op=\"PrepareForBackup\"", [](auto b) { PrepareForBackup(b); }, "Failed to prepare for backup"},
        {"op=\"DoSnapshotSet\"", [](auto b) { DoSnapshotSet(b); }, "Failed to take VSS snapshot set"},
        {"op=\"ImportSnapshots\"", [](auto b) { ImportSnapshots(b); },
         "Failed to initiate snapshot import procedure."},
        {"op=\"BackupComplete\"", [](auto b) { BackupComplete(b); }, "BackupComplete failed"},
        {"op=\"SaveAsXML\"", [](auto b) { SaveComponentsAsXml(b); }, "SaveAsXML failed"},
        {"op=\"SaveAsXML\" match=\"Hyper-V\"", [](auto b) { SaveWriterMetadataAsXml(hyperv_metadata(b)); },
         "SaveAsXML failed", initialised},
        {"op=\"EnableWriterClasses\"",
         [](auto b) {
             EnableWriterClass(b, string_to_guid(std::string("{1072ae1c-e5a7-4ea1-9e4a-6f7964656570}")),
                               "CSV");
         },
         "Failed to enable 'CSV' writer."},
        {"op=\"AddComponent\"",
         [](auto b) {
             AddComponent(b, hyperv_writer_instance, hyperv_writer_id, VSS_CT_FILEGROUP, L"", vm1_component);
         },
         "Failed to add VM with ID [" + instance + "] to the snapshot."},
        {"op=\"SetBackupSucceeded\"",
         [](auto b) {
             SetBackupSucceeded(b, hyperv_writer_instance, hyperv_writer_id, VSS_CT_FILEGROUP, L"",
                                vm1_component, true);
         },
         "Failed to set VM backup status. VM ID: [" + instance + "]"},
        {"op=\"AddToSnapshotSet\"",
         [](auto b) { AddVolumeToSnapshotSet(b, L"C:\\", system_provider_id); },
         "Failed to add volume [C:\\] to the VSS snapshot set",
         start_t::gathered,
         {},
         VSS_E_MAXIMUM_NUMBER_OF_VOLUMES_REACHED,
         "The maximum number of volumes for this operation has been reached."},
        {"op=\"IsVolumeSupported\"", [](auto b) { IsVolumeSupported(b, L"C:\\", system_provider_id); },
         "Failed to check whether provider '{b5946137-7b9f-4925-af80-51abd60b20d5}' supports shadow copies "
         "on the volume 'C:\\'."},
        {"op=\"GetRootAndLogicalPrefixPaths\"",
         [](auto b) { GetFileShareRoot(b, L"\\\\fs01\\vms\\vm3\\vm3.vhdx"); },
         "Failed to get SMB share root path. File name: '\\\\fs01\\vms\\vm3\\vm3.vhdx'."},
        {"op=\"GetSnapshotProperties\"", [](auto b) { GetSnapshotInfo(b, GUID_NULL); },
         "Failed to get snapshot properties"},
        {"op=\"GetComponent\"", [](auto b) { GetWmComponent(hyperv_metadata(b), 0); },
         "Writer was unable to provide VM metadata. Component ordinal number: '0'.", initialised},
        {"op=\"GetComponentInfo\"", [](auto b) { GetWmComponentInfo(GetWmComponent(hyperv_metadata(b), 0)); },
         "Failed to get VSS component information", initialised},
        {"op=\"GetFile\"", [](auto b) { GetWmFile(GetWmComponent(hyperv_metadata(b), 0), 1); },
         "Failed to get information about specific VM file. File index: [1]", initialised},
        {"op=\"GetPath\"", [](auto b) { GetWmFilePath(first_file(b)); },
         "Failed to get fully qualified directory path for the specified IVssVMFiledesc object.",
         initialised},
        {"op=\"GetFilespec\"", [](auto b) { GetWmFileMask(first_file(b)); },
         "Failed to get file mask for the specified IVssVMFiledesc object.", initialised},
        {"op=\"GetRecursive\"", [](auto b) { GetWmFileRecursive(first_file(b)); },
         "Failed to get recursive flag for the specified IVssWMFiledesc object.", initialised},
        {"op=\"GatherWriterMetadata\"", metadata, "Failed to collect VSS writers metadata.", initialised},
        {"op=\"GetWriterMetadataCount\"", metadata,
         "Failed to get number of items in VSS metadata collection.", initialised},
        {"op=\"GatherWriterStatus\"", verify, "Failed to collect writers status", start_t::gathered,
         verify_line},
        {"op=\"GetWriterStatusCount\"", verify, "Failed to get number of writer statuses", start_t::gathered,
         verify_line},
        {"op=\"GetWriterStatus\"", verify, "Failed to get status info for specific writer. Index=[0]",
         start_t::gathered, verify_line},
        // Only S_OK counts as an answer: a warning from QueryStatus itself is a failure.
        {"op=\"QueryStatus\" nth=\"2\"", verify, "Failed to query status of async operation",
         start_t::gathered, verify_line, S_FALSE, "Vss error: '0x00000001'"},
        // An operation that VSS ends with a failure, the call itself having succeeded.
        {"op=\"GatherWriterStatus\" status=\"0x80042306\"", verify, "Unknown status of async operation",
         start_t::gathered, verify_line, S_OK,
         "The shadow copy provider had an error. Check the System and Application event logs for more "
         "information."},
    };
}

} // namespace

TEST(VssErrorText, AKnownCodeReadsAsOneLineAndAnUnknownOneOrAnyWithoutTheModuleAsTheCode) {
    EXPECT_EQ(VssErrorText(VSS_S_ASYNC_CANCELLED), "The asynchronous operation has been cancelled.");
    log_capture_t log;
    EXPECT_EQ(VssErrorText(E_FAIL), "Vss error: '0x80004005'");
    EXPECT_TRUE(log.has("Failed to get Vss error description. '"));

    scratch_host_t host(sample_host_xml(
        R"(<Fault op="LoadLibraryA" err="126"/><Fault op="StartSnapshotSet" hr="0x80042316"/>)"));
    EXPECT_EQ(failure_lines([&] { StartSnapshotSet(gathered_backup()); }),
              (std::vector<std::string>{"Failed to create VSS snapshot set.", "Vss error: '0x80042316'"}));
    EXPECT_TRUE(log.has("Failed to load library 'vsstrace.dll'. '"));
}

TEST(VssFailureText, EveryCheckedCallFailsWithItsWordsThenTheVssTextThenTheCallersLines) {
    for (const auto& c : failure_cases()) {
        scratch_host_t host(sample_host_xml("<Fault " + c.fault + " hr=\"" + hex_to_string(c.hr) + "\"/>"));
        BackupComponentsPtr backup = c.start == start_t::gathered      ? gathered_backup()
                                     : c.start == start_t::initialised ? initialised_backup()
                                                                       : BackupComponentsPtr();
        std::vector<std::string> expected = {c.words, c.text};
        expected.insert(expected.end(), c.added.begin(), c.added.end());
        EXPECT_EQ(failure_lines([&] { c.act(backup); }), expected);
    }
}

// A call that answers with a warning has done its work as far as this layer can tell.
TEST(VssFailureText, AWarningResultOfACallIsNoFailure) {
    const std::vector<failure_case_t> cases = failure_cases();
    for (const std::string op : {"SetContext", "StartSnapshotSet", "SetBackupState", "EnableWriterClasses",
                                 "AddComponent", "IsVolumeSupported"}) {
        const auto c = std::find_if(cases.begin(), cases.end(),
                                    [&](auto& row) { return row.fault == "op=\"" + op + "\""; });
        scratch_host_t host(sample_host_xml("<Fault " + c->fault + " hr=\"" +
                                            hex_to_string(VSS_S_SOME_SNAPSHOTS_NOT_IMPORTED) + "\"/>"));
        EXPECT_NO_THROW(c->act(gathered_backup())) << op;
        EXPECT_EQ(journal_count(host, op), 1u) << op;
    }
}
