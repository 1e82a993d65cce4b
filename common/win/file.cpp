#include "common/win/file.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/win/file_os.h"
#include "common/win/last_error.h"

#include <atomic>

namespace win {

namespace {

std::atomic<impersonation_provider_t> g_impersonation_provider{nullptr};
std::atomic<file_operation_observer_t> g_file_operation_observer{nullptr};

void tell_observer(std::uint32_t code) noexcept {
    if (file_operation_observer_t observer = g_file_operation_observer.load(std::memory_order_acquire))
        observer(code);
}

std::string seek_method_name(seek_method_t method) {
    switch (method) {
    case seek_method_t::begin:
        return "FILE_BEGIN";
    case seek_method_t::current:
        return "FILE_CURRENT";
    case seek_method_t::end:
        return "FILE_END";
    }
    return num_to_string(static_cast<std::uint64_t>(method));
}

// The sign goes in front afterwards: the Windows compiler misreads "-" + text as an overlapping copy.
std::string signed_text(std::int64_t value) {
    const std::uint64_t magnitude = value < 0
                                        ? static_cast<std::uint64_t>(0) - static_cast<std::uint64_t>(value)
                                        : static_cast<std::uint64_t>(value);
    std::string text = num_to_string(magnitude);
    if (value < 0)
        text.insert(text.begin(), '-');
    return text;
}

} // namespace

void set_impersonation_provider(impersonation_provider_t provider) noexcept {
    g_impersonation_provider.store(provider);
}

void set_file_operation_observer(file_operation_observer_t observer) noexcept {
    g_file_operation_observer.store(observer, std::memory_order_release);
}

shared_file_t file_open(const std::wstring& path) {
    auto file = std::make_shared<win_file_t>();
    file->path = path;
    if (impersonation_provider_t provider = g_impersonation_provider.load())
        file->impersonation = provider(path);
    HANDLE handle = nullptr;
    throw_if_failed(detail::os_open_file(path, handle), "Failed to create or open file [%1].", path);
    file->handle = std::make_shared<win_handle_t>(handle);
    return file;
}

DWORD file_write(win_file_t& file, const void* buffer, DWORD length) {
    tell_observer(file_op::write);
    DWORD written = 0;
    throw_if_failed(detail::os_write_file(file.handle->handle(), buffer, length, written),
                    "Failed to write data to the file [%1].", file.path);
    return written;
}

DWORD file_read(win_file_t& file, void* buffer, DWORD length) {
    tell_observer(file_op::read);
    DWORD read = 0;
    throw_if_failed(detail::os_read_file(file.handle->handle(), buffer, length, read),
                    "Failed to read data from the file [%1].", file.path);
    return read;
}

std::uint64_t file_size(win_file_t& file) {
    std::uint64_t size = 0;
    throw_if_failed(detail::os_file_size(file.handle->handle(), size),
                    "WINAPI: Cannot get file size. File: [%1].", file.path);
    return size;
}

std::uint64_t file_seek(win_file_t& file, std::int64_t offset, seek_method_t method) {
    tell_observer(file_op::seek);
    std::uint64_t position = 0;
    const DWORD error =
        detail::os_set_file_pointer(file.handle->handle(), offset, static_cast<DWORD>(method), position);
    if (error != ERROR_SUCCESS) {
        const std::string text = format_message(
            "Seek operation has failed. File: [%1]. Distance to move: [%2]. Move method: [%3].",
            to_ansi_nothrow(file.path), signed_text(offset), seek_method_name(method));
        throw exc::win_sys_exc_t(text, error);
    }
    return position;
}

void file_set_size(win_file_t& file, std::uint64_t size) {
    tell_observer(file_op::set_size);
    std::uint64_t position = 0;
    const DWORD error = detail::os_set_file_pointer(file.handle->handle(), static_cast<std::int64_t>(size),
                                                    static_cast<DWORD>(seek_method_t::begin), position);
    if (error != ERROR_SUCCESS)
        throw exc::win_sys_exc_t(
            "Unable to reset file size: move operation has failed. Specified file size: [%1]. File: [%2].",
            num_to_string(size), to_ansi_nothrow(file.path), error);
    throw_if_failed(detail::os_set_end_of_file(file.handle->handle()),
                    "Unable to reset file size: trunk operation has failed. File: [%1].", file.path);
}

void file_flush(win_file_t& file) {
    tell_observer(file_op::flush);
    throw_if_failed(detail::os_flush_file(file.handle->handle()), "Failed to flush file buffers. File: [%1].",
                    file.path);
}

} // namespace win
