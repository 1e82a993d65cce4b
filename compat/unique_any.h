// One owner for "a value plus the function that releases it", and the kinds that
// the SDK's own calls hand out: a BSTR, task memory and, on Windows, LocalAlloc memory.
#pragma once

#include "compat/win_types.h"

#include <string>
#include <utility>

namespace compat {

// Traits: `pointer`, `invalid()`, `is_valid(p)` and `close(p)` (noexcept).
template <typename Traits> class unique_any_t {
public:
    using pointer = typename Traits::pointer;

    unique_any_t() noexcept : value_(Traits::invalid()) {}
    explicit unique_any_t(pointer value) noexcept : value_(value) {}
    ~unique_any_t() { reset(); }

    unique_any_t(const unique_any_t&) = delete;
    unique_any_t& operator=(const unique_any_t&) = delete;
    unique_any_t(unique_any_t&& other) noexcept : value_(other.release()) {}
    // Takes the other's value first, so that a self-move keeps the handle
    // and an owned handle is closed exactly once.
    unique_any_t& operator=(unique_any_t&& other) noexcept {
        reset(other.release());
        return *this;
    }

    void reset(pointer value = Traits::invalid()) noexcept {
        pointer old = std::exchange(value_, value);
        if (Traits::is_valid(old))
            Traits::close(old);
    }
    [[nodiscard]] pointer release() noexcept { return std::exchange(value_, Traits::invalid()); }
    pointer get() const noexcept { return value_; }
    bool valid() const noexcept { return Traits::is_valid(value_); }
    explicit operator bool() const noexcept { return valid(); }
    // For out-parameters: closes what is held, then hands out the slot.
    pointer* put() noexcept {
        reset();
        return &value_;
    }

private:
    pointer value_;
};

template <typename Pointer, auto Close> struct nullable_traits {
    using pointer = Pointer;
    static pointer invalid() noexcept { return nullptr; }
    static bool is_valid(pointer p) noexcept { return p != nullptr; }
    static void close(pointer p) noexcept { Close(p); }
};

inline void free_bstr(BSTR text) {
    SysFreeString(text);
}

class unique_bstr_t : public unique_any_t<nullable_traits<BSTR, &free_bstr>> {
public:
    using unique_any_t::unique_any_t;
    // A copy of the text, embedded zeros included; null when out of memory.
    static unique_bstr_t copy_of(const std::wstring& text) {
        return unique_bstr_t(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
    }
    // A null BSTR reads as the empty text.
    std::wstring text() const { return valid() ? std::wstring(get(), SysStringLen(get())) : std::wstring(); }
};

inline void free_task_memory(void* memory) {
    CoTaskMemFree(memory);
}
template <typename Pointer>
using unique_task_memory_t = unique_any_t<nullable_traits<Pointer, &free_task_memory>>;

#ifdef _WIN32
inline void free_local(void* memory) {
    ::LocalFree(memory);
}
// What FormatMessage and CommandLineToArgvW allocate.
template <typename Pointer> using unique_local_t = unique_any_t<nullable_traits<Pointer, &free_local>>;
#endif

} // namespace compat
