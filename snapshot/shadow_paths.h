// The last form of an item's path: the shadow copy's device in place of the volume.
#pragma once

#include "documents/files_list.h"

#include <string>

namespace impl {

// Items whose fullPath begins with the old volume (ASCII case ignored) get the new
// volume in its place; the others are left as they are.
void MapVmItems(ItemsList& items, const std::wstring& oldVolume, const std::wstring& newVolume);

} // namespace impl
