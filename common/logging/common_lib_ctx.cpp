#include "common/logging/common_lib_ctx.h"

#include "common/logging/log.h"

std::shared_ptr<CCommonLibCtx> CCommonLibCtx::get() {
    // The log handle is made first, so that it is still there when the context ends.
    static const std::shared_ptr<CCommonLibCtx> instance = [] {
        logging::lib_logger();
        return std::make_shared<CCommonLibCtx>();
    }();
    return instance;
}

CCommonLibCtx::CCommonLibCtx() = default;

CCommonLibCtx::~CCommonLibCtx() {
    try {
        log_info(logging::lib_logger(), "Clearing collection of cout multiplexors.");
        cout_multiplexors_.clear();
    } catch (...) {
    }
}
