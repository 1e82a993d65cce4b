#include "client/vm_item_copy.h"

#include "client/progress_bar.h"
#include "client/shadow_item_path.h"
#include "client/terminal.h"
#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/win/path.h"

#include <fstream>
#include <vector>

namespace client {

namespace {

constexpr std::size_t copy_piece_size = 1 << 20;

std::vector<std::wstring> path_parts(const std::wstring& path) {
    std::vector<std::wstring> parts;
    std::wstring part;
    for (const wchar_t character : path) {
        if (character == L'\\' || character == L'/') {
            if (!part.empty())
                parts.push_back(part);
            part.clear();
        } else {
            part += character;
        }
    }
    if (!part.empty())
        parts.push_back(part);
    return parts;
}

// UTF-8 names mean the same file on every platform.
std::filesystem::path path_of_part(const std::wstring& part) {
    const std::string utf8 = to_utf8(part);
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

bool is_safe_part(const std::wstring& part) {
    return part != L".." && part.find(L':') == std::wstring::npos;
}

std::string narrow(const std::filesystem::path& path) {
    const std::u8string utf8 = path.u8string();
    return std::string(utf8.begin(), utf8.end());
}

// Two files of a VM with the same relative path would leave only one in the backup.
void check_target_is_free(const std::vector<item_copy_t>& planned, const item_copy_t& copy) {
    for (const item_copy_t& other : planned) {
        if (other.target == copy.target)
            throw exc::runtime_exc_t(
                "The files [%1] and [%2] have the same relative path in the VM's folder.",
                to_ansi_nothrow(other.fullPath), to_ansi_nothrow(copy.fullPath));
    }
}

} // namespace

std::filesystem::path TargetPathOfItem(const std::filesystem::path& vmDir, const std::wstring& relativePath) {
    const std::vector<std::wstring> parts = path_parts(relativePath);
    const bool absolute = !relativePath.empty() && (relativePath[0] == L'\\' || relativePath[0] == L'/');
    bool safe = !parts.empty() && !absolute;
    for (const std::wstring& part : parts)
        safe = safe && is_safe_part(part);
    if (!safe)
        throw exc::runtime_exc_t("The relative path [%1] of an item doesn't stay inside its VM's folder.",
                                 to_ansi_nothrow(relativePath));
    std::filesystem::path target = vmDir;
    for (const std::wstring& part : parts) {
        if (part != L".")
            target /= path_of_part(part);
    }
    return target;
}

item_copy_t PlanItemCopy(const CFilesListItem& item, const std::filesystem::path& vmDir) {
    const std::optional<std::filesystem::path> source = LocalPathOfItem(item.fullPath);
    if (!source)
        throw exc::runtime_exc_t("The file [%1] is on nothing this process can reach.",
                                 to_ansi_nothrow(item.fullPath));
    std::error_code error;
    const std::uint64_t size = std::filesystem::file_size(*source, error);
    if (error)
        throw exc::runtime_exc_t("The file [%1] can't be read: %2", to_ansi_nothrow(item.fullPath),
                                 error.message());
    return {item.fullPath, *source, TargetPathOfItem(vmDir, item.relativePath), size,
            win::path_join(item.path, item.relativePath)};
}

std::uint64_t CopyItemContents(const std::filesystem::path& source, const std::filesystem::path& target,
                               const bytes_copied_t& copied) {
    std::ifstream in(source, std::ios::binary);
    if (!in)
        throw exc::runtime_exc_t("Failed to open the file [%1] for reading.", narrow(source));
    std::error_code error;
    std::filesystem::create_directories(target.parent_path(), error);
    std::ofstream out(target, std::ios::binary | std::ios::trunc);
    if (!out)
        throw exc::runtime_exc_t("Failed to create the file [%1].", narrow(target));

    std::vector<char> piece(copy_piece_size);
    std::uint64_t total = 0;
    while (in) {
        in.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        const std::streamsize got = in.gcount();
        if (got <= 0)
            break;
        if (!out.write(piece.data(), got)) {
            out.close();
            std::filesystem::remove(target, error);
            throw exc::runtime_exc_t("Failed to write the file [%1].", narrow(target));
        }
        total += static_cast<std::uint64_t>(got);
        if (copied)
            copied(static_cast<std::uint64_t>(got));
    }
    if (in.bad() || !out.flush()) {
        out.close();
        std::filesystem::remove(target, error);
        throw exc::runtime_exc_t("Failed to copy the file [%1] to [%2].", narrow(source), narrow(target));
    }
    return total;
}

vm_copy_t PlanVmCopy(const std::wstring& vmFolder, const ItemsList& items, const std::filesystem::path& dir) {
    vm_copy_t vm;
    vm.vmFolder = vmFolder;
    try {
        const std::filesystem::path vmDir = TargetPathOfItem(dir, vmFolder);
        for (const CFilesListItem& item : items) {
            try {
                item_copy_t copy = PlanItemCopy(item, vmDir);
                check_target_is_free(vm.items, copy);
                vm.items.push_back(std::move(copy));
            } catch (const std::exception& e) {
                vm.failures.push_back(exc::exception_text(e));
            }
        }
    } catch (const std::exception& e) {
        vm.failures.push_back(exc::exception_text(e));
    }
    return vm;
}

void ProcessVmItems(std::vector<vm_copy_t>& vms, std::ostream& out, const item_action_t& action,
                    const item_weight_t& weight) {
    std::uint64_t total = 0;
    for (const vm_copy_t& vm : vms) {
        for (const item_copy_t& item : vm.items)
            total += weight(item);
    }
    CByteProgressBar bar(out, total, IsTerminal(out));
    for (vm_copy_t& vm : vms) {
        for (const item_copy_t& item : vm.items) {
            try {
                vm.bytesCopied += action(item, [&bar](std::uint64_t bytes) { bar.Advance(bytes); });
                ++vm.filesCopied;
            } catch (const std::exception& e) {
                vm.failures.push_back(exc::exception_text(e));
            }
        }
    }
    bar.Finish();
}

void CopyVmItems(std::vector<vm_copy_t>& vms, std::ostream& out) {
    ProcessVmItems(
        vms, out,
        [](const item_copy_t& item, const bytes_copied_t& moved) {
            return CopyItemContents(item.source, item.target, moved);
        },
        [](const item_copy_t& item) { return item.size; });
}

} // namespace client
