// The cluster resource utility calls for cluster shared volumes. On Windows the SDK's;
// elsewhere declarations with the SDK's signatures, served by the simulated host.
#pragma once

#include "compat/win_types.h"

#if defined(_WIN32) && !defined(__MINGW32__)
#include <resapi.h>
#else

#ifdef __MINGW32__
// MinGW-w64's resapi.h does not compile (its cluster types are defined twice); the three
// calls are declared here with the SDK's signatures and linked from resutils as usual.
#define MIRRACK_CLUSTER_API extern "C" __declspec(dllimport)
#else
#define MIRRACK_CLUSTER_API
#endif

MIRRACK_CLUSTER_API BOOL WINAPI ClusterIsPathOnSharedVolume(LPCWSTR lpszPathName);
MIRRACK_CLUSTER_API DWORD WINAPI ClusterPrepareSharedVolumeForBackup(LPCWSTR lpszFileName,
                                                                     LPWSTR lpszVolumePathName,
                                                                     LPDWORD lpcchVolumePathName,
                                                                     LPWSTR lpszVolumeName,
                                                                     LPDWORD lpcchVolumeName);
MIRRACK_CLUSTER_API DWORD WINAPI ClusterClearBackupStateForSharedVolume(LPCWSTR lpszVolumePathName);

#undef MIRRACK_CLUSTER_API

#endif
