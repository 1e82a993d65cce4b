// Waiting on kernel objects (events, threads): WaitForSingleObject and
// WaitForMultipleObjects with their result values.
#pragma once

#include "compat/win_types.h"

#include <cstdint>
#include <initializer_list>

namespace win {

inline constexpr DWORD wait_object_0 = 0;        // WAIT_OBJECT_0; + index for several objects
inline constexpr DWORD wait_timed_out = 258;     // WAIT_TIMEOUT
inline constexpr DWORD wait_failed = 0xFFFFFFFF; // WAIT_FAILED, details in last_error()
inline constexpr DWORD wait_infinite = 0xFFFFFFFF;

// WaitForSingleObject.
DWORD wait_for_object(HANDLE handle, DWORD timeout_ms);
// WaitForMultipleObjects for any of them: wait_object_0 + the lowest index that is signalled.
DWORD wait_for_objects(const HANDLE* handles, DWORD count, DWORD timeout_ms);
inline DWORD wait_for_any(std::initializer_list<HANDLE> handles, DWORD timeout_ms) {
    return wait_for_objects(handles.begin(), static_cast<DWORD>(handles.size()), timeout_ms);
}

} // namespace win
