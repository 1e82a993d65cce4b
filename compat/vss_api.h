// The VSS requester interfaces and entry points. On Windows the SDK's; elsewhere
// declarations with the SDK's names, method order and signatures, served by the
// simulated host (hostsim/). Every method of each table is declared, also those the
// tool never calls, so that the tables have the SDK's layout.
#pragma once

#include "compat/com_unknown.h"
#include "compat/vss_types.h"

#ifdef _WIN32
#include <vsbackup.h>
#else

struct IVssWriterComponentsExt;
struct IVssEnumObject;
struct IVssWMDependency;
struct IVssExamineWriterMetadataEx;
struct IXMLDOMDocument;

struct IVssAsync : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Cancel() = 0;
    virtual HRESULT STDMETHODCALLTYPE Wait(DWORD dwMilliseconds = INFINITE) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryStatus(HRESULT* pHrResult, INT* pReserved) = 0;

protected:
    ~IVssAsync() = default;
};

struct IVssWMFiledesc : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetPath(BSTR* pbstrPath) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFilespec(BSTR* pbstrFilespec) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetRecursive(boolean* pbRecursive) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAlternateLocation(BSTR* pbstrAlternateLocation) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBackupTypeMask(DWORD* pdwTypeMask) = 0;

protected:
    ~IVssWMFiledesc() = default;
};

struct IVssWMComponent : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetComponentInfo(PVSSCOMPONENTINFO* ppInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE FreeComponentInfo(PVSSCOMPONENTINFO pInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFile(UINT iFile, IVssWMFiledesc** ppFiledesc) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDatabaseFile(UINT iDBFile, IVssWMFiledesc** ppFiledesc) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDatabaseLogFile(UINT iDbLogFile, IVssWMFiledesc** ppFiledesc) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDependency(UINT iDependency, IVssWMDependency** ppDependency) = 0;

protected:
    ~IVssWMComponent() = default;
};

struct IVssExamineWriterMetadata : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetIdentity(VSS_ID* pidInstance, VSS_ID* pidWriter,
                                                  BSTR* pbstrWriterName, VSS_USAGE_TYPE* pUsage,
                                                  VSS_SOURCE_TYPE* pSource) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFileCounts(UINT* pcIncludeFiles, UINT* pcExcludeFiles,
                                                    UINT* pcComponents) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIncludeFile(UINT iFile, IVssWMFiledesc** ppFiledesc) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetExcludeFile(UINT iFile, IVssWMFiledesc** ppFiledesc) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetComponent(UINT iComponent, IVssWMComponent** ppComponent) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetRestoreMethod(VSS_RESTOREMETHOD_ENUM* pMethod, BSTR* pbstrService,
                                                       BSTR* pbstrUserProcedure,
                                                       VSS_WRITERRESTORE_ENUM* pwriterRestore,
                                                       boolean* pbRebootRequired, UINT* pcMappings) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAlternateLocationMapping(UINT iMapping,
                                                                  IVssWMFiledesc** ppFiledesc) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBackupSchema(DWORD* pdwSchemaMask) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDocument(IXMLDOMDocument** pDoc) = 0;
    virtual HRESULT STDMETHODCALLTYPE SaveAsXML(BSTR* pbstrXML) = 0;
    virtual HRESULT STDMETHODCALLTYPE LoadFromXML(BSTR bstrXML) = 0;

protected:
    ~IVssExamineWriterMetadata() = default;
};

struct IVssBackupComponents : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetWriterComponentsCount(UINT* pcComponents) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetWriterComponents(UINT iWriter,
                                                          IVssWriterComponentsExt** ppWriter) = 0;
    virtual HRESULT STDMETHODCALLTYPE InitializeForBackup(BSTR bstrXML = nullptr) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetBackupState(boolean bSelectComponents,
                                                     boolean bBackupBootableSystemState,
                                                     VSS_BACKUP_TYPE backupType,
                                                     boolean bPartialFileSupport = 0) = 0;
    virtual HRESULT STDMETHODCALLTYPE InitializeForRestore(BSTR bstrXML) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetRestoreState(VSS_RESTORE_TYPE restoreType) = 0;
    virtual HRESULT STDMETHODCALLTYPE GatherWriterMetadata(IVssAsync** pAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetWriterMetadataCount(UINT* pcWriters) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetWriterMetadata(UINT iWriter, VSS_ID* pidInstance,
                                                        IVssExamineWriterMetadata** ppMetadata) = 0;
    virtual HRESULT STDMETHODCALLTYPE FreeWriterMetadata() = 0;
    virtual HRESULT STDMETHODCALLTYPE AddComponent(VSS_ID instanceId, VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                   LPCWSTR wszLogicalPath, LPCWSTR wszComponentName) = 0;
    virtual HRESULT STDMETHODCALLTYPE PrepareForBackup(IVssAsync** ppAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE AbortBackup() = 0;
    virtual HRESULT STDMETHODCALLTYPE GatherWriterStatus(IVssAsync** pAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetWriterStatusCount(UINT* pcWriters) = 0;
    virtual HRESULT STDMETHODCALLTYPE FreeWriterStatus() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetWriterStatus(UINT iWriter, VSS_ID* pidInstance, VSS_ID* pidWriter,
                                                      BSTR* pbstrWriter, VSS_WRITER_STATE* pnStatus,
                                                      HRESULT* phResultFailure) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetBackupSucceeded(VSS_ID instanceId, VSS_ID writerId,
                                                         VSS_COMPONENT_TYPE ct, LPCWSTR wszLogicalPath,
                                                         LPCWSTR wszComponentName, boolean bSucceded) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetBackupOptions(VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                       LPCWSTR wszLogicalPath, LPCWSTR wszComponentName,
                                                       LPCWSTR wszBackupOptions) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSelectedForRestore(VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                            LPCWSTR wszLogicalPath, LPCWSTR wszComponentName,
                                                            boolean bSelectedForRestore) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetRestoreOptions(VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                        LPCWSTR wszLogicalPath, LPCWSTR wszComponentName,
                                                        LPCWSTR wszRestoreOptions) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetAdditionalRestores(VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                            LPCWSTR wszLogicalPath, LPCWSTR wszComponentName,
                                                            boolean bAdditionalRestores) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPreviousBackupStamp(VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                             LPCWSTR wszLogicalPath, LPCWSTR wszComponentName,
                                                             LPCWSTR wszPreviousBackupStamp) = 0;
    virtual HRESULT STDMETHODCALLTYPE SaveAsXML(BSTR* pbstrXML) = 0;
    virtual HRESULT STDMETHODCALLTYPE BackupComplete(IVssAsync** ppAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddAlternativeLocationMapping(
        VSS_ID writerId, VSS_COMPONENT_TYPE componentType, LPCWSTR wszLogicalPath, LPCWSTR wszComponentName,
        LPCWSTR wszPath, LPCWSTR wszFilespec, boolean bRecursive, LPCWSTR wszDestination) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddRestoreSubcomponent(
        VSS_ID writerId, VSS_COMPONENT_TYPE componentType, LPCWSTR wszLogicalPath, LPCWSTR wszComponentName,
        LPCWSTR wszSubComponentLogicalPath, LPCWSTR wszSubComponentName, boolean bRepair) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetFileRestoreStatus(VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                           LPCWSTR wszLogicalPath, LPCWSTR wszComponentName,
                                                           VSS_FILE_RESTORE_STATUS status) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddNewTarget(VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                   LPCWSTR wszLogicalPath, LPCWSTR wszComponentName,
                                                   LPCWSTR wszPath, LPCWSTR wszFileName, boolean bRecursive,
                                                   LPCWSTR wszAlternatePath) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetRangesFilePath(VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                        LPCWSTR wszLogicalPath, LPCWSTR wszComponentName,
                                                        UINT iPartialFile, LPCWSTR wszRangesFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE PreRestore(IVssAsync** ppAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE PostRestore(IVssAsync** ppAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetContext(LONG lContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE StartSnapshotSet(VSS_ID* pSnapshotSetId) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddToSnapshotSet(VSS_PWSZ pwszVolumeName, VSS_ID ProviderId,
                                                       VSS_ID* pidSnapshot) = 0;
    virtual HRESULT STDMETHODCALLTYPE DoSnapshotSet(IVssAsync** ppAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteSnapshots(VSS_ID SourceObjectId,
                                                      VSS_OBJECT_TYPE eSourceObjectType, BOOL bForceDelete,
                                                      LONG* plDeletedSnapshots,
                                                      VSS_ID* pNondeletedSnapshotID) = 0;
    virtual HRESULT STDMETHODCALLTYPE ImportSnapshots(IVssAsync** ppAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE BreakSnapshotSet(VSS_ID SnapshotSetId) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSnapshotProperties(VSS_ID SnapshotId, VSS_SNAPSHOT_PROP* pProp) = 0;
    virtual HRESULT STDMETHODCALLTYPE Query(VSS_ID QueriedObjectId, VSS_OBJECT_TYPE eQueriedObjectType,
                                            VSS_OBJECT_TYPE eReturnedObjectsType,
                                            IVssEnumObject** ppEnum) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsVolumeSupported(VSS_ID ProviderId, VSS_PWSZ pwszVolumeName,
                                                        BOOL* pbSupportedByThisProvider) = 0;
    virtual HRESULT STDMETHODCALLTYPE DisableWriterClasses(const VSS_ID* rgWriterClassId, UINT cClassId) = 0;
    virtual HRESULT STDMETHODCALLTYPE EnableWriterClasses(const VSS_ID* rgWriterClassId, UINT cClassId) = 0;
    virtual HRESULT STDMETHODCALLTYPE DisableWriterInstances(const VSS_ID* rgWriterInstanceId,
                                                             UINT cInstanceId) = 0;
    virtual HRESULT STDMETHODCALLTYPE ExposeSnapshot(VSS_ID SnapshotId, VSS_PWSZ wszPathFromRoot,
                                                     LONG lAttributes, VSS_PWSZ wszExpose,
                                                     VSS_PWSZ* pwszExposed) = 0;
    virtual HRESULT STDMETHODCALLTYPE RevertToSnapshot(VSS_ID SnapshotId, BOOL bForceDismount) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryRevertStatus(VSS_PWSZ pwszVolume, IVssAsync** ppAsync) = 0;

protected:
    ~IVssBackupComponents() = default;
};

struct IVssBackupComponentsEx : public IVssBackupComponents {
    virtual HRESULT STDMETHODCALLTYPE GetWriterMetadataEx(UINT iWriter, VSS_ID* pidInstance,
                                                          IVssExamineWriterMetadataEx** ppMetadata) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSelectedForRestoreEx(VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                              LPCWSTR wszLogicalPath,
                                                              LPCWSTR wszComponentName,
                                                              boolean bSelectedForRestore,
                                                              VSS_ID instanceId) = 0;

protected:
    ~IVssBackupComponentsEx() = default;
};

struct IVssBackupComponentsEx2 : public IVssBackupComponentsEx {
    virtual HRESULT STDMETHODCALLTYPE UnexposeSnapshot(VSS_ID snapshotId) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetAuthoritativeRestore(VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                              LPCWSTR wszLogicalPath,
                                                              LPCWSTR wszComponentName, boolean bAuth) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetRollForward(VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                     LPCWSTR wszLogicalPath, LPCWSTR wszComponentName,
                                                     VSS_ROLLFORWARD_TYPE rollType,
                                                     LPCWSTR wszRollForwardPoint) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetRestoreName(VSS_ID writerId, VSS_COMPONENT_TYPE ct,
                                                     LPCWSTR wszLogicalPath, LPCWSTR wszComponentName,
                                                     LPCWSTR wszRestoreName) = 0;
    virtual HRESULT STDMETHODCALLTYPE BreakSnapshotSetEx(VSS_ID SnapshotSetID, DWORD dwBreakFlags,
                                                         IVssAsync** ppAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE PreFastRecovery(VSS_ID SnapshotSetID, DWORD dwPreFastRecoveryFlags,
                                                      IVssAsync** ppAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE FastRecovery(VSS_ID SnapshotSetID, DWORD dwFastRecoveryFlags,
                                                   IVssAsync** ppAsync) = 0;

protected:
    ~IVssBackupComponentsEx2() = default;
};

struct IVssBackupComponentsEx3 : public IVssBackupComponentsEx2 {
    virtual HRESULT STDMETHODCALLTYPE GetWriterStatusEx(UINT iWriter, VSS_ID* pidInstance, VSS_ID* pidWriter,
                                                        BSTR* pbstrWriter, VSS_WRITER_STATE* pnStatus,
                                                        HRESULT* phrFailureWriter,
                                                        HRESULT* phrApplication = nullptr,
                                                        BSTR* pbstrApplicationMessage = nullptr) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddSnapshotToRecoverySet(VSS_ID snapshotId, DWORD dwFlags,
                                                               VSS_PWSZ pwszDestinationVolume = nullptr) = 0;
    virtual HRESULT STDMETHODCALLTYPE RecoverSet(DWORD dwFlags, IVssAsync** ppAsync) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSessionId(VSS_ID* idSession) = 0;

protected:
    ~IVssBackupComponentsEx3() = default;
};

struct IVssBackupComponentsEx4 : public IVssBackupComponentsEx3 {
    virtual HRESULT STDMETHODCALLTYPE
    GetRootAndLogicalPrefixPaths(VSS_PWSZ pwszFilePath, VSS_PWSZ* ppwszRootPath, VSS_PWSZ* ppwszLogicalPrefix,
                                 BOOL bNormalizeFQDNforRootPath = FALSE) = 0;

protected:
    ~IVssBackupComponentsEx4() = default;
};

extern const IID IID_IVssAsync;
extern const IID IID_IVssExamineWriterMetadata;
extern const IID IID_IVssBackupComponents;
extern const IID IID_IVssBackupComponentsEx;
extern const IID IID_IVssBackupComponentsEx2;
extern const IID IID_IVssBackupComponentsEx3;
extern const IID IID_IVssBackupComponentsEx4;

// The VSS API module's exports.
HRESULT CreateVssBackupComponentsInternal(IVssBackupComponents** ppBackup);
void VssFreeSnapshotPropertiesInternal(VSS_SNAPSHOT_PROP* pProp);

#endif
