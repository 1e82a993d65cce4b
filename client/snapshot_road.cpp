#include "client/snapshot_road.h"

#include "common/exc/convert.h"
#include "common/format/format.h"

#include <thread>

namespace client {

namespace {

std::string indented_lines(const std::wstring& text) {
    std::string lines;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find(L'\n', start);
        if (end == std::wstring::npos)
            end = text.size();
        std::wstring line = text.substr(start, end - start);
        if (!line.empty() && line.back() == L'\r')
            line.pop_back();
        if (!line.empty())
            lines += "\n    " + to_ansi_nothrow(line);
        start = end + 1;
    }
    return lines.empty() ? "\n    (no description)" : lines;
}

bool is_true(const std::wstring& text) {
    return iequals(text, L"true");
}

std::int64_t number_of(const std::wstring& text) {
    return text.empty() ? 0 : std::stoll(text);
}

} // namespace

server_failure_exc_t::server_failure_exc_t(const std::string& heading, const std::wstring& serverText)
    : std::runtime_error(heading + indented_lines(serverText)) {}

CResponse CallForSuccess(CInvokeClient& client, const std::wstring& command,
                         const CRequestArguments& arguments) {
    CResponse response = client.Call(command, arguments);
    if (!response.IsSuccess())
        throw server_failure_exc_t(to_ansi_nothrow(command) + " failed:", response.Body());
    return response;
}

GUID BeginSnapshot(CInvokeClient& client, const backup_job_t& job) {
    CRequestArguments arguments;
    arguments.AddText(L"JobName", job.jobName)
        .AddText(L"BackupConsole", job.backupConsole)
        .AddEncodedBytes(L"SnapshotXmlSpec", job.specDocument);
    return string_to_guid(CallForSuccess(client, L"BeginSnapshotCreation", arguments).Value(L"SnapshotId"));
}

operation_status_t ReadOperationStatus(const CResponse& response) {
    operation_status_t status;
    status.snapshotId = string_to_guid(response.Value(L"SnapshotId"));
    status.errDescription = response.Value(L"ErrDescription");
    status.isCompleted = is_true(response.Value(L"IsCompleted"));
    status.isSucceeded = is_true(response.Value(L"IsSucceeded"));
    status.creationTime = number_of(response.Value(L"CreationTime"));
    status.completedTime = number_of(response.Value(L"CompletedTime"));
    return status;
}

operation_status_t QueryOperationStatus(CInvokeClient& client) {
    return ReadOperationStatus(CallForSuccess(client, L"GetAsyncOpStatus", {}));
}

operation_status_t WaitForCompletion(CInvokeClient& client, const status_observer_t& observer,
                                     std::chrono::milliseconds interval) {
    for (unsigned polls = 1;; ++polls) {
        const operation_status_t status = QueryOperationStatus(client);
        if (observer)
            observer(status, polls);
        if (status.isCompleted) {
            if (!status.isSucceeded)
                throw server_failure_exc_t("The snapshot task failed:", status.errDescription);
            return status;
        }
        std::this_thread::sleep_for(interval);
    }
}

snapshot_documents_t GetSnapshotDocuments(CInvokeClient& client) {
    const CResponse response = CallForSuccess(client, L"GetSnapshotInfo", {});
    return {response.Decoded(L"BackupDoc"), response.Decoded(L"WriterDoc"),
            response.Decoded(L"SnapshotsXML")};
}

ItemsList GetVmItems(CInvokeClient& client, const GUID& vmId) {
    CRequestArguments arguments;
    arguments.AddGuid(L"VmId", vmId);
    ItemsList items;
    DeserializeItemsList(CallForSuccess(client, L"GetVMFilesList", arguments).Decoded(L"FilesList"), items);
    return items;
}

void ReportVmStatus(CInvokeClient& client, const GUID& vmId, bool succeeded) {
    CRequestArguments arguments;
    arguments.AddGuid(L"VmId", vmId).AddBool(L"BackupStatus", succeeded);
    CallForSuccess(client, L"SetVmBackupStatus", arguments);
}

void CloseSnapshotTask(CInvokeClient& client) {
    CallForSuccess(client, L"CloseSnapshot", {});
}

CSnapshotCloser::~CSnapshotCloser() {
    if (closed)
        return;
    try {
        CloseSnapshotTask(client);
    } catch (const std::exception&) {
        // The road is failing already and its own error is the one to report.
    }
}

void CSnapshotCloser::Close() {
    closed = true;
    CloseSnapshotTask(client);
}

} // namespace client
