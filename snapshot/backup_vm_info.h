// One VM of a snapshot task: the Hyper-V writer's component for it and the files
// that belong to it.
#pragma once

#include "documents/files_list.h"
#include "vssutils/com.h"
#include "vssutils/writer_components.h"

#include <cstdint>
#include <string>
#include <vector>

namespace impl {

struct CBackupVmInfo {
    CBackupVmInfo(VSSUtils::WmComponentPtr component_, const VSSUtils::SWmComponentInfo& info,
                  bool crashConsistent_, std::vector<std::string> auxFiles_)
        : component(std::move(component_)), componentName(info.componentName), logicalPath(info.logicalPath),
          componentType(info.type), fileSpecCount(info.fileCount), auxFiles(std::move(auxFiles_)),
          crashConsistent(crashConsistent_) {}

    VSSUtils::WmComponentPtr component;
    // The VM's id as the writer words it.
    std::wstring componentName;
    std::wstring logicalPath;
    VSS_COMPONENT_TYPE componentType;
    std::uint32_t fileSpecCount;
    ItemsList files;
    // UTF-8, as the backup specification names them.
    std::vector<std::string> auxFiles;
    // Such a VM takes no part in the writer's backup: only its files are copied.
    bool crashConsistent;
};

} // namespace impl
