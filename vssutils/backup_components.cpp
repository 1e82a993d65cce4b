#include "vssutils/backup_components.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "compat/unique_any.h"
#include "vssutils/vss_exc.h"

#include <memory>
#include <vector>

namespace VSSUtils {

namespace {

// {F434C2FD-B553-4961-A9F9-A8E90B673E53}
const IID backup_components_ex4_iid = {
    0xF434C2FD, 0xB553, 0x4961, {0xA9, 0xF9, 0xA8, 0xE9, 0x0B, 0x67, 0x3E, 0x53}};

// The platform gives out-texts of these calls in task memory.
using task_text_t = compat::unique_task_memory_t<wchar_t*>;

std::wstring text_of(const task_text_t& text) {
    return text ? std::wstring(text.get()) : std::wstring();
}

// The platform's string arguments are not const; it gets a writable copy.
std::vector<wchar_t> writable_copy(const std::wstring& text) {
    std::vector<wchar_t> copy(text.begin(), text.end());
    copy.push_back(L'\0');
    return copy;
}

LPCWSTR optional_text(const std::wstring& text) {
    return text.empty() ? nullptr : text.c_str();
}

using async_call_t = HRESULT (IVssBackupComponents::*)(IVssAsync**);

AsyncPtr start_async(BackupComponentsPtr components, async_call_t call, const char* words) {
    AsyncPtr async;
    CheckVss(((*components).*call)(async.put()), words);
    return async;
}

} // namespace

BackupComponentsPtr CreateBackupComponents() {
    BackupComponentsPtr components;
    CheckVss(CreateVssBackupComponentsInternal(components.put()), "Failed to create VSS component.");
    return components;
}

void InitBackupComponents(BackupComponentsPtr components, const std::wstring& savedDocument) {
    compat::unique_bstr_t document;
    if (!savedDocument.empty()) {
        document.reset(SysAllocString(savedDocument.c_str()));
        if (!document)
            throw exc::com_exc_t(E_OUTOFMEMORY);
    }
    CheckVss(components->InitializeForBackup(document.get()), "Failed to initialize VSS component");
}

BackupComponentsPtr CreateVssBackupObject(const std::wstring& savedDocument) {
    return exc::traced("Failed to create VSS backup object.", [&] {
        log_scope_t scope(logging::tool_logger(), "Creating VSS backup object.");
        BackupComponentsPtr components = CreateBackupComponents();
        InitBackupComponents(components, savedDocument);
        scope.close_quietly();
        return components;
    });
}

void SetVssContext(BackupComponentsPtr components, std::uint32_t contextFlags) {
    HRESULT hr = components->SetContext(static_cast<LONG>(contextFlags));
    if (hr < 0)
        ThrowVssFailure(hr, format_message("Failed to set VSS context to [%1]",
                                           num_to_string(static_cast<std::uint64_t>(contextFlags))));
}

VSS_ID StartSnapshotSet(BackupComponentsPtr components) {
    VSS_ID setId = GUID_NULL;
    CheckVss(components->StartSnapshotSet(&setId), "Failed to create VSS snapshot set.");
    return setId;
}

void SetBackupState(BackupComponentsPtr components) {
    const bool selectComponents = true;
    const bool bootableSystemState = true;
    const bool partialFileSupport = false;
    CheckVss(
        components->SetBackupState(selectComponents, bootableSystemState, VSS_BT_FULL, partialFileSupport),
        "Failed to set VSS backup state");
}

AsyncPtr PrepareForBackup(BackupComponentsPtr components) {
    return start_async(components, &IVssBackupComponents::PrepareForBackup, "Failed to prepare for backup");
}

AsyncPtr DoSnapshotSet(BackupComponentsPtr components) {
    return start_async(components, &IVssBackupComponents::DoSnapshotSet, "Failed to take VSS snapshot set");
}

AsyncPtr ImportSnapshots(BackupComponentsPtr components) {
    return start_async(components, &IVssBackupComponents::ImportSnapshots,
                       "Failed to initiate snapshot import procedure.");
}

AsyncPtr BackupComplete(BackupComponentsPtr components) {
    return start_async(components, &IVssBackupComponents::BackupComplete, "BackupComplete failed");
}

std::wstring SaveComponentsAsXml(BackupComponentsPtr components) {
    compat::unique_bstr_t document;
    CheckVss(components->SaveAsXML(document.put()), "SaveAsXML failed");
    return document.text();
}

std::wstring SaveWriterMetadataAsXml(WriterMetadataPtr metadata) {
    compat::unique_bstr_t document;
    CheckVss(metadata->SaveAsXML(document.put()), "SaveAsXML failed");
    return document.text();
}

void EnableWriterClass(BackupComponentsPtr components, const VSS_ID& classId, const std::string& name) {
    VSS_ID classes[1] = {classId};
    HRESULT hr = components->EnableWriterClasses(classes, 1);
    if (hr < 0)
        ThrowVssFailure(hr, format_message("Failed to enable '%1' writer.", name));
}

void AddComponent(BackupComponentsPtr components, const VSS_ID& instanceId, const VSS_ID& writerId,
                  VSS_COMPONENT_TYPE type, const std::wstring& logicalPath,
                  const std::wstring& componentName) {
    HRESULT hr = components->AddComponent(instanceId, writerId, type, optional_text(logicalPath),
                                          componentName.c_str());
    if (hr < 0)
        ThrowVssFailure(
            hr, format_message("Failed to add VM with ID [%1] to the snapshot.", guid_to_string(instanceId)));
}

void SetBackupSucceeded(BackupComponentsPtr components, const VSS_ID& instanceId, const VSS_ID& writerId,
                        VSS_COMPONENT_TYPE type, const std::wstring& logicalPath,
                        const std::wstring& componentName, bool succeeded) {
    HRESULT hr = components->SetBackupSucceeded(instanceId, writerId, type, optional_text(logicalPath),
                                                componentName.c_str(), succeeded);
    if (hr < 0)
        ThrowVssFailure(
            hr, format_message("Failed to set VM backup status. VM ID: [%1]", guid_to_string(instanceId)));
}

VSS_ID AddVolumeToSnapshotSet(BackupComponentsPtr components, const std::wstring& volumeName,
                              const VSS_ID& providerId) {
    std::vector<wchar_t> volume = writable_copy(volumeName);
    VSS_ID snapshotId = GUID_NULL;
    HRESULT hr = components->AddToSnapshotSet(volume.data(), providerId, &snapshotId);
    if (hr < 0)
        ThrowVssFailure(
            hr, format_message("Failed to add volume [%1] to the VSS snapshot set", to_ansi(volumeName)));
    return snapshotId;
}

bool IsVolumeSupported(BackupComponentsPtr components, const std::wstring& volumeName,
                       const VSS_ID& providerId) {
    std::vector<wchar_t> volume = writable_copy(volumeName);
    BOOL supported = FALSE;
    HRESULT hr = components->IsVolumeSupported(providerId, volume.data(), &supported);
    if (hr < 0)
        ThrowVssFailure(hr,
                        format_message("Failed to check whether provider '%1' supports shadow copies on the "
                                       "volume '%2'.",
                                       guid_to_string(providerId), to_ansi(volumeName)));
    return supported != FALSE;
}

SFileShareRoot GetFileShareRoot(BackupComponentsPtr components, const std::wstring& filePath) {
    auto fail = [&](HRESULT hr) {
        ThrowVssFailure(
            hr, format_message("Failed to get SMB share root path. File name: '%1'.", to_ansi(filePath)));
    };
    com_ptr_t<IVssBackupComponentsEx4> components4;
    // A platform without this interface can't snapshot shares at all; say so rather than crash.
    HRESULT hr =
        components->QueryInterface(backup_components_ex4_iid, reinterpret_cast<void**>(components4.put()));
    if (!components4)
        fail(hr < 0 ? hr : E_NOINTERFACE);

    std::vector<wchar_t> path = writable_copy(filePath);
    VSS_PWSZ rootOut = nullptr;
    VSS_PWSZ prefixOut = nullptr;
    hr = components4->GetRootAndLogicalPrefixPaths(path.data(), &rootOut, &prefixOut, FALSE);
    task_text_t root(rootOut);
    task_text_t prefix(prefixOut);
    if (hr < 0)
        fail(hr);
    return SFileShareRoot{text_of(root), text_of(prefix)};
}

} // namespace VSSUtils
