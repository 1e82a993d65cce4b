#include "common/runtime/common_lib_ctx.h"

#include "common/logging/log.h"
#include "common/logging/perf_logger.h"
#include "common/runtime/impersonation.h"
#include "common/win/file.h"

std::shared_ptr<CCommonLibCtx> CCommonLibCtx::get() {
    // The log handle is made first, so that it is still there when the context ends.
    static const std::shared_ptr<CCommonLibCtx> instance = [] {
        logging::lib_logger();
        return std::make_shared<CCommonLibCtx>();
    }();
    return instance;
}

CCommonLibCtx::CCommonLibCtx()
    : tokens_(std::make_shared<win::WinImpersonationTokensMap>()),
      counters_(std::make_shared<win::impersonation_counters_t>()) {
    // From now on files are opened under the impersonation scope of their path.
    win::set_impersonation_provider(static_cast<win::impersonation_provider_t>(&win::impersonate_for));
    win::set_file_operation_observer(&logging::perf::note_file_operation);
}

CCommonLibCtx::~CCommonLibCtx() {
    win::set_impersonation_provider(nullptr);
    win::set_file_operation_observer(nullptr);
    try {
        log_info(logging::lib_logger(), "Clearing collection of cout multiplexors.");
        cout_multiplexors_.clear();
    } catch (...) {
    }
}
