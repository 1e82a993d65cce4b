// The VSS API module's exports, served by the host that MIRRACK_HOST names.
#include "compat/vss_api.h"
#include "hostsim/backup_components.h"

HRESULT CreateVssBackupComponentsInternal(IVssBackupComponents** ppBackup) {
    auto host = hostsim::current_host();
    if (HRESULT hr = host->refuse("CreateVssBackupComponentsInternal", {}, ppBackup))
        return hr;
    *ppBackup = new hostsim::backup_components_t(host);
    return S_OK;
}

void VssFreeSnapshotPropertiesInternal(VSS_SNAPSHOT_PROP* pProp) {
    hostsim::current_host()->enter("VssFreeSnapshotPropertiesInternal");
    if (!pProp)
        return;
    for (VSS_PWSZ* text : {&pProp->m_pwszSnapshotDeviceObject, &pProp->m_pwszOriginalVolumeName,
                           &pProp->m_pwszOriginatingMachine, &pProp->m_pwszServiceMachine}) {
        CoTaskMemFree(*text);
        *text = nullptr;
    }
}
