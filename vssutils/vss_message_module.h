// The module that holds VSS's message texts, loaded for one lookup and freed with the object.
#pragma once

#include "compat/win_types.h"

#include <optional>
#include <string>

namespace VSSUtils::detail {

class message_module_t {
public:
    explicit message_module_t(const char* name);
    ~message_module_t();
    message_module_t(const message_module_t&) = delete;
    message_module_t& operator=(const message_module_t&) = delete;

    bool loaded() const { return handle_ != nullptr; }
    // The system error of the failed load.
    DWORD load_error() const { return load_error_; }

    // The message text as the module holds it (US English, inserts untouched), or nullopt with
    // the system error in `error`.
    std::optional<std::string> message(DWORD message_id, DWORD& error) const;

private:
    void* handle_ = nullptr;
    DWORD load_error_ = 0;
};

} // namespace VSSUtils::detail
