// The logger behind every handle: one lock around formatting, writing and the size check.
#pragma once

#include "common/logging/line_layout.h"
#include "common/logging/log.h"
#include "common/logging/log_lock.h"

#include <atomic>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <unordered_map>

namespace logging {

namespace receiver {
class log_file_t;
}

constexpr int level_trace = 1;
constexpr int level_info = 2;
constexpr int level_warning = 3;
constexpr int level_error = 4;

// Messages between two looks at the size of the log file.
constexpr std::int32_t messages_between_size_checks = 1000;

class log_t {
public:
    log_t();
    log_t(const log_t&) = delete;
    log_t& operator=(const log_t&) = delete;

    // The one entry under all log calls. Writes nothing before a receiver is installed.
    void write(int level, std::int32_t indent, const format::line_format_t* format,
               const std::string& message);
    // The same at the calling thread's indent depth, looked up under the same lock.
    void write_at_current_indent(int level, const format::line_format_t* format, const std::string& message);

    // From here on lines go to the receiver; with size_check the file is kept under its limit.
    void install(std::shared_ptr<receiver::log_file_t> receiver, bool size_check);
    std::shared_ptr<receiver::log_file_t> receiver() const;
    // Whether lines go anywhere yet: a caller with megabytes to put into a line asks first, without
    // the lock that every writer takes.
    bool has_receiver() const noexcept { return has_receiver_.load(std::memory_order_acquire); }

    // The calling thread's indent depth in this log; it never goes below 0.
    std::int32_t indent() const;
    void indent_in();
    void indent_out();

    // Forgets what the calling thread left: a thread abandoned by the crash frame never left its
    // blocks, nor the write it stood in, and every later line must still go out.
    void forget_thread();

private:
    void write_locked(int level, std::int32_t indent, const format::line_format_t* format,
                      const std::string& message);
    std::int32_t indent_locked() const;
    void count_message_for_size_check();

    mutable log_lock_t lock_;
    std::shared_ptr<receiver::log_file_t> receiver_;
    std::atomic<bool> has_receiver_{false};
    // Only threads that stand indented have an entry: nothing is left behind by a thread that ends at
    // the margin, and nothing depends on thread-local storage, which is gone before the last lines
    // of process exit.
    std::unordered_map<std::uint32_t, std::int32_t> indents_;
    std::uint8_t initialised_ = 0;
    std::uint32_t format_mode_ = 0;
    std::uint8_t disabled_ = 0;
    std::uint8_t size_check_ = 0;
    std::int32_t line_counter_ = 0;
    // The time stamp changes once a second; it is made anew only then.
    std::time_t stamp_moment_ = -1;
    char stamp_text_[format::timestamp_capacity] = {};
    std::size_t stamp_length_ = 0;
    std::string eol_;
    // The text of the message being written: formatting happens under the lock anyway, so one
    // buffer reused by every writer spares an allocation per message. Thread-local storage would
    // not do: it is gone before the last lines of process exit.
    std::string line_buffer_;
};

// The process-wide log of the tool, and the second one that serves the debug receiver.
std::shared_ptr<log_t> main_log();
std::shared_ptr<log_t> debug_log();

} // namespace logging
