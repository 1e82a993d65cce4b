// The local wall clock as a FILETIME.
#include "common/format/format.h"

std::uint64_t local_filetime_now() {
    FILETIME utc{};
    FILETIME local{};
    GetSystemTimeAsFileTime(&utc);
    FileTimeToLocalFileTime(&utc, &local);
    return (static_cast<std::uint64_t>(local.dwHighDateTime) << 32) | local.dwLowDateTime;
}
