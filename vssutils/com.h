// The platform's VSS interfaces and the counted pointers that the VSS layer passes around.
#pragma once

#include "compat/com_ptr.h"
#include "compat/vss_api.h"

namespace VSSUtils {

using compat::com_ptr_t;

using BackupComponentsPtr = com_ptr_t<IVssBackupComponents>;
using AsyncPtr = com_ptr_t<IVssAsync>;
using WriterMetadataPtr = com_ptr_t<IVssExamineWriterMetadata>;
using WmComponentPtr = com_ptr_t<IVssWMComponent>;
using WmFiledescPtr = com_ptr_t<IVssWMFiledesc>;

} // namespace VSSUtils
