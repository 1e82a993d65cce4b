#include "common/logging/log_t.h"

#include "common/logging/line_layout.h"
#include "common/logging/log_file_receiver.h"
#include "common/logging/log_rotation.h"
#include "common/win/thread_id.h"

#include <ctime>

namespace logging {

log_t::log_t() = default;

namespace {

// A buffer that once held a huge message gives its storage back rather than keep it for good.
constexpr std::size_t kept_buffer_capacity = 0x10000;

} // namespace

void log_t::write(int level, std::int32_t indent, const format::line_format_t* format,
                  const std::string& message) {
    std::lock_guard<log_lock_t> guard(lock_);
    write_locked(level, indent, format, message);
}

void log_t::write_at_current_indent(int level, const format::line_format_t* format,
                                    const std::string& message) {
    std::lock_guard<log_lock_t> guard(lock_);
    write_locked(level, indent_locked(), format, message);
}

void log_t::write_locked(int level, std::int32_t indent, const format::line_format_t* format,
                         const std::string& message) {
    if (disabled_ != 0 || !receiver_ || format == nullptr)
        return;
    const std::time_t now = std::time(nullptr);
    if (now != stamp_moment_) {
        stamp_length_ = format::write_timestamp(now, stamp_text_);
        stamp_moment_ = now;
    }
    format::message_head_t head;
    head.timestamp = std::string_view(stamp_text_, stamp_length_);
    head.thread_id = win::current_thread_id();
    head.mode = format_mode_;
    head.prefix = format->prefix;
    head.eol = eol_;
    // One write per message: the lines of a message never mix with another thread's.
    format::assign_message_text(line_buffer_, head, level, indent, message);
    receiver_->write(line_buffer_);
    if (line_buffer_.capacity() > kept_buffer_capacity)
        std::string().swap(line_buffer_);
    if (size_check_ != 0)
        count_message_for_size_check();
}

void log_t::count_message_for_size_check() {
    if (++line_counter_ < messages_between_size_checks)
        return;
    line_counter_ = 0;
    try {
        receiver::check_log_size(receiver_);
    } catch (...) {
        // The log grows on; the next check tries again.
    }
}

void log_t::install(std::shared_ptr<receiver::log_file_t> receiver, bool size_check) {
    std::lock_guard<log_lock_t> guard(lock_);
    receiver_ = std::move(receiver);
    has_receiver_.store(receiver_ != nullptr, std::memory_order_release);
    eol_ = receiver_ ? receiver_->eol() : std::string();
    initialised_ = 1;
    size_check_ = size_check ? 1 : 0;
    line_counter_ = 0;
}

std::shared_ptr<receiver::log_file_t> log_t::receiver() const {
    std::lock_guard<log_lock_t> guard(lock_);
    return receiver_;
}

std::int32_t log_t::indent() const {
    std::lock_guard<log_lock_t> guard(lock_);
    return indent_locked();
}

std::int32_t log_t::indent_locked() const {
    const auto found = indents_.find(win::current_thread_id());
    return found == indents_.end() ? 0 : found->second;
}

void log_t::indent_in() {
    std::lock_guard<log_lock_t> guard(lock_);
    ++indents_[win::current_thread_id()];
}

void log_t::indent_out() {
    std::lock_guard<log_lock_t> guard(lock_);
    const auto found = indents_.find(win::current_thread_id());
    if (found != indents_.end() && --found->second <= 0)
        indents_.erase(found);
}

void log_t::forget_thread() {
    {
        std::lock_guard<log_lock_t> guard(lock_);
        indents_.erase(win::current_thread_id());
    }
    lock_.release_if_held();
}

std::shared_ptr<log_t> main_log() {
    static const std::shared_ptr<log_t> instance = std::make_shared<log_t>();
    return instance;
}

std::shared_ptr<log_t> debug_log() {
    static const std::shared_ptr<log_t> instance = std::make_shared<log_t>();
    return instance;
}

} // namespace logging
