// One BSTR that the platform hands out: freed with SysFreeString when the holder goes, on every path.
#pragma once

#include "compat/win_types.h"

#include <string>

namespace VSSUtils {

class bstr_holder_t {
public:
    bstr_holder_t() = default;
    explicit bstr_holder_t(BSTR value) : value_(value) {}
    ~bstr_holder_t() { SysFreeString(value_); }
    bstr_holder_t(const bstr_holder_t&) = delete;
    bstr_holder_t& operator=(const bstr_holder_t&) = delete;

    // For an out-argument: frees what was held first.
    BSTR* out() {
        SysFreeString(value_);
        value_ = nullptr;
        return &value_;
    }
    BSTR get() const { return value_; }
    bool empty() const { return value_ == nullptr; }
    // A null BSTR reads as an empty text.
    std::wstring text() const { return value_ ? std::wstring(value_, SysStringLen(value_)) : std::wstring(); }

private:
    BSTR value_ = nullptr;
};

} // namespace VSSUtils
