#include "hostsim/backup_components.h"

#include "hostsim/creation_lock.h"
#include "hostsim/csv_backup_state.h"
#include "hostsim/wide_text.h"
#include "hostsim/writer_metadata.h"

#include <algorithm>

namespace hostsim {

namespace {

std::wstring flag_text(bool value) {
    return value ? L"true" : L"false";
}

std::wstring ids_text(const VSS_ID* ids, UINT count) {
    std::wstring text;
    for (UINT i = 0; ids && i < count; ++i)
        text += (i ? L";" : L"") + guid_text(ids[i]);
    return text;
}

} // namespace

backup_components_t::backup_components_t(std::shared_ptr<host_t> host)
    : host_(std::move(host)), link_(std::make_shared<link_t>()) {
    link_->object = this;
    doc_.context = VSS_CTX_BACKUP;
}

backup_components_t::~backup_components_t() {
    {
        std::lock_guard guard(link_->mutex);
        link_->object = nullptr;
    }
    // VSS aborts the backup of a requester that lets go between the prepare and the completion.
    const state_store_t* state = host_->state();
    if (state && prepare_requested_ && !complete_requested_ && !aborted_)
        state->journal("ImplicitAbort", {doc_.set_id ? guid_text(*doc_.set_id) : L""});
    end_job();
    end_owned_snapshots(true);
}

void backup_components_t::end_creation_if_held() {
    if (!holds_creation_)
        return;
    holds_creation_ = false;
    end_creation(*host_->state(), *doc_.set_id);
}

void backup_components_t::end_job() {
    end_creation_if_held();
    if (doc_.set_id && host_->state())
        end_csv_backup_state(*host_->state(), *doc_.set_id);
}

// The operations don't keep the object alive: releasing it ends the backup, as on Windows,
// and an operation that ends later finds nothing left to update.
HRESULT backup_components_t::start(const char* op, const call_outcome_t& outcome, IVssAsync** out,
                                   std::function<HRESULT(HRESULT)> finish, std::function<void()> cancel) {
    async_plan_t plan{from_utf8(op), outcome.status.value_or(VSS_S_ASYNC_FINISHED), outcome.delay_ms, {}, {}};
    plan.finish = [link = link_, finish = std::move(finish)](HRESULT planned) {
        std::lock_guard guard(link->mutex);
        if (!link->object)
            return planned;
        std::lock_guard object_guard(link->object->mutex_);
        return finish(planned);
    };
    if (cancel)
        plan.cancel = [link = link_, cancel = std::move(cancel)] {
            std::lock_guard guard(link->mutex);
            if (link->object) {
                std::lock_guard object_guard(link->object->mutex_);
                cancel();
            }
        };
    *out = new async_operation_t(host_, std::move(plan));
    return S_OK;
}

std::function<HRESULT(HRESULT)> backup_components_t::passing(bool& done, writer_phase phase) {
    return [this, &done, phase](HRESULT planned) {
        if (SUCCEEDED(planned)) {
            done = true;
            writer_states_.pass(phase);
        }
        return planned;
    };
}

HRESULT backup_components_t::finish_gathering_status(HRESULT planned) {
    if (SUCCEEDED(planned)) {
        // Writers that have not been asked for their metadata don't speak to this object.
        statuses_ = metadata_ready_ ? writer_states_.report(writers_in_play(), host_->model().writer_faults)
                                    : std::vector<writer_status_t>{};
        statuses_ready_ = true;
    }
    return planned;
}

HRESULT backup_components_t::finish_backup(HRESULT planned) {
    if (FAILED(planned))
        return planned;
    writer_states_.pass(writer_phase::complete);
    end_job();
    std::vector<component_result_t> results;
    for (auto& c : doc_.components)
        results.push_back({c.name, !c.succeeded ? L"not-reported" : *c.succeeded ? L"succeeded" : L"failed"});
    if (auto* state = host_->state()) {
        auto lock = state->lock();
        state->record_backup(doc_.set_id.value_or(GUID_NULL), results);
    }
    return planned;
}

bool backup_components_t::answers_to(REFIID riid) const {
    return riid == IID_IVssBackupComponents || riid == IID_IVssBackupComponentsEx4;
}

std::vector<const writer_t*> backup_components_t::writers_in_play() const {
    std::vector<const writer_t*> writers;
    for (auto& w : host_->model().writers)
        if (!doc_.writers_restricted || std::find(doc_.enabled_writers.begin(), doc_.enabled_writers.end(),
                                                  w.id) != doc_.enabled_writers.end())
            writers.push_back(&w);
    return writers;
}

HRESULT backup_components_t::InitializeForBackup(BSTR bstrXML) {
    const std::wstring text = bstrXML ? std::wstring(bstrXML, SysStringLen(bstrXML)) : std::wstring();
    if (HRESULT hr = host_->refuse("InitializeForBackup", {text.empty() ? L"" : L"document"}))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ != origin::none)
        return VSS_E_BAD_STATE;
    if (text.empty()) {
        origin_ = origin::fresh;
        return S_OK;
    }
    auto document = load_backup_document(text);
    if (!document)
        return VSS_E_INVALID_XML_DOCUMENT;
    doc_ = *document;
    for (auto& s : document->snapshots)
        snapshots_.push_back({s, host_->find_target(s.volume_name), false});
    origin_ = origin::document;
    return S_OK;
}

backup_document_t backup_components_t::document() const {
    backup_document_t d = doc_;
    // The data of the snapshots lies here once they are made or imported here.
    if (origin_ == origin::fresh || import_requested_)
        d.host_dir = host_->dir();
    d.machine = host_->model().name;
    d.snapshots.clear();
    for (auto& s : snapshots_)
        d.snapshots.push_back(s.info);
    return d;
}

HRESULT backup_components_t::SetContext(LONG lContext) {
    if (HRESULT hr = host_->refuse("SetContext", {std::to_wstring(static_cast<DWORD>(lContext))}))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ == origin::none || (origin_ == origin::fresh && doc_.set_id) || context_set_)
        return VSS_E_BAD_STATE;
    const LONG attributes = VSS_VOLSNAP_ATTR_TRANSPORTABLE | VSS_VOLSNAP_ATTR_DIFFERENTIAL |
                            VSS_VOLSNAP_ATTR_PLEX | VSS_VOLSNAP_ATTR_NO_AUTORECOVERY;
    const LONG base = lContext & ~attributes;
    const bool known = lContext == VSS_CTX_ALL || base == VSS_CTX_BACKUP ||
                       base == VSS_CTX_FILE_SHARE_BACKUP || base == VSS_CTX_NAS_ROLLBACK ||
                       base == VSS_CTX_APP_ROLLBACK || base == VSS_CTX_CLIENT_ACCESSIBLE ||
                       base == VSS_CTX_CLIENT_ACCESSIBLE_WRITERS;
    if (!known)
        return E_INVALIDARG;
    doc_.context = lContext;
    context_set_ = true;
    return S_OK;
}

HRESULT backup_components_t::EnableWriterClasses(const VSS_ID* rgWriterClassId, UINT cClassId) {
    if (HRESULT hr = host_->refuse("EnableWriterClasses", {ids_text(rgWriterClassId, cClassId)}))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ == origin::none)
        return VSS_E_BAD_STATE;
    if (!rgWriterClassId && cClassId > 0)
        return E_INVALIDARG;
    // Once the metadata is gathered the writers taking part are settled; the call is harmless.
    if (metadata_requested_)
        return S_OK;
    doc_.writers_restricted = true;
    doc_.enabled_writers.insert(doc_.enabled_writers.end(), rgWriterClassId, rgWriterClassId + cClassId);
    return S_OK;
}

HRESULT backup_components_t::GatherWriterMetadata(IVssAsync** pAsync) {
    const auto outcome = host_->enter("GatherWriterMetadata");
    if (HRESULT hr = refusal(outcome, pAsync))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ == origin::none || metadata_requested_)
        return VSS_E_BAD_STATE;
    metadata_requested_ = true;
    return start("GatherWriterMetadata", outcome, pAsync, passing(metadata_ready_, writer_phase::identify));
}

HRESULT backup_components_t::GetWriterMetadataCount(UINT* pcWriters) {
    if (HRESULT hr = host_->refuse("GetWriterMetadataCount", {}, pcWriters))
        return hr;
    std::lock_guard guard(mutex_);
    if (!metadata_ready_)
        return VSS_E_BAD_STATE;
    *pcWriters = static_cast<UINT>(writers_in_play().size());
    return S_OK;
}

HRESULT backup_components_t::GetWriterMetadata(UINT iWriter, VSS_ID* pidInstance,
                                               IVssExamineWriterMetadata** ppMetadata) {
    std::lock_guard guard(mutex_);
    auto writers = writers_in_play();
    if (HRESULT hr =
            host_->refuse("GetWriterMetadata",
                          {iWriter < writers.size() ? writers[iWriter]->name : L"", std::to_wstring(iWriter)},
                          pidInstance && ppMetadata))
        return hr;
    if (!metadata_ready_)
        return VSS_E_BAD_STATE;
    if (iWriter >= writers.size())
        return E_INVALIDARG;
    *pidInstance = writers[iWriter]->instance;
    *ppMetadata = make_writer_metadata(host_, *writers[iWriter]);
    return S_OK;
}

HRESULT backup_components_t::AddComponent(VSS_ID instanceId, VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                          LPCWSTR wszLogicalPath, LPCWSTR wszComponentName) {
    const std::wstring name = text_or_empty(wszComponentName);
    const std::wstring logical_path = text_or_empty(wszLogicalPath);
    if (HRESULT hr = host_->refuse("AddComponent", {name, guid_text(writerId), logical_path}))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ != origin::fresh || !metadata_ready_ || prepare_requested_)
        return VSS_E_BAD_STATE;
    if (!wszComponentName)
        return E_INVALIDARG;
    auto writers = writers_in_play();
    auto writer = std::find_if(writers.begin(), writers.end(), [&](const writer_t* w) {
        return w->id == writerId && w->instance == instanceId;
    });
    if (writer == writers.end())
        return VSS_E_OBJECT_NOT_FOUND;
    auto& components = (*writer)->components;
    auto component = std::find_if(components.begin(), components.end(), [&](const component_t& c) {
        return iequals(c.name, name) && iequals(c.logical_path.value_or(L""), logical_path) && c.type == ct;
    });
    if (component == components.end())
        return VSS_E_OBJECT_NOT_FOUND;
    for (auto& added : doc_.components)
        if (added.writer == writerId && iequals(added.name, name) &&
            iequals(added.logical_path, logical_path))
            return VSS_E_OBJECT_ALREADY_EXISTS;
    doc_.components.push_back({instanceId, writerId, ct, logical_path, component->name, std::nullopt});
    return S_OK;
}

HRESULT backup_components_t::SetBackupState(boolean bSelectComponents, boolean bBackupBootableSystemState,
                                            VSS_BACKUP_TYPE backupType, boolean bPartialFileSupport) {
    if (HRESULT hr = host_->refuse(
            "SetBackupState", {std::to_wstring(static_cast<int>(backupType)), flag_text(bSelectComponents),
                               flag_text(bBackupBootableSystemState), flag_text(bPartialFileSupport)}))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ == origin::none || prepare_requested_)
        return VSS_E_BAD_STATE;
    doc_.backup_state_set = true;
    doc_.select_components = bSelectComponents;
    doc_.bootable_system_state = bBackupBootableSystemState;
    doc_.backup_type = backupType;
    doc_.partial_file_support = bPartialFileSupport;
    return S_OK;
}

HRESULT backup_components_t::PrepareForBackup(IVssAsync** ppAsync) {
    const auto outcome = host_->enter("PrepareForBackup");
    if (HRESULT hr = refusal(outcome, ppAsync))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ != origin::fresh || !metadata_ready_ || !doc_.backup_state_set || prepare_requested_)
        return VSS_E_BAD_STATE;
    prepare_requested_ = true;
    return start("PrepareForBackup", outcome, ppAsync, passing(prepared_, writer_phase::prepare));
}

HRESULT backup_components_t::GatherWriterStatus(IVssAsync** pAsync) {
    const auto outcome = host_->enter("GatherWriterStatus");
    if (HRESULT hr = refusal(outcome, pAsync))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ == origin::none)
        return VSS_E_BAD_STATE;
    return start("GatherWriterStatus", outcome, pAsync,
                 [this](HRESULT planned) { return finish_gathering_status(planned); });
}

HRESULT backup_components_t::GetWriterStatusCount(UINT* pcWriters) {
    if (HRESULT hr = host_->refuse("GetWriterStatusCount", {}, pcWriters))
        return hr;
    std::lock_guard guard(mutex_);
    if (!statuses_ready_)
        return VSS_E_BAD_STATE;
    *pcWriters = static_cast<UINT>(statuses_.size());
    return S_OK;
}

HRESULT backup_components_t::GetWriterStatus(UINT iWriter, VSS_ID* pidInstance, VSS_ID* pidWriter,
                                             BSTR* pbstrWriter, VSS_WRITER_STATE* pnStatus,
                                             HRESULT* phResultFailure) {
    std::lock_guard guard(mutex_);
    if (HRESULT hr = host_->refuse(
            "GetWriterStatus",
            {iWriter < statuses_.size() ? statuses_[iWriter].name : L"", std::to_wstring(iWriter)},
            pidInstance && pidWriter && pbstrWriter && pnStatus && phResultFailure))
        return hr;
    if (!statuses_ready_)
        return VSS_E_BAD_STATE;
    if (iWriter >= statuses_.size())
        return E_INVALIDARG;
    auto& s = statuses_[iWriter];
    *pidInstance = s.instance;
    *pidWriter = s.id;
    *pbstrWriter = new_bstr(s.name);
    *pnStatus = s.state;
    *phResultFailure = s.failure;
    return S_OK;
}

HRESULT backup_components_t::SetBackupSucceeded(VSS_ID instanceId, VSS_ID writerId, VSS_COMPONENT_TYPE,
                                                LPCWSTR wszLogicalPath, LPCWSTR wszComponentName,
                                                boolean bSucceded) {
    const std::wstring name = text_or_empty(wszComponentName);
    const std::wstring logical_path = text_or_empty(wszLogicalPath);
    if (HRESULT hr = host_->refuse("SetBackupSucceeded", {name, flag_text(bSucceded)}))
        return hr;
    std::lock_guard guard(mutex_);
    if (!snapshot_done_ || complete_requested_ || aborted_)
        return VSS_E_BAD_STATE;
    for (auto& c : doc_.components) {
        if (c.writer == writerId && c.instance == instanceId && iequals(c.name, name) &&
            iequals(c.logical_path, logical_path)) {
            c.succeeded = bSucceded != 0;
            return S_OK;
        }
    }
    return VSS_E_OBJECT_NOT_FOUND;
}

HRESULT backup_components_t::SaveAsXML(BSTR* pbstrXML) {
    if (HRESULT hr = host_->refuse("SaveAsXML", {}, pbstrXML))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ == origin::none)
        return VSS_E_BAD_STATE;
    *pbstrXML = new_bstr(save_backup_document(document()));
    return S_OK;
}

HRESULT backup_components_t::BackupComplete(IVssAsync** ppAsync) {
    const auto outcome = host_->enter("BackupComplete", {doc_.set_id ? guid_text(*doc_.set_id) : L""});
    if (HRESULT hr = refusal(outcome, ppAsync))
        return hr;
    std::lock_guard guard(mutex_);
    if (!snapshot_done_ || complete_requested_ || aborted_)
        return VSS_E_BAD_STATE;
    complete_requested_ = true;
    return start("BackupComplete", outcome, ppAsync,
                 [this](HRESULT planned) { return finish_backup(planned); });
}

HRESULT backup_components_t::AbortBackup() {
    if (HRESULT hr = host_->refuse("AbortBackup", {doc_.set_id ? guid_text(*doc_.set_id) : L""}))
        return hr;
    std::lock_guard guard(mutex_);
    if (origin_ == origin::none || complete_requested_ || aborted_)
        return VSS_E_BAD_STATE;
    aborted_ = true;
    writer_states_.abort();
    end_job();
    return S_OK;
}

HRESULT backup_components_t::GetRootAndLogicalPrefixPaths(VSS_PWSZ pwszFilePath, VSS_PWSZ* ppwszRootPath,
                                                          VSS_PWSZ* ppwszLogicalPrefix, BOOL) {
    const std::wstring path = text_or_empty(pwszFilePath);
    if (HRESULT hr = host_->refuse("GetRootAndLogicalPrefixPaths", {path},
                                   pwszFilePath && ppwszRootPath && ppwszLogicalPrefix))
        return hr;
    auto loc = host_->locate(path);
    if (loc.kind == location_kind::share) {
        *ppwszRootPath = new_task_string(loc.share->root);
        *ppwszLogicalPrefix = new_task_string(loc.share->unc);
        return S_OK;
    }
    if (loc.kind == location_kind::volume) {
        *ppwszRootPath = new_task_string(loc.root);
        *ppwszLogicalPrefix = new_task_string(loc.root);
        return S_OK;
    }
    return VSS_E_OBJECT_NOT_FOUND;
}

} // namespace hostsim
