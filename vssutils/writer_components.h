// Readers of a writer's components and of their file descriptors.
#pragma once

#include "vssutils/com.h"

#include <cstdint>
#include <string>

namespace VSSUtils {

// A copy of the platform's component info.
struct SWmComponentInfo {
    std::wstring componentName;
    std::wstring logicalPath; // empty when the writer gives none
    VSS_COMPONENT_TYPE type = VSS_CT_UNDEFINED;
    std::uint32_t fileCount = 0;
};

WmComponentPtr GetWmComponent(WriterMetadataPtr metadata, std::uint32_t index);
SWmComponentInfo GetWmComponentInfo(WmComponentPtr component);
WmFiledescPtr GetWmFile(WmComponentPtr component, std::uint32_t index);
std::wstring GetWmFilePath(WmFiledescPtr file);
std::wstring GetWmFileMask(WmFiledescPtr file);
bool GetWmFileRecursive(WmFiledescPtr file);

} // namespace VSSUtils
