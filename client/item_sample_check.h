// The field check's work on an item of a shadow copy: open it, read its first and last
// MiB, and compare its size with the live file's where this process can read that one.
// A check of terabytes of disks so reads a few MiB per file and copies nothing.
#pragma once

#include "client/vm_item_copy.h"

#include <cstdint>
#include <iosfwd>
#include <vector>

namespace client {

inline constexpr std::uint64_t sample_size = 1 << 20;

// The bytes a check reads of a file of this size: its first and last MiB, once each.
std::uint64_t SampledBytes(std::uint64_t size);

// Reads the samples of the item, telling each piece; the bytes read. Throws
// exc::runtime_exc_t when the file can't be opened or read, or when its size differs
// from the live file's.
std::uint64_t SampleItem(const item_copy_t& item, const bytes_copied_t& read);

// Samples every planned item of every VM, as ProcessVmItems does.
void CheckVmItems(std::vector<vm_copy_t>& vms, std::ostream& out);

} // namespace client
