// What the task holder asks of an off-host import task on a proxy. Like the
// snapshot task it runs on its own worker and ends when the last reference goes.
#pragma once

#include "compat/win_types.h"
#include "import/import_snapshot_context.h"
#include "snapshot/locker_job_info.h"
#include "snapshot/operation_info.h"

#include <memory>
#include <string>

namespace hv {

class IImportTask {
public:
    virtual ~IImportTask() = default;

    virtual std::shared_ptr<COperationInfo> GetOperationInfo() = 0;
    virtual std::shared_ptr<wrap::locks::CLockerJobInfo> GetJobInfo() = 0;
    // Items list XML in, the same items on the imported shadow devices out, both as UTF-8.
    // Throws "There is no successfully imported snapshot." until the import stands.
    virtual std::string ConvertOffhostPaths(const std::string& itemsXml) = 0;
};

} // namespace hv
