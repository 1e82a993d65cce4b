#include "snapshot/vm_file_set.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/win/file_search.h"
#include "common/win/path.h"
#include "snapshot/vss_snapshot.h"
#include "spec/hv_backup_spec.h"
#include "vssutils/writer_components.h"

#include <algorithm>

namespace impl {

namespace {

bool HasWildcards(const std::wstring& mask) {
    return mask.find_first_of(L"?*") != std::wstring::npos;
}

bool IsDotEntry(const std::wstring& name) {
    return name == L"." || name == L"..";
}

bool IsInFileSet(const ItemsList& items, const std::wstring& path) {
    return std::any_of(items.begin(), items.end(),
                       [&](const CFilesListItem& item) { return spec::SamePath(item.fullPath, path); });
}

// One file spec's search: what every level of the walk shares, each level with its own
// prefix below the spec's path, and a log block and a failure line of its own.
struct SFileSearch {
    ItemsList& items;
    const std::wstring& path;
    const std::wstring& mask;
    const bool recursive;

    void Level(const std::wstring& prefix) const {
        try {
            log_scope_t scope(logging::tool_logger(), "Searching the directory [%1] for a file [%2].",
                              to_ansi_nothrow(path), to_ansi_nothrow(mask));
            const std::wstring expandedPath = expand_env(path);
            for (win::win_file_search_t search(win::path_join(expandedPath, prefix, mask)); search.found();
                 search.next()) {
                const win::find_data_t& entry = search.current();
                if (!entry.is_directory())
                    items.emplace_back(path, mask, recursive ? 1 : 0, win::path_join(prefix, entry.name),
                                       win::path_join(expandedPath, prefix, entry.name));
                else if (recursive && !IsDotEntry(entry.name))
                    Level(prefix + entry.name + L"\\");
            }
            scope.ok();
        } catch (const std::exception& e) {
            exc::rethrow_with_trace(
                "Failed to search the directory [%1] for a file [%2]. Is search recursive: [%3].",
                to_ansi_nothrow(path), to_ansi_nothrow(mask), bool_to_string(recursive), e);
        }
    }
};

} // namespace

void SearchFiles(ItemsList& items, const std::wstring& path, const std::wstring& mask, bool recursive,
                 const std::wstring& prefix) {
    SFileSearch{items, path, mask, recursive}.Level(prefix);
}

void ProcessFileDesc(ItemsList& items, VSSUtils::WmFiledescPtr file) {
    std::wstring path, mask;
    try {
        path = VSSUtils::GetWmFilePath(file);
        mask = VSSUtils::GetWmFileMask(file);
        // The writer's path ends in a separator: the two are joined as they stand.
        if (!HasWildcards(mask))
            items.emplace_back(path, mask, 0, mask, path + mask);
        else
            SearchFiles(items, path, mask, VSSUtils::GetWmFileRecursive(file), std::wstring());
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to process path '%1', mask '%2'.", to_ansi_nothrow(path),
                                to_ansi_nothrow(mask), e);
    }
}

void AddAuxFiles(ItemsList& items, const std::vector<std::string>& auxFiles) {
    for (const std::string& auxFile : auxFiles) {
        const std::wstring path = from_utf8(auxFile);
        if (IsInFileSet(items, path)) {
            log_info(logging::tool_logger(), "Aux file [%1] was already added to VM's file set.",
                     to_ansi_nothrow(path));
            continue;
        }
        log_info(logging::tool_logger(), "Adding aux file to VM's file set: [%1].", to_ansi_nothrow(path));
        const auto [directory, name] = win::split_path(path);
        items.emplace_back(directory, name, 0, name, path);
    }
}

void LogVmFiles(const CBackupVmInfo& vm) {
    log_info(logging::tool_logger(), "The following files will be backed up:");
    for (const CFilesListItem& item : vm.files)
        log_info(logging::tool_logger(), "    %1", to_ansi_nothrow(item.fullPath));
}

void CollectFilesOfVm(CBackupVmInfo& vm) {
    const std::string name = to_ansi_nothrow(vm.componentName);
    exc::traced("Failed to get a list of VM files to backup. VM: %1.", name, [&] {
        log_scope_t scope(logging::tool_logger(),
                          "Getting list of VM files to backup (%1), file specs number %2.", name,
                          num_to_string(static_cast<std::uint64_t>(vm.fileSpecCount)));
        for (std::uint32_t index = 0; index < vm.fileSpecCount; ++index)
            ProcessFileDesc(vm.files, VSSUtils::GetWmFile(vm.component, index));
        AddAuxFiles(vm.files, vm.auxFiles);
        // The list stays as long as the snapshot: on a host of a thousand VMs the
        // room left by its growth would add up to megabytes.
        vm.files.shrink_to_fit();
        scope.ok();
        LogVmFiles(vm);
    });
}

// Crash-consistent VMs are no different here: their files are copied all the same.
void CVssSnapshot::CollectVmFiles() {
    for (const auto& entry : VMs)
        CollectFilesOfVm(*entry.second);
}

} // namespace impl
