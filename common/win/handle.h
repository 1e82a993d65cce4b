// Owning wrappers for platform handles: the kinds of handle derived from the one
// template for "a value plus the function that closes it".
#pragma once

#include "compat/unique_any.h"
#include "compat/win_types.h"

#include <cstdint>
#include <memory>

namespace win {

using compat::unique_any_t;

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
