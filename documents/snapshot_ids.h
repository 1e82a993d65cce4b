// The snapshot ID list: <SnapshotIDs><ID value="{...}"/>...</SnapshotIDs>.
#pragma once

#include "compat/win_types.h"

#include <string>
#include <vector>

typedef std::vector<GUID> SnapshotIdList;

std::wstring SerializeSnapshotIds(const SnapshotIdList& ids);
// Appends the IDs in document order; on failure the list is left as it was.
void DeserializeSnapshotIds(const std::wstring& xml, SnapshotIdList& ids);
