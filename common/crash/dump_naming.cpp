#include "common/crash/dump_naming.h"

#include "common/crash/dump_file_os.h"
#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/win/file_search.h"
#include "common/win/folder.h"
#include "common/win/path.h"

#include <algorithm>
#include <set>
#include <vector>

namespace crash {

namespace {

struct stored_dump_t {
    std::wstring name;
    std::uint64_t last_write_time = 0;
};

std::wstring dump_mask(const std::string& prefix, const std::string& extension) {
    return from_utf8(prefix + "_crash_*." + extension);
}

std::wstring dump_name(const std::string& prefix, int id, const std::string& extension) {
    return from_utf8(prefix + "_crash_" + std::to_string(id) + "." + extension);
}

// Oldest first.
std::vector<stored_dump_t> stored_dumps(const std::wstring& folder, const std::string& prefix,
                                        const std::string& extension) {
    try {
        std::vector<stored_dump_t> dumps;
        win::win_file_search_t search(win::path_join(folder, dump_mask(prefix, extension)));
        for (bool more = search.found(); more; more = search.next())
            dumps.push_back({search.current().name, search.current().last_write_time});
        std::stable_sort(dumps.begin(), dumps.end(), [](const stored_dump_t& a, const stored_dump_t& b) {
            return a.last_write_time < b.last_write_time;
        });
        return dumps;
    } catch (const std::exception& e) {
        exc::rethrow_with_message(
            format_message("Unable to enumerate dumps stored in a folder. Folder: [%1]. "
                           "Dump extension: [%2].",
                           to_ansi_nothrow(folder), extension),
            e);
    }
}

// Deletes from the oldest on until fewer than max_dumps_kept remain; a dump
// that cannot go is passed over.
void prune(const std::wstring& folder, std::vector<stored_dump_t>& dumps) {
    const logger_t& h = logging::lib_logger();
    std::size_t next = 0;
    while (dumps.size() >= max_dumps_kept) {
        if (next == dumps.size())
            throw exc::exc_base_t(format_message("Cannot cleanup out of date dumps. There are [%1] dumps "
                                                 "stored. Maximum allowed dumps number: [%2].",
                                                 num_to_string(static_cast<std::uint64_t>(dumps.size())),
                                                 num_to_string(static_cast<std::uint64_t>(max_dumps_kept))));
        const std::wstring path = win::path_join(folder, dumps[next].name);
        const DWORD error = detail::delete_dump_file(path);
        if (error == ERROR_SUCCESS) {
            log_info(h, "Dump [%1] deleted.", to_ansi_nothrow(path));
            dumps.erase(dumps.begin() + static_cast<std::ptrdiff_t>(next));
        } else {
            log_exception(h, "Old dump cannot be removed. Dump path: [%1].", to_ansi_nothrow(path),
                          exc::win_sys_exc_t(error));
            ++next;
        }
    }
}

[[noreturn]] void throw_naming_failure(const std::string& folder, const std::exception& cause) {
    exc::rethrow_with_message("Cannot define the name of the next crash dump. Dumps folder: [%1].", folder,
                              cause);
}

// The folder made and pruned; the names of the dumps that stay, in lower case.
std::set<std::wstring> names_left(const std::wstring& folder, const std::string& prefix,
                                  const std::string& extension) {
    win::create_folder(folder);
    std::vector<stored_dump_t> dumps = stored_dumps(folder, prefix, extension);
    prune(folder, dumps);
    std::set<std::wstring> taken;
    for (const auto& dump : dumps)
        taken.insert(to_lower(dump.name));
    return taken;
}

} // namespace

std::wstring create_next_dump(const std::string& folder, const std::string& prefix,
                              const std::string& extension, const create_new_dump_t& create_new) {
    std::wstring wide_folder;
    std::set<std::wstring> taken;
    try {
        wide_folder = from_utf8(folder);
        taken = names_left(wide_folder, prefix, extension);
    } catch (const std::exception& e) {
        throw_naming_failure(folder, e);
    }
    for (int id = 0; id < dump_identifiers; ++id) {
        const std::wstring name = dump_name(prefix, id, extension);
        if (taken.count(to_lower(name)) != 0)
            continue;
        const std::wstring path = win::path_join(wide_folder, name);
        if (create_new(path))
            return path;
    }
    throw_naming_failure(folder, exc::exc_base_t("All dump identifiers are reserved."));
}

} // namespace crash
