#include "snapshot/worker_com.h"

#include "common/exc/exc.h"
#include "compat/win_types.h"

namespace impl {

void InitializeWorkerCom() {
    const HRESULT result = ::CoInitialize(nullptr);
    if (FAILED(result))
        throw exc::com_exc_t(result, "Cannot initialize COM runtime");
}

void UninitializeWorkerCom() noexcept {
    ::CoUninitialize();
}

} // namespace impl
