// What a snapshot task leaves for the server once the snapshot stands: the
// documents and each VM's files on the shadow copies. It is a copy, made once,
// and it outlives the snapshot itself.
#pragma once

#include "documents/files_list.h"
#include "snapshot/snapshot_info.h"
#include "vssutils/writer_metadata.h"

#include <map>
#include <memory>
#include <string>

class CVssSnapshotResult {
public:
    using VmFilesMap = std::map<GUID, ItemsList, VSSUtils::VssIdLess>;

    CVssSnapshotResult(std::shared_ptr<impl::CSnapshotInfo> info_, VmFilesMap vmFiles_)
        : info(std::move(info_)), vmFiles(std::move(vmFiles_)) {}

    // The items list document of the VM, as UTF-8, the form in which it crosses the pipe; a VM
    // outside the task fails.
    std::string ListVmFiles(const GUID& vmId) const;

    const std::shared_ptr<impl::CSnapshotInfo> info;
    const VmFilesMap vmFiles;
};
