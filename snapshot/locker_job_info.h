// The identity of a job as the locker on the backup server sees it.
#pragma once

#include <string>

namespace wrap::locks {

class CLockerJobInfo {
public:
    // Job name first: callers hand over what they have in that order.
    CLockerJobInfo(const std::wstring& jobName_, const std::wstring& backupConsole_)
        : backupConsole(backupConsole_), jobName(jobName_) {}

    const std::wstring backupConsole;
    const std::wstring jobName;
};

} // namespace wrap::locks
