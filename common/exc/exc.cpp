// The exception family: a stack of lines, cause first, rebuilt into one text at every change.
#include "common/exc/exc.h"

#include "common/exc/error_text_os.h"
#include "common/format/format.h"

namespace exc {

namespace {
const char* const trace_tag = "--tr:";
} // namespace

exc_base_t::exc_base_t(const std::string& message) {
    append_message(message);
}

const char* exc_base_t::what() const noexcept {
    return full_text_.c_str();
}

std::shared_ptr<exc_base_t> exc_base_t::clone() const {
    return std::make_shared<exc_base_t>(*this);
}

// Throws the base part only: a subclass that keeps this (file_locked_exc_t) loses its type here.
void exc_base_t::rethrow() const {
    throw exc_base_t(*this);
}

void exc_base_t::append_message(const std::string& text) {
    append_entry(text, false);
}

void exc_base_t::append_message(const std::string& fmt, const std::string& a1) {
    append_entry(format_message(fmt, a1), false);
}

void exc_base_t::append_message(const std::string& fmt, const std::string& a1, const std::string& a2) {
    append_entry(format_message(fmt, a1, a2), false);
}

void exc_base_t::append_entry(const std::string& text, bool is_trace) {
    messages_.push_back(message_entry_t{text, is_trace});
    rebuild_text();
}

void exc_base_t::merge_attributes(const exc_base_t& other) {
    for (const auto& key : other.attribute_order_) {
        if (attributes_.count(key) != 0)
            continue;
        attributes_.emplace(key, other.attributes_.at(key));
        attribute_order_.push_back(key);
    }
}

void exc_base_t::rebuild_text() {
    full_text_.clear();
    plain_text_.clear();
    for (std::size_t i = 0; i < messages_.size(); ++i) {
        if (i != 0) {
            full_text_ += '\n';
            plain_text_ += '\n';
        }
        const message_entry_t& entry = messages_[i];
        plain_text_ += entry.text;
        if (entry.is_trace)
            full_text_ += trace_tag;
        full_text_ += entry.text;
    }
}

runtime_exc_t::runtime_exc_t(const std::string& message) : exc_base_t(message) {}

runtime_exc_t::runtime_exc_t(const std::string& fmt, const std::string& a1)
    : exc_base_t(format_message(fmt, a1)) {}

runtime_exc_t::runtime_exc_t(const std::string& fmt, const std::string& a1, const std::string& a2)
    : exc_base_t(format_message(fmt, a1, a2)) {}

std::shared_ptr<exc_base_t> runtime_exc_t::clone() const {
    return std::make_shared<runtime_exc_t>(*this);
}

void runtime_exc_t::rethrow() const {
    throw *this;
}

win_sys_exc_t::win_sys_exc_t(std::uint32_t code) : exc_base_t(sys_error_text(code)), code_(code) {}

win_sys_exc_t::win_sys_exc_t(const std::string& message, std::uint32_t code) : win_sys_exc_t(code) {
    append_message(message);
}

win_sys_exc_t::win_sys_exc_t(const std::string& fmt, const std::string& a1, std::uint32_t code)
    : win_sys_exc_t(code) {
    append_message(fmt, a1);
}

win_sys_exc_t::win_sys_exc_t(const std::string& fmt, const std::string& a1, const std::string& a2,
                             std::uint32_t code)
    : win_sys_exc_t(code) {
    append_message(fmt, a1, a2);
}

std::shared_ptr<exc_base_t> win_sys_exc_t::clone() const {
    return std::make_shared<win_sys_exc_t>(*this);
}

void win_sys_exc_t::rethrow() const {
    throw *this;
}

// com_error_text has already consumed the thread's error object; the second look is kept
// because a description set in between would otherwise be lost.
com_exc_t::com_exc_t(std::int32_t code) : exc_base_t(com_error_text(code)), code_(code) {
    if (auto description = thread_error_description())
        append_message(*description);
}

com_exc_t::com_exc_t(std::int32_t code, const std::string& message) : com_exc_t(code) {
    append_message(message);
}

com_exc_t::com_exc_t(std::int32_t code, const std::string& fmt, const std::string& a1) : com_exc_t(code) {
    append_message(fmt, a1);
}

std::shared_ptr<exc_base_t> com_exc_t::clone() const {
    return std::make_shared<com_exc_t>(*this);
}

void com_exc_t::rethrow() const {
    throw *this;
}

file_locked_exc_t::file_locked_exc_t(const std::string& file_name)
    : exc_base_t(format_message("File [%1] is locked.", file_name)), file_name_(file_name) {}

file_locked_exc_t::~file_locked_exc_t() = default;

std::shared_ptr<exc_base_t> file_locked_exc_t::clone() const {
    return std::make_shared<file_locked_exc_t>(*this);
}

} // namespace exc
