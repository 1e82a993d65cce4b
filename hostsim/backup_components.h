// IVssBackupComponents and IVssBackupComponentsEx4 of the simulator: the requester's side of a backup on
// the host, with the order rules and errors of VSS. Snapshot-set handling is in
// backup_snapshot_set.cpp.
#pragma once

#include "compat/vss_api.h"
#include "hostsim/async_operation.h"
#include "hostsim/backup_document.h"
#include "hostsim/com_object.h"
#include "hostsim/host.h"
#include "hostsim/writer_states.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace hostsim {

class backup_components_t final : public com_object_t<IVssBackupComponentsEx4> {
public:
    explicit backup_components_t(std::shared_ptr<host_t> host);
    ~backup_components_t() override;

    // Operations the simulator serves.
    HRESULT STDMETHODCALLTYPE InitializeForBackup(BSTR bstrXML) override;
    HRESULT STDMETHODCALLTYPE SetBackupState(boolean bSelectComponents, boolean bBackupBootableSystemState,
                                             VSS_BACKUP_TYPE backupType,
                                             boolean bPartialFileSupport) override;
    HRESULT STDMETHODCALLTYPE GatherWriterMetadata(IVssAsync** pAsync) override;
    HRESULT STDMETHODCALLTYPE GetWriterMetadataCount(UINT* pcWriters) override;
    HRESULT STDMETHODCALLTYPE GetWriterMetadata(UINT iWriter, VSS_ID* pidInstance,
                                                IVssExamineWriterMetadata** ppMetadata) override;
    HRESULT STDMETHODCALLTYPE AddComponent(VSS_ID instanceId, VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                           LPCWSTR wszLogicalPath, LPCWSTR wszComponentName) override;
    HRESULT STDMETHODCALLTYPE PrepareForBackup(IVssAsync** ppAsync) override;
    HRESULT STDMETHODCALLTYPE GatherWriterStatus(IVssAsync** pAsync) override;
    HRESULT STDMETHODCALLTYPE GetWriterStatusCount(UINT* pcWriters) override;
    HRESULT STDMETHODCALLTYPE GetWriterStatus(UINT iWriter, VSS_ID* pidInstance, VSS_ID* pidWriter,
                                              BSTR* pbstrWriter, VSS_WRITER_STATE* pnStatus,
                                              HRESULT* phResultFailure) override;
    HRESULT STDMETHODCALLTYPE SetBackupSucceeded(VSS_ID instanceId, VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                 LPCWSTR wszLogicalPath, LPCWSTR wszComponentName,
                                                 boolean bSucceded) override;
    HRESULT STDMETHODCALLTYPE SaveAsXML(BSTR* pbstrXML) override;
    HRESULT STDMETHODCALLTYPE BackupComplete(IVssAsync** ppAsync) override;
    HRESULT STDMETHODCALLTYPE SetContext(LONG lContext) override;
    HRESULT STDMETHODCALLTYPE StartSnapshotSet(VSS_ID* pSnapshotSetId) override;
    HRESULT STDMETHODCALLTYPE AddToSnapshotSet(VSS_PWSZ pwszVolumeName, VSS_ID ProviderId,
                                               VSS_ID* pidSnapshot) override;
    HRESULT STDMETHODCALLTYPE DoSnapshotSet(IVssAsync** ppAsync) override;
    HRESULT STDMETHODCALLTYPE ImportSnapshots(IVssAsync** ppAsync) override;
    HRESULT STDMETHODCALLTYPE GetSnapshotProperties(VSS_ID SnapshotId, VSS_SNAPSHOT_PROP* pProp) override;
    HRESULT STDMETHODCALLTYPE IsVolumeSupported(VSS_ID ProviderId, VSS_PWSZ pwszVolumeName,
                                                BOOL* pbSupportedByThisProvider) override;
    HRESULT STDMETHODCALLTYPE EnableWriterClasses(const VSS_ID* rgWriterClassId, UINT cClassId) override;
    HRESULT STDMETHODCALLTYPE AbortBackup() override;
    HRESULT STDMETHODCALLTYPE GetRootAndLogicalPrefixPaths(VSS_PWSZ pwszFilePath, VSS_PWSZ* ppwszRootPath,
                                                           VSS_PWSZ* ppwszLogicalPrefix,
                                                           BOOL bNormalizeFQDNforRootPath) override;

private:
    enum class origin { none, fresh, document };

    // A snapshot of this object's set, from AddToSnapshotSet or from a document.
    struct snapshot_t {
        set_snapshot_t info;
        snapshot_target_t target;
        bool owned = false; // its data lies on this host and goes with this object
    };

    bool answers_to(REFIID riid) const override;
    bool transportable_context() const { return (doc_.context & VSS_VOLSNAP_ATTR_TRANSPORTABLE) != 0; }
    std::vector<const writer_t*> writers_in_play() const;
    backup_document_t document() const;
    // Hands out the call's operation; finish (or cancel) runs under the object's lock when it
    // ends, if the object is still there.
    HRESULT start(const char* op, const call_outcome_t& outcome, IVssAsync** out,
                  std::function<HRESULT(HRESULT)> finish, std::function<void()> cancel = {});
    // The finish of an operation that takes the writers through a phase and marks it done.
    std::function<HRESULT(HRESULT)> passing(bool& done, writer_phase phase);
    HRESULT finish_gathering_status(HRESULT planned);
    HRESULT finish_backup(HRESULT planned);
    HRESULT finish_snapshot_set(HRESULT planned);
    // Ends the shadow copies the object owns: all of them when a creation fails, all but the
    // transportable ones made here when the object is released.
    void end_owned_snapshots(bool released);
    HRESULT finish_import(HRESULT planned);
    // The creation lock goes when DoSnapshotSet has ended, or with an abort or the object.
    void end_creation_if_held();
    // What the end of the job, whichever way it ends, does to the host.
    void end_job();
    bool make_shadow_copy(snapshot_t& snapshot);
    void fill_properties(const set_snapshot_t& info, VSS_SNAPSHOT_PROP& prop) const;

    // What the object's operations reach it through; empty once it is gone.
    struct link_t {
        std::mutex mutex;
        backup_components_t* object = nullptr;
    };

    std::shared_ptr<host_t> host_;
    std::shared_ptr<link_t> link_;
    std::mutex mutex_;
    origin origin_ = origin::none;
    // What the object's document holds: context, writers, backup state, components, set; the
    // host directory is that of the document the object was made from.
    backup_document_t doc_;
    bool context_set_ = false;
    bool metadata_requested_ = false;
    bool metadata_ready_ = false;
    bool statuses_ready_ = false;
    std::vector<writer_status_t> statuses_;
    writer_states_t writer_states_;
    bool prepare_requested_ = false;
    bool prepared_ = false;
    std::vector<snapshot_t> snapshots_;
    bool snapshot_requested_ = false;
    bool snapshot_done_ = false;
    bool import_requested_ = false;
    bool complete_requested_ = false;
    bool aborted_ = false;
    bool holds_creation_ = false;
};

} // namespace hostsim
