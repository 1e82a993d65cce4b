// Compiled against the Windows SDK in the cross-build (and against compat/ natively): the exact
// type of each VSS, COM and cluster method and function that compat/ declares is pinned, so that
// a declaration that drifts from the SDK fails to build on one side or the other. The calls
// themselves are the tool's own, compiled on both sides.
#include "compat/cluster_api.h"
#include "compat/vss_api.h"

#include <type_traits>

// The cast selects the one method of exactly that type, or fails to compile.
#define PIN_METHOD(iface, method, ret, ...)                                                                  \
    static_assert(static_cast<ret (STDMETHODCALLTYPE iface::*)(__VA_ARGS__)>(&iface::method) != nullptr,     \
                  #iface "::" #method)

PIN_METHOD(IUnknown, QueryInterface, HRESULT, REFIID, void**);
PIN_METHOD(IUnknown, AddRef, ULONG);
PIN_METHOD(IUnknown, Release, ULONG);

PIN_METHOD(IVssAsync, Cancel, HRESULT);
PIN_METHOD(IVssAsync, QueryStatus, HRESULT, HRESULT*, INT*);

PIN_METHOD(IVssWMFiledesc, GetPath, HRESULT, BSTR*);
PIN_METHOD(IVssWMFiledesc, GetFilespec, HRESULT, BSTR*);
PIN_METHOD(IVssWMFiledesc, GetRecursive, HRESULT, boolean*);

PIN_METHOD(IVssWMComponent, GetComponentInfo, HRESULT, PVSSCOMPONENTINFO*);
PIN_METHOD(IVssWMComponent, FreeComponentInfo, HRESULT, PVSSCOMPONENTINFO);
PIN_METHOD(IVssWMComponent, GetFile, HRESULT, UINT, IVssWMFiledesc**);

PIN_METHOD(IVssExamineWriterMetadata, GetIdentity, HRESULT, VSS_ID*, VSS_ID*, BSTR*, VSS_USAGE_TYPE*,
           VSS_SOURCE_TYPE*);
PIN_METHOD(IVssExamineWriterMetadata, GetFileCounts, HRESULT, UINT*, UINT*, UINT*);
PIN_METHOD(IVssExamineWriterMetadata, GetComponent, HRESULT, UINT, IVssWMComponent**);
PIN_METHOD(IVssExamineWriterMetadata, SaveAsXML, HRESULT, BSTR*);

PIN_METHOD(IVssBackupComponents, InitializeForBackup, HRESULT, BSTR);
PIN_METHOD(IVssBackupComponents, SetBackupState, HRESULT, boolean, boolean, VSS_BACKUP_TYPE, boolean);
PIN_METHOD(IVssBackupComponents, GatherWriterMetadata, HRESULT, IVssAsync**);
PIN_METHOD(IVssBackupComponents, GetWriterMetadataCount, HRESULT, UINT*);
PIN_METHOD(IVssBackupComponents, GetWriterMetadata, HRESULT, UINT, VSS_ID*, IVssExamineWriterMetadata**);
PIN_METHOD(IVssBackupComponents, AddComponent, HRESULT, VSS_ID, VSS_ID, VSS_COMPONENT_TYPE, LPCWSTR, LPCWSTR);
PIN_METHOD(IVssBackupComponents, PrepareForBackup, HRESULT, IVssAsync**);
PIN_METHOD(IVssBackupComponents, AbortBackup, HRESULT);
PIN_METHOD(IVssBackupComponents, GatherWriterStatus, HRESULT, IVssAsync**);
PIN_METHOD(IVssBackupComponents, GetWriterStatusCount, HRESULT, UINT*);
PIN_METHOD(IVssBackupComponents, GetWriterStatus, HRESULT, UINT, VSS_ID*, VSS_ID*, BSTR*, VSS_WRITER_STATE*,
           HRESULT*);
PIN_METHOD(IVssBackupComponents, SetBackupSucceeded, HRESULT, VSS_ID, VSS_ID, VSS_COMPONENT_TYPE, LPCWSTR,
           LPCWSTR, boolean);
PIN_METHOD(IVssBackupComponents, SaveAsXML, HRESULT, BSTR*);
PIN_METHOD(IVssBackupComponents, BackupComplete, HRESULT, IVssAsync**);
PIN_METHOD(IVssBackupComponents, SetContext, HRESULT, LONG);
PIN_METHOD(IVssBackupComponents, StartSnapshotSet, HRESULT, VSS_ID*);
PIN_METHOD(IVssBackupComponents, AddToSnapshotSet, HRESULT, VSS_PWSZ, VSS_ID, VSS_ID*);
PIN_METHOD(IVssBackupComponents, DoSnapshotSet, HRESULT, IVssAsync**);
PIN_METHOD(IVssBackupComponents, ImportSnapshots, HRESULT, IVssAsync**);
PIN_METHOD(IVssBackupComponents, GetSnapshotProperties, HRESULT, VSS_ID, VSS_SNAPSHOT_PROP*);
PIN_METHOD(IVssBackupComponents, IsVolumeSupported, HRESULT, VSS_ID, VSS_PWSZ, BOOL*);
PIN_METHOD(IVssBackupComponents, EnableWriterClasses, HRESULT, const VSS_ID*, UINT);

PIN_METHOD(IVssBackupComponentsEx4, GetRootAndLogicalPrefixPaths, HRESULT, VSS_PWSZ, VSS_PWSZ*, VSS_PWSZ*,
           BOOL);

static_assert(std::is_base_of_v<IVssBackupComponents, IVssBackupComponentsEx4>);
static_assert(sizeof(VSS_ID) == 16);
static_assert(VSS_S_ASYNC_PENDING == 0x00042309 && VSS_S_ASYNC_FINISHED == 0x0004230A &&
              VSS_S_ASYNC_CANCELLED == 0x0004230B);
static_assert(VSS_E_BAD_STATE == (HRESULT)0x80042301 && VSS_E_OBJECT_NOT_FOUND == (HRESULT)0x80042308 &&
              VSS_E_OBJECT_ALREADY_EXISTS == (HRESULT)0x8004230D &&
              VSS_E_VOLUME_NOT_SUPPORTED_BY_PROVIDER == (HRESULT)0x8004230E &&
              VSS_E_PROVIDER_NOT_REGISTERED == (HRESULT)0x80042304 &&
              VSS_E_INVALID_XML_DOCUMENT == (HRESULT)0x80042311);
static_assert(VSS_VOLSNAP_ATTR_TRANSPORTABLE == 0x20 && (DWORD)VSS_CTX_ALL == 0xffffffff);
static_assert(VSS_WS_STABLE == 1 && VSS_WS_WAITING_FOR_BACKUP_COMPLETE == 5 &&
              VSS_WS_FAILED_AT_BACKUPSHUTDOWN == 15);
static_assert(VSS_BT_FULL == 1 && VSS_CT_DATABASE == 1 && VSS_CT_FILEGROUP == 2);
static_assert(
    std::is_same_v<decltype(&CreateVssBackupComponentsInternal), HRESULT(WINAPI*)(IVssBackupComponents**)>);
static_assert(
    std::is_same_v<decltype(&VssFreeSnapshotPropertiesInternal), void(WINAPI*)(VSS_SNAPSHOT_PROP*)>);
static_assert(std::is_same_v<decltype(&ClusterIsPathOnSharedVolume), BOOL(WINAPI*)(LPCWSTR)>);
static_assert(std::is_same_v<decltype(&ClusterPrepareSharedVolumeForBackup),
                             DWORD(WINAPI*)(LPCWSTR, LPWSTR, LPDWORD, LPWSTR, LPDWORD)>);
static_assert(std::is_same_v<decltype(&ClusterClearBackupStateForSharedVolume), DWORD(WINAPI*)(LPCWSTR)>);
