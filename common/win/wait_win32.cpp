#include "common/win/wait.h"

namespace win {

DWORD wait_for_object(HANDLE handle, DWORD timeout_ms) {
    return ::WaitForSingleObject(handle, timeout_ms);
}

DWORD wait_for_objects(const HANDLE* handles, DWORD count, DWORD timeout_ms) {
    return ::WaitForMultipleObjects(count, handles, FALSE, timeout_ms);
}

} // namespace win
