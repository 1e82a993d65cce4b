// The process-wide context of the common library, made on first use and released at process exit.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

namespace io {
class CCoutMultiplexor;
}

namespace win {
class WinImpersonationTokensMap;
class impersonation_counters_t;
} // namespace win

class CCommonLibCtx {
public:
    static std::shared_ptr<CCommonLibCtx> get();

    CCommonLibCtx();
    ~CCommonLibCtx();
    CCommonLibCtx(const CCommonLibCtx&) = delete;
    CCommonLibCtx& operator=(const CCommonLibCtx&) = delete;

    // The lock under which the context's tables are read and changed.
    std::recursive_mutex& lock() { return lock_; }

    // The share tokens and the per-thread impersonation counters, used under lock().
    const std::shared_ptr<win::WinImpersonationTokensMap>& impersonation_tokens() const { return tokens_; }
    const std::shared_ptr<win::impersonation_counters_t>& impersonation_counters() const { return counters_; }

private:
    std::recursive_mutex lock_;
    std::shared_ptr<win::WinImpersonationTokensMap> tokens_;
    std::shared_ptr<win::impersonation_counters_t> counters_;
    std::vector<std::shared_ptr<io::CCoutMultiplexor>> cout_multiplexors_;
};
