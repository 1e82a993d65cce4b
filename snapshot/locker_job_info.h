// The identity of a job as the locker on the backup server sees it.
#pragma once

#include <string>

namespace wrap::locks {

class CLockerJobInfo {
public:
    // Job name first: callers hand over what they have in that order.
    CLockerJobInfo(const std::wstring& jobName, const std::wstring& backupConsole)
        : backupConsole(backupConsole), jobName(jobName) {}

    const std::wstring backupConsole;
    const std::wstring jobName;
};

} // namespace wrap::locks
