// The exception family: every failure is a stack of text lines, cause first.
#pragma once

#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace exc {

struct message_entry_t {
    std::string text;
    bool is_trace = false;
};

class exc_base_t : public std::exception {
public:
    exc_base_t() = default;
    explicit exc_base_t(const std::string& message);
    ~exc_base_t() override = default;

    const char* what() const noexcept override;
    virtual std::shared_ptr<exc_base_t> clone() const;
    [[noreturn]] virtual void rethrow() const;

    void append_message(const std::string& text);
    void append_message(const std::string& fmt, const std::string& a1);
    void append_message(const std::string& fmt, const std::string& a1, const std::string& a2);

    // Wrapping: the same object gets one more line; used only by rethrow_with_*.
    void append_entry(const std::string& text, bool is_trace);
    void merge_attributes(const exc_base_t& other);

    const std::vector<message_entry_t>& messages() const { return messages_; }
    const std::string& plain_text() const { return plain_text_; }

protected:
    void rebuild_text();

private:
    std::vector<message_entry_t> messages_;
    std::string full_text_;
    std::string plain_text_;
    std::map<std::string, std::string> attributes_;
    std::vector<std::string> attribute_order_;
};

class runtime_exc_t : public exc_base_t {
public:
    explicit runtime_exc_t(const std::string& message);
    runtime_exc_t(const std::string& fmt, const std::string& a1);
    runtime_exc_t(const std::string& fmt, const std::string& a1, const std::string& a2);
    std::shared_ptr<exc_base_t> clone() const override;
    [[noreturn]] void rethrow() const override;
    std::uint32_t code() const { return code_; }
    void set_code(std::uint32_t code) { code_ = code; }

private:
    std::uint32_t code_ = 0;
};

class win_sys_exc_t : public exc_base_t {
public:
    explicit win_sys_exc_t(std::uint32_t code);
    win_sys_exc_t(const std::string& message, std::uint32_t code);
    win_sys_exc_t(const std::string& fmt, const std::string& a1, std::uint32_t code);
    win_sys_exc_t(const std::string& fmt, const std::string& a1, const std::string& a2, std::uint32_t code);
    std::shared_ptr<exc_base_t> clone() const override;
    [[noreturn]] void rethrow() const override;
    std::uint32_t code() const { return code_; }

private:
    std::uint32_t code_;
};

class com_exc_t : public exc_base_t {
public:
    explicit com_exc_t(std::int32_t code);
    com_exc_t(std::int32_t code, const std::string& message);
    com_exc_t(std::int32_t code, const std::string& fmt, const std::string& a1);
    std::shared_ptr<exc_base_t> clone() const override;
    [[noreturn]] void rethrow() const override;
    std::int32_t code() const { return code_; }

private:
    std::int32_t code_;
};

class file_locked_exc_t : public exc_base_t {
public:
    explicit file_locked_exc_t(const std::string& file_name);
    ~file_locked_exc_t() override;
    std::shared_ptr<exc_base_t> clone() const override;
    // rethrow() deliberately stays the base one.
    const std::string& file_name() const { return file_name_; }

private:
    std::string file_name_;
};

// The text of a Win32 error code / an HRESULT, in the system's wording.
std::string sys_error_text(std::uint32_t code);
std::string com_error_text(std::int32_t code);

// The one thing a wrapping handler does: add a line to the caught exception and throw it on.
[[noreturn]] void rethrow_with_message(const std::string& text, const std::exception& cause);
[[noreturn]] void rethrow_with_message(const std::string& fmt, const std::string& a1,
                                       const std::exception& cause);
[[noreturn]] void rethrow_with_trace(const std::string& text, const std::exception& cause);
[[noreturn]] void rethrow_with_trace(const std::string& fmt, const std::string& a1,
                                     const std::exception& cause);
[[noreturn]] void rethrow_with_trace(const std::string& fmt, const std::string& a1, const std::string& a2,
                                     const std::exception& cause);
[[noreturn]] void rethrow_with_trace(const std::string& fmt, const std::string& a1, const std::string& a2,
                                     const std::string& a3, const std::exception& cause);

// Runs the work; a failure that leaves it gets the line text added on its way out.
template <class Work> decltype(auto) traced(const char* text, Work&& work) {
    try {
        return work();
    } catch (const std::exception& e) {
        rethrow_with_trace(text, e);
    }
}
// The same with a line of one argument, made before the work.
template <class Work> decltype(auto) traced(const char* fmt, const std::string& a1, Work&& work) {
    try {
        return work();
    } catch (const std::exception& e) {
        rethrow_with_trace(fmt, a1, e);
    }
}

// what() of any exception, or "Exception message is not available." when it is null.
std::string exception_text(const std::exception& e);

} // namespace exc
