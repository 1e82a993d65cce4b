// Copying a VM's items out of the snapshot into a folder of the backup server:
// DIR/<vm folder>/<RelativePath>, so that the VM's own layout below its file
// specs is kept.
#pragma once

#include "documents/files_list.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace client {

// The target of an item below the VM's folder. Backslashes and slashes both part
// folders. A relative path that is empty, absolute, names a drive or climbs out with
// ".." throws exc::runtime_exc_t: the server's list must not write outside DIR.
std::filesystem::path TargetPathOfItem(const std::filesystem::path& vmDir, const std::wstring& relativePath);

struct item_copy_t {
    std::wstring fullPath; // as the server listed it
    std::filesystem::path source;
    std::filesystem::path target;
    std::uint64_t size = 0;
    std::wstring livePath; // the file on the live volume: the spec's folder and the relative path
};

// Where the item is read and written, and its size. Throws exc::runtime_exc_t when
// its FullPath can't be reached or the file isn't there.
item_copy_t PlanItemCopy(const CFilesListItem& item, const std::filesystem::path& vmDir);

using bytes_copied_t = std::function<void(std::uint64_t bytes)>;

// The source's bytes into the target (folders made, an old file replaced), telling
// each piece as it is written. Returns the bytes copied; throws exc::runtime_exc_t.
std::uint64_t CopyItemContents(const std::filesystem::path& source, const std::filesystem::path& target,
                               const bytes_copied_t& copied);

// One VM's items on their way out, and how far they got.
struct vm_copy_t {
    std::wstring vmFolder;
    std::vector<item_copy_t> items;
    std::size_t filesCopied = 0;
    std::uint64_t bytesCopied = 0;
    // One line per item that couldn't be planned or copied.
    std::vector<std::string> failures;

    bool Complete() const noexcept { return failures.empty(); }
};

// Plans every item; an item that can't be planned becomes a failure line of the VM.
vm_copy_t PlanVmCopy(const std::wstring& vmFolder, const ItemsList& items, const std::filesystem::path& dir);

// What is done with one item: the bytes it moved, told piece by piece as well. Throws on failure.
using item_action_t = std::function<std::uint64_t(const item_copy_t& item, const bytes_copied_t& moved)>;
// The bytes that the action will move for an item, for the progress bar's total.
using item_weight_t = std::function<std::uint64_t(const item_copy_t& item)>;

// The action on every planned item of every VM under one progress bar in bytes on out
// (redrawn in place on a terminal), counted in filesCopied and bytesCopied. A failed item
// is noted on its VM and the work goes on with the next one.
void ProcessVmItems(std::vector<vm_copy_t>& vms, std::ostream& out, const item_action_t& action,
                    const item_weight_t& weight);

// Copies every planned item of every VM, as ProcessVmItems does.
void CopyVmItems(std::vector<vm_copy_t>& vms, std::ostream& out);

} // namespace client
