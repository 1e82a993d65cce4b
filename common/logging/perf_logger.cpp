#include "common/logging/perf_logger.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/win/file.h"
#include "common/win/folder.h"
#include "common/win/path.h"
#include "common/win/thread_id.h"

#include <chrono>

namespace logging::perf {

namespace {

std::int64_t performance_counter() {
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

void append_records(const std::wstring& path, const std::vector<perf_record_t>& records) {
    win::shared_file_t file = win::file_open(path);
    win::file_seek(*file, 0, win::seek_method_t::end);
    win::file_write(*file, records.data(), static_cast<DWORD>(records.size() * sizeof(perf_record_t)));
}

} // namespace

perf_logger_t::perf_logger_t() = default;

perf_logger_t::perf_logger_t(std::vector<std::uint32_t> enabled_table, std::wstring folder,
                             std::size_t buffer_records)
    : storage_(std::move(enabled_table)), folder_(std::move(folder)), capacity_(buffer_records) {
    if (!storage_.empty()) {
        table_ = storage_.data();
        table_words_ = storage_.size();
    }
    buffer_.reserve(capacity_);
}

void perf_logger_t::note(std::uint32_t code) noexcept {
    if (!enabled(code))
        return;
    bool full = false;
    try {
        std::lock_guard<std::mutex> guard(lock_);
        buffer_.push_back({code, win::current_thread_id(), performance_counter()});
        full = buffer_.size() >= capacity_;
    } catch (...) {
        return;
    }
    if (full)
        flush();
}

void perf_logger_t::flush() noexcept {
    std::vector<perf_record_t> records;
    {
        std::lock_guard<std::mutex> guard(lock_);
        records.swap(buffer_);
    }
    // Written outside the lock: the write is itself a file operation that may be timed.
    if (records.empty())
        return;
    const logger_t& h = lib_logger();
    try {
        try {
            win::create_folder(folder_);
        } catch (const std::exception& e) {
            log_exception(h, "Performance logger failed to create directory.", e);
            return;
        }
        try {
            append_records(file_path(), records);
        } catch (const std::exception& e) {
            log_exception(
                h, "Unable to flush performance log data. Perflog buffer will be erased, data will be lost.",
                e);
        }
    } catch (...) {
    }
}

std::size_t perf_logger_t::buffered() const {
    std::lock_guard<std::mutex> guard(lock_);
    return buffer_.size();
}

std::wstring perf_logger_t::file_path() const {
    return win::path_join(folder_, L"perflog.bin");
}

} // namespace logging::perf
