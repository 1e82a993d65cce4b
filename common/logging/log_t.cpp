#include "common/logging/log_t.h"

#include "common/logging/line_layout.h"
#include "common/logging/log_file_receiver.h"
#include "common/logging/log_rotation.h"
#include "common/win/thread_id.h"

#include <ctime>

namespace logging {

log_t::log_t() = default;

void log_t::write(int level, std::int32_t indent, const format::line_format_t* format,
                  const std::string& message) {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    if (disabled_ != 0 || !receiver_ || format == nullptr)
        return;
    const std::time_t now = std::time(nullptr);
    if (now != stamp_moment_) {
        stamp_text_ = format::timestamp_text(now);
        stamp_moment_ = now;
    }
    const std::string eol = receiver_->eol();
    format::message_head_t head;
    head.timestamp = stamp_text_;
    head.thread_id = win::current_thread_id();
    head.mode = format_mode_;
    head.prefix = format->prefix;
    head.eol = eol;
    // One write per message: the lines of a message never mix with another thread's.
    receiver_->write(format::message_text(head, level, indent, message));
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
    std::lock_guard<std::recursive_mutex> guard(lock_);
    receiver_ = std::move(receiver);
    initialised_ = 1;
    size_check_ = size_check ? 1 : 0;
    line_counter_ = 0;
}

std::shared_ptr<receiver::log_file_t> log_t::receiver() const {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    return receiver_;
}

std::int32_t log_t::indent() const {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    const auto found = indents_.find(win::current_thread_id());
    return found == indents_.end() ? 0 : found->second;
}

void log_t::indent_in() {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    ++indents_[win::current_thread_id()];
}

void log_t::indent_out() {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    const auto found = indents_.find(win::current_thread_id());
    if (found != indents_.end() && --found->second <= 0)
        indents_.erase(found);
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
