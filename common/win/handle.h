// Owning wrappers for platform handles: one template for "a value plus the
// function that closes it", and the kinds of handle derived from it.
#pragma once

#include "compat/win_types.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace win {

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
    void swap(unique_any_t& other) noexcept { std::swap(value_, other.value_); }

private:
    pointer value_;
};

// INVALID_HANDLE_VALUE: the same bit pattern on every platform.
inline HANDLE invalid_handle() noexcept {
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1));
}

// CloseHandle. False with last_error() set when the handle is not one.
bool close_handle(HANDLE handle) noexcept;

struct kernel_handle_traits {
    using pointer = HANDLE;
    static pointer invalid() noexcept { return nullptr; }
    static bool is_valid(pointer h) noexcept { return h != nullptr && h != invalid_handle(); }
    static void close(pointer h) noexcept { close_handle(h); }
};

// One kernel handle; null and INVALID_HANDLE_VALUE both mean none.
class win_handle_t : public unique_any_t<kernel_handle_traits> {
public:
    using unique_any_t::unique_any_t;
    // The handle; throws exc::runtime_exc_t when there is none.
    HANDLE handle() const;
};

using shared_handle_t = std::shared_ptr<win_handle_t>;

} // namespace win
