// The writers a Hyper-V backup enables: the Hyper-V writer always, the cluster's
// CSV writer when the specification asks for it.
#pragma once

#include "vssutils/com.h"

namespace impl {

extern const VSS_ID HyperVWriterId;
// Kept as text; it becomes a GUID where it is used.
extern const char CsvWriterIdText[];

void SelectHyperVWriter(VSSUtils::BackupComponentsPtr components);
// No component of this writer is ever added: enabling it is all it takes.
void SelectCsvWriter(VSSUtils::BackupComponentsPtr components);

} // namespace impl
