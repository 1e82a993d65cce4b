#include "vssutils/vss_exc.h"

#include "vssutils/vss_error_text.h"

namespace impl::vss {

void vss_exc_t::rethrow() const {
    throw *this;
}

std::shared_ptr<vss_exc_t> vss_exc_t::clone_vss() const {
    return std::make_shared<vss_exc_t>(*this);
}

} // namespace impl::vss

namespace VSSUtils {

void ThrowVssFailure(HRESULT hr, const std::string& words) {
    impl::vss::vss_exc_t failure;
    failure.append_message(words);
    failure.append_message(VssErrorText(hr));
    throw failure;
}

impl::vss::vss_exc_t VssErrorOnly(HRESULT hr) {
    impl::vss::vss_exc_t failure;
    failure.append_message(VssErrorText(hr));
    return failure;
}

} // namespace VSSUtils
