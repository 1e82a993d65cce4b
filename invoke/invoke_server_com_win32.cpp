#include "invoke/invoke_server_com.h"

#include "common/exc/exc.h"
#include "compat/win_types.h"

namespace wrap {

CRequestComScope::CRequestComScope() {
    const HRESULT result = ::CoInitialize(nullptr);
    if (FAILED(result))
        throw exc::com_exc_t(result, "Cannot initialize COM runtime");
}

CRequestComScope::~CRequestComScope() {
    ::CoUninitialize();
}

} // namespace wrap
