// The backup server's side of a snapshot task, one command per function, so that
// the on-host backup and the off-host road are put together from the same steps.
#pragma once

#include "client/invoke_client.h"
#include "compat/win_types.h"
#include "documents/files_list.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

namespace client {

// The server answered a command with "err:", or the task ended in failure. The text
// keeps the server's lines, indented below a heading that names the step.
class server_failure_exc_t : public std::runtime_error {
public:
    server_failure_exc_t(const std::string& heading, const std::wstring& serverText);
    // A road that can't go on with what the server answered, in the road's own words.
    explicit server_failure_exc_t(const std::string& text) : std::runtime_error(text) {}
};

// A command's response when it is a success; a failure frame throws server_failure_exc_t.
CResponse CallForSuccess(CInvokeClient& client, const std::wstring& command,
                         const CRequestArguments& arguments);

struct backup_job_t {
    std::wstring jobName;
    std::wstring backupConsole;
    // The HVBackupSpec document as its file holds it; it travels as these bytes.
    std::string specDocument;
};

// The task's progress record as GetAsyncOpStatus reports it.
struct operation_status_t {
    GUID snapshotId = GUID_NULL;
    std::wstring errDescription;
    bool isCompleted = false;
    bool isSucceeded = true;
    std::int64_t creationTime = 0;
    std::int64_t completedTime = 0;
};

struct snapshot_documents_t {
    std::wstring backupDoc;
    std::wstring writerDoc;
    // Empty unless the task made a snapshot ID list (off-host).
    std::wstring snapshotsXml;
};

// Starts the task; its snapshot ID.
GUID BeginSnapshot(CInvokeClient& client, const backup_job_t& job);

operation_status_t ReadOperationStatus(const CResponse& response);
operation_status_t QueryOperationStatus(CInvokeClient& client);

using status_observer_t = std::function<void(const operation_status_t& status, unsigned polls)>;
inline constexpr std::chrono::milliseconds default_poll_interval{250};

// Polls until the task has completed, telling the observer of each answer. A task
// that completed without success throws server_failure_exc_t with its description.
operation_status_t WaitForCompletion(CInvokeClient& client, const status_observer_t& observer,
                                     std::chrono::milliseconds interval = default_poll_interval);

snapshot_documents_t GetSnapshotDocuments(CInvokeClient& client);
ItemsList GetVmItems(CInvokeClient& client, const GUID& vmId);
void ReportVmStatus(CInvokeClient& client, const GUID& vmId, bool succeeded);
void CloseSnapshotTask(CInvokeClient& client);

// Closes the task when a road is left early, so that a failed backup doesn't keep
// the snapshot on the host until the server process ends.
class CSnapshotCloser {
public:
    explicit CSnapshotCloser(CInvokeClient& client_) : client(client_) {}
    ~CSnapshotCloser();
    CSnapshotCloser(const CSnapshotCloser&) = delete;
    CSnapshotCloser& operator=(const CSnapshotCloser&) = delete;

    // The road's own close: failures are the caller's.
    void Close();

private:
    CInvokeClient& client;
    bool closed = false;
};

} // namespace client
