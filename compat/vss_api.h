// The VSS requester interfaces and entry points. On Windows the SDK's; elsewhere
// declarations with the SDK's names and signatures, served by the simulated host (hostsim/).
// Only the methods the tool calls are declared: the simulator is the one implementation the
// tables meet there, so their layout need not be the SDK's.
#pragma once

#include "compat/com_unknown.h"
#include "compat/vss_types.h"

#ifdef _WIN32
#include <vsbackup.h>
#else

struct IVssAsync : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Cancel() = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryStatus(HRESULT* pHrResult, INT* pReserved) = 0;

protected:
    ~IVssAsync() = default;
};

struct IVssWMFiledesc : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetPath(BSTR* pbstrPath) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFilespec(BSTR* pbstrFilespec) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetRecursive(boolean* pbRecursive) = 0;

protected:
    ~IVssWMFiledesc() = default;
};

struct IVssWMComponent : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetComponentInfo(PVSSCOMPONENTINFO* ppInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE FreeComponentInfo(PVSSCOMPONENTINFO pInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFile(UINT iFile, IVssWMFiledesc** ppFiledesc) = 0;

protected:
    ~IVssWMComponent() = default;
};

struct IVssExamineWriterMetadata : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetIdentity(VSS_ID* pidInstance, VSS_ID* pidWriter,
                                                  BSTR* pbstrWriterName, VSS_USAGE_TYPE* pUsage,
                                                  VSS_SOURCE_TYPE* pSource) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFileCounts(UINT* pcIncludeFiles, UINT* pcExcludeFiles,
                                                    UINT* pcComponents) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetComponent(UINT iComponent, IVssWMComponent** ppComponent) = 0;
    virtual HRESULT STDMETHODCALLTYPE SaveAsXML(BSTR* pbstrXML) = 0;

protected:
    ~IVssExamineWriterMetadata() = default;
};

struct IVssBackupComponents : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE InitializeForBackup(BSTR bstrXML = nullptr) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetBackupState(boolean bSelectComponents,
                                                     boolean bBackupBootableSystemState,
                                                     VSS_BACKUP_TYPE backupType,
                                                     boolean bPartialFileSupport = 0) = 0;
    virtual HRESULT STDMETHODCALLTYPE GatherWriterMetadata(IVssAsync** pAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetWriterMetadataCount(UINT* pcWriters) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetWriterMetadata(UINT iWriter, VSS_ID* pidInstance,
                                                        IVssExamineWriterMetadata** ppMetadata) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddComponent(VSS_ID instanceId, VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                   LPCWSTR wszLogicalPath, LPCWSTR wszComponentName) = 0;
    virtual HRESULT STDMETHODCALLTYPE PrepareForBackup(IVssAsync** ppAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE AbortBackup() = 0;
    virtual HRESULT STDMETHODCALLTYPE GatherWriterStatus(IVssAsync** pAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetWriterStatusCount(UINT* pcWriters) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetWriterStatus(UINT iWriter, VSS_ID* pidInstance, VSS_ID* pidWriter,
                                                      BSTR* pbstrWriter, VSS_WRITER_STATE* pnStatus,
                                                      HRESULT* phResultFailure) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetBackupSucceeded(VSS_ID instanceId, VSS_ID writerId,
                                                         VSS_COMPONENT_TYPE ct, LPCWSTR wszLogicalPath,
                                                         LPCWSTR wszComponentName, boolean bSucceded) = 0;
    virtual HRESULT STDMETHODCALLTYPE SaveAsXML(BSTR* pbstrXML) = 0;
    virtual HRESULT STDMETHODCALLTYPE BackupComplete(IVssAsync** ppAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetContext(LONG lContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE StartSnapshotSet(VSS_ID* pSnapshotSetId) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddToSnapshotSet(VSS_PWSZ pwszVolumeName, VSS_ID ProviderId,
                                                       VSS_ID* pidSnapshot) = 0;
    virtual HRESULT STDMETHODCALLTYPE DoSnapshotSet(IVssAsync** ppAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE ImportSnapshots(IVssAsync** ppAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSnapshotProperties(VSS_ID SnapshotId, VSS_SNAPSHOT_PROP* pProp) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsVolumeSupported(VSS_ID ProviderId, VSS_PWSZ pwszVolumeName,
                                                        BOOL* pbSupportedByThisProvider) = 0;
    virtual HRESULT STDMETHODCALLTYPE EnableWriterClasses(const VSS_ID* rgWriterClassId, UINT cClassId) = 0;

protected:
    ~IVssBackupComponents() = default;
};

struct IVssBackupComponentsEx4 : public IVssBackupComponents {
    virtual HRESULT STDMETHODCALLTYPE
    GetRootAndLogicalPrefixPaths(VSS_PWSZ pwszFilePath, VSS_PWSZ* ppwszRootPath, VSS_PWSZ* ppwszLogicalPrefix,
                                 BOOL bNormalizeFQDNforRootPath = FALSE) = 0;

protected:
    ~IVssBackupComponentsEx4() = default;
};

extern const IID IID_IVssAsync;
extern const IID IID_IVssExamineWriterMetadata;
extern const IID IID_IVssBackupComponents;
extern const IID IID_IVssBackupComponentsEx4;

// The VSS API module's exports.
HRESULT CreateVssBackupComponentsInternal(IVssBackupComponents** ppBackup);
void VssFreeSnapshotPropertiesInternal(VSS_SNAPSHOT_PROP* pProp);

#endif
