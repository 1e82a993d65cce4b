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

// Nearly every method answers an HRESULT; short names keep each pin on one line.
#define PIN(iface, method, ...) PIN_METHOD(iface, method, HRESULT, __VA_ARGS__)
using Backup = IVssBackupComponents;

PIN(IUnknown, QueryInterface, REFIID, void**);
PIN_METHOD(IUnknown, AddRef, ULONG);
PIN_METHOD(IUnknown, Release, ULONG);

PIN(IVssAsync, Cancel);
PIN(IVssAsync, QueryStatus, HRESULT*, INT*);

PIN(IVssWMFiledesc, GetPath, BSTR*);
PIN(IVssWMFiledesc, GetFilespec, BSTR*);
PIN(IVssWMFiledesc, GetRecursive, boolean*);

PIN(IVssWMComponent, GetComponentInfo, PVSSCOMPONENTINFO*);
PIN(IVssWMComponent, FreeComponentInfo, PVSSCOMPONENTINFO);
PIN(IVssWMComponent, GetFile, UINT, IVssWMFiledesc**);

PIN(IVssExamineWriterMetadata, GetIdentity, VSS_ID*, VSS_ID*, BSTR*, VSS_USAGE_TYPE*, VSS_SOURCE_TYPE*);
PIN(IVssExamineWriterMetadata, GetFileCounts, UINT*, UINT*, UINT*);
PIN(IVssExamineWriterMetadata, GetComponent, UINT, IVssWMComponent**);
PIN(IVssExamineWriterMetadata, SaveAsXML, BSTR*);

PIN(Backup, InitializeForBackup, BSTR);
PIN(Backup, SetBackupState, boolean, boolean, VSS_BACKUP_TYPE, boolean);
PIN(Backup, GatherWriterMetadata, IVssAsync**);
PIN(Backup, GetWriterMetadataCount, UINT*);
PIN(Backup, GetWriterMetadata, UINT, VSS_ID*, IVssExamineWriterMetadata**);
PIN(Backup, AddComponent, VSS_ID, VSS_ID, VSS_COMPONENT_TYPE, LPCWSTR, LPCWSTR);
PIN(Backup, PrepareForBackup, IVssAsync**);
PIN(Backup, AbortBackup);
PIN(Backup, GatherWriterStatus, IVssAsync**);
PIN(Backup, GetWriterStatusCount, UINT*);
PIN(Backup, GetWriterStatus, UINT, VSS_ID*, VSS_ID*, BSTR*, VSS_WRITER_STATE*, HRESULT*);
PIN(Backup, SetBackupSucceeded, VSS_ID, VSS_ID, VSS_COMPONENT_TYPE, LPCWSTR, LPCWSTR, boolean);
PIN(Backup, SaveAsXML, BSTR*);
PIN(Backup, BackupComplete, IVssAsync**);
PIN(Backup, SetContext, LONG);
PIN(Backup, StartSnapshotSet, VSS_ID*);
PIN(Backup, AddToSnapshotSet, VSS_PWSZ, VSS_ID, VSS_ID*);
PIN(Backup, DoSnapshotSet, IVssAsync**);
PIN(Backup, ImportSnapshots, IVssAsync**);
PIN(Backup, GetSnapshotProperties, VSS_ID, VSS_SNAPSHOT_PROP*);
PIN(Backup, IsVolumeSupported, VSS_ID, VSS_PWSZ, BOOL*);
PIN(Backup, EnableWriterClasses, const VSS_ID*, UINT);

PIN(IVssBackupComponentsEx4, GetRootAndLogicalPrefixPaths, VSS_PWSZ, VSS_PWSZ*, VSS_PWSZ*, BOOL);

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
