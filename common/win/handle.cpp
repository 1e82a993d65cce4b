#include "common/win/handle.h"

#include "common/exc/exc.h"

namespace win {

HANDLE win_handle_t::handle() const {
    if (!valid())
        throw exc::runtime_exc_t("Handle object is not initialized.");
    return get();
}

} // namespace win
