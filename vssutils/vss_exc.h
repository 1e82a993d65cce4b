// The exception of the VSS layer: the words of the failing step, then the VSS error text.
#pragma once

#include "common/exc/exc.h"
#include "compat/win_types.h"

#include <cstdint>
#include <memory>
#include <string>

namespace impl::vss {

class vss_exc_t : public exc::exc_base_t {
public:
    vss_exc_t() = default;
    ~vss_exc_t() override = default;

    // clone() stays the base one on purpose: a clone made through it is a plain exc_base_t.
    [[noreturn]] void rethrow() const override;
    virtual std::shared_ptr<vss_exc_t> clone_vss() const;

private:
    // Travels with every copy; nothing sets or reads it.
    [[maybe_unused]] std::uint32_t reserved_ = 0;
};

} // namespace impl::vss

namespace VSSUtils {

// The failure of a VSS call: the step's words, then VssErrorText of the HRESULT.
[[noreturn]] void ThrowVssFailure(HRESULT hr, const std::string& words);

// Throws ThrowVssFailure for an HRESULT below zero; warnings count as success.
inline void CheckVss(HRESULT hr, const std::string& words) {
    if (hr < 0)
        ThrowVssFailure(hr, words);
}

// An exception holding only the VSS error text of hr, for logging without throwing.
impl::vss::vss_exc_t VssErrorOnly(HRESULT hr);

} // namespace VSSUtils
