#include "common/logging/win_log_file.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log_platform.h"
#include "common/logging/zip_writer.h"

#include <vector>

namespace win {

namespace {

constexpr DWORD copy_buffer_size = 0x100000;

shared_file_t open_for_appending(const std::string& path) {
    shared_file_t file;
    try {
        file = file_open(logging::platform::wide_log_path(path));
    } catch (const exc::win_sys_exc_t& e) {
        if (e.code() == ERROR_SHARING_VIOLATION || e.code() == ERROR_LOCK_VIOLATION)
            throw exc::file_locked_exc_t(path);
        throw;
    }
    file_seek(*file, 0, seek_method_t::end);
    return file;
}

} // namespace

win_log_file_t::win_log_file_t(const std::string& path) : path_(path), file_(open_for_appending(path)) {}

void win_log_file_t::write(const std::string& text) {
    try {
        const char* data = text.data();
        std::size_t left = text.size();
        while (left > 0) {
            const DWORD chunk = left > 0x40000000 ? 0x40000000 : static_cast<DWORD>(left);
            file_write(*file_, data, chunk);
            data += chunk;
            left -= chunk;
        }
        if (auto_flush_)
            file_flush(*file_);
    } catch (...) {
        // A full disk loses lines and nothing else.
    }
}

std::uint64_t win_log_file_t::size() {
    return file_size(*file_);
}

void win_log_file_t::compress(const std::shared_ptr<util::zip_writer_t>& writer) {
    try {
        file_seek(*file_, 0, seek_method_t::begin);
        std::vector<char> buffer(copy_buffer_size);
        for (;;) {
            const DWORD got = file_read(*file_, buffer.data(), copy_buffer_size);
            if (got == 0)
                break;
            writer->add(buffer.data(), got);
        }
        // The lines leave the log only once their archive is known to be whole.
        writer->close();
        file_set_size(*file_, 0);
        file_seek(*file_, 0, seek_method_t::begin);
    } catch (const std::exception& e) {
        restore_append_position();
        exc::rethrow_with_trace("Cannot compress log file. Log: [%1].", path_, e);
    }
}

void win_log_file_t::restore_append_position() noexcept {
    // After a copy that broke off, new lines must not overwrite the old ones.
    try {
        file_seek(*file_, 0, seek_method_t::end);
    } catch (...) {
    }
}

} // namespace win
