#include "common/format/format.h"
#include "common/win/errno_posix.h"
#include "common/win/file_system_os.h"
#include "common/win/handle.h"
#include "common/win/local_path.h"
#include "common/win/native_name_posix.h"
#include "common/win/path.h"
#include "hostsim/host_access.h"

#include <cerrno>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace win::detail {

namespace {

struct dir_traits {
    using pointer = DIR*;
    static pointer invalid() noexcept { return nullptr; }
    static bool is_valid(pointer d) noexcept { return d != nullptr; }
    static void close(pointer d) noexcept { ::closedir(d); }
};
using unique_dir_t = unique_any_t<dir_traits>;

constexpr std::uint64_t filetime_unix_epoch = 116444736000000000ULL; // 1970-01-01 in 100 ns since 1601

std::uint64_t filetime_of(const struct timespec& t) {
    return filetime_unix_epoch + static_cast<std::uint64_t>(t.tv_sec) * 10000000ULL +
           static_cast<std::uint64_t>(t.tv_nsec) / 100;
}

void fill_from_stat(const struct stat& st, find_data_t& entry) {
    entry.attributes = S_ISDIR(st.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
    entry.size = S_ISDIR(st.st_mode) ? 0 : static_cast<std::uint64_t>(st.st_size);
    entry.last_write_time = filetime_of(st.st_mtim);
}

bool has_wildcards(const std::wstring& mask) {
    return mask.find_first_of(L"*?") != std::wstring::npos;
}

} // namespace

struct os_search_t::state_t {
    std::wstring pattern;
    std::wstring mask;
    unique_dir_t dir;
    bool single = false;   // an exact name was found: nothing follows
    bool give_dot = false; // "." and ".." of a folder that is not a root
    bool give_dot_dot = false;
    find_data_t folder_entry; // what "." and ".." report

    bool fill(const char* native_name, const std::wstring& name, find_data_t& entry) {
        struct stat st {};
        if (::fstatat(::dirfd(dir.get()), native_name, &st, 0) != 0 &&
            ::fstatat(::dirfd(dir.get()), native_name, &st, AT_SYMLINK_NOFOLLOW) != 0)
            return false; // gone meanwhile
        entry.name = name;
        fill_from_stat(st, entry);
        return true;
    }

    DWORD next_dot(find_data_t& entry) {
        entry = folder_entry;
        entry.name = give_dot ? L"." : L"..";
        (give_dot ? give_dot : give_dot_dot) = false;
        return ERROR_SUCCESS;
    }

    DWORD next_listed(find_data_t& entry) {
        for (;;) {
            errno = 0;
            const dirent* d = ::readdir(dir.get());
            if (d == nullptr)
                return errno == 0 ? ERROR_NO_MORE_FILES : win32_error_from_errno(errno);
            if (std::strcmp(d->d_name, ".") == 0 || std::strcmp(d->d_name, "..") == 0)
                continue;
            const std::wstring name = wide_from_native_name(d->d_name);
            if (mask_matches(mask, name) && fill(d->d_name, name, entry))
                return ERROR_SUCCESS;
        }
    }

    DWORD next(find_data_t& entry) {
        if (!dir.valid() || single)
            return ERROR_NO_MORE_FILES;
        if (give_dot || give_dot_dot)
            return next_dot(entry);
        return next_listed(entry);
    }
};

os_search_t::os_search_t() : state_(std::make_unique<state_t>()) {}
os_search_t::~os_search_t() = default;

DWORD os_search_t::first(const std::wstring& pattern, find_data_t& entry) {
    close();
    state_->pattern = pattern;
    if (auto fault = hostsim::win32_call("FindFirstFileW", pattern))
        return *fault;
    const std::size_t cut = pattern.find_last_of(L"\\/");
    if (cut == std::wstring::npos)
        return ERROR_PATH_NOT_FOUND;
    const std::wstring folder = pattern.substr(0, cut + 1);
    state_->mask = pattern.substr(cut + 1);
    if (state_->mask.empty())
        return ERROR_FILE_NOT_FOUND;
    const auto local = local_path(folder);
    if (!local)
        return ERROR_PATH_NOT_FOUND;
    state_->dir.reset(::opendir(local->c_str()));
    if (!state_->dir.valid()) {
        const int error = errno;
        // A search in a file, as in a folder: Windows says that the folder's name is invalid.
        constexpr DWORD error_directory = 267;
        std::string named = local->string();
        while (named.size() > 1 && named.back() == '/')
            named.pop_back();
        struct stat st {};
        if (error == ENOTDIR && ::stat(named.c_str(), &st) == 0 && !S_ISDIR(st.st_mode))
            return error_directory;
        return error == ENOENT ? ERROR_PATH_NOT_FOUND : win32_error_from_errno(error);
    }

    if (!has_wildcards(state_->mask)) {
        // The exact name first, by its bytes; the scan below finds it in another case.
        const std::string native = native_name_bytes(state_->mask);
        if (!native.empty() && state_->fill(native.c_str(), state_->mask, entry)) {
            state_->single = true;
            return ERROR_SUCCESS;
        }
    } else if (!is_root_path(folder)) {
        struct stat st {};
        if (::fstat(::dirfd(state_->dir.get()), &st) == 0) {
            fill_from_stat(st, state_->folder_entry);
            state_->give_dot = mask_matches(state_->mask, L".");
            state_->give_dot_dot = mask_matches(state_->mask, L"..");
        }
    }
    const DWORD error = state_->next(entry);
    if (error == ERROR_NO_MORE_FILES) {
        close();
        return ERROR_FILE_NOT_FOUND;
    }
    if (error != ERROR_SUCCESS)
        close();
    return error;
}

DWORD os_search_t::next(find_data_t& entry) {
    if (auto fault = hostsim::win32_call("FindNextFileW", state_->pattern))
        return *fault;
    return state_->next(entry);
}

void os_search_t::close() noexcept {
    state_->dir.reset();
    state_->single = false;
    state_->give_dot = false;
    state_->give_dot_dot = false;
}

bool os_path_file_exists(const std::wstring& path) {
    if (hostsim::win32_call("PathFileExistsW", path))
        return false;
    const auto local = local_path(path);
    struct stat st {};
    return local && ::stat(local->c_str(), &st) == 0;
}

DWORD os_create_directory(const std::wstring& path) {
    if (auto fault = hostsim::win32_call("CreateDirectoryW", path))
        return *fault;
    const auto local = local_path(path);
    if (!local)
        return ERROR_PATH_NOT_FOUND;
    if (::mkdir(local->c_str(), 0777) == 0)
        return ERROR_SUCCESS;
    return errno == ENOENT ? ERROR_PATH_NOT_FOUND : win32_error_from_errno(errno);
}

} // namespace win::detail
