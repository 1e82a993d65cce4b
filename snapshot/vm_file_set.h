// The file set of a VM: the writer's file specs, widened by searches on the live
// file system, and the auxiliary files of the specification. The items keep the
// spec they came from; only fullPath is rewritten by the later steps.
#pragma once

#include "documents/files_list.h"
#include "snapshot/backup_vm_info.h"
#include "vssutils/com.h"

#include <string>
#include <vector>

namespace impl {

// The writer's file specs by index, then the auxiliary files.
void CollectFilesOfVm(CBackupVmInfo& vm);

// A spec without wildcards names one file, whether or not it exists; one with
// wildcards is searched for.
void ProcessFileDesc(ItemsList& items, VSSUtils::WmFiledescPtr file);

// Every level of a recursive walk searches with the same mask, so the walk enters
// only directories whose names match the mask themselves.
void SearchFiles(ItemsList& items, const std::wstring& path, const std::wstring& mask, bool recursive,
                 const std::wstring& prefix);

// Each file (UTF-8) unless an item already has the same path, as written, not expanded.
void AddAuxFiles(ItemsList& items, const std::vector<std::string>& auxFiles);

void LogVmFiles(const CBackupVmInfo& vm);

} // namespace impl
