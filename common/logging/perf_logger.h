// Timing of file operations: an operation asks whether its code is enabled, and
// if so leaves a record (code, thread, stamp) in a buffer that goes to a binary
// file when full. The process's table of enabled codes is empty, so the question
// is a cheap test of a null table and nothing is ever recorded.
#pragma once

#include "common/win/file.h"
#include "compat/win_types.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace logging::perf {

inline constexpr std::size_t default_buffer_records = 4096;

struct perf_record_t {
    std::uint32_t code;
    std::uint32_t thread_id;
    std::int64_t stamp; // QueryPerformanceCounter ticks
};

class perf_logger_t {
public:
    // No table: nothing is enabled. The log file goes into folder, which is made when first needed.
    perf_logger_t();
    perf_logger_t(std::vector<std::uint32_t> enabled_table, std::wstring folder,
                  std::size_t buffer_records = default_buffer_records);
    // What is still buffered goes to the file.
    ~perf_logger_t() { flush(); }
    perf_logger_t(const perf_logger_t&) = delete;
    perf_logger_t& operator=(const perf_logger_t&) = delete;

    // The codes are win::file_op's: the word of the table is code >> 8, the bit code & 31.
    bool enabled(std::uint32_t code) const noexcept {
        const std::size_t word = code >> 8;
        return table_ != nullptr && word < table_words_ && (table_[word] & (1u << (code & 31))) != 0;
    }
    // A record for an enabled code; a full buffer is flushed. Never throws.
    void note(std::uint32_t code) noexcept;
    // Appends the records to the log file and empties the buffer, also when that fails.
    void flush() noexcept;
    std::size_t buffered() const;
    // The file the records go to.
    std::wstring file_path() const;

private:
    std::vector<std::uint32_t> storage_;
    const std::uint32_t* table_ = nullptr;
    std::size_t table_words_ = 0;
    std::wstring folder_;
    std::size_t capacity_ = default_buffer_records;
    mutable std::mutex lock_;
    std::vector<perf_record_t> buffer_;
};

// The process's logger, with its empty table. Inline: every file operation asks it.
inline perf_logger_t& perf_logger() {
    static perf_logger_t logger;
    return logger;
}

// What a file operation asks before it starts (the library context installs it as the observer of files).
inline void note_file_operation(std::uint32_t code) noexcept {
    perf_logger_t& logger = perf_logger();
    if (logger.enabled(code))
        logger.note(code);
}

} // namespace logging::perf
