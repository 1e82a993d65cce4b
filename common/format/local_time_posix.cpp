// The local wall clock as a FILETIME: 100-ns intervals since 1601-01-01, local time read as UTC.
#include "common/format/format.h"

#include <ctime>

namespace {
const std::uint64_t intervals_per_second = 10000000;
const std::uint64_t seconds_1601_to_1970 = 11644473600ULL;
} // namespace

std::uint64_t local_filetime_now() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    const std::int64_t local_seconds = static_cast<std::int64_t>(now.tv_sec) + local.tm_gmtoff;
    return (static_cast<std::uint64_t>(local_seconds) + seconds_1601_to_1970) * intervals_per_second +
           static_cast<std::uint64_t>(now.tv_nsec) / 100;
}
