// The process-wide context of the common library, made on first use and released at process exit.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

namespace io {
class CCoutMultiplexor;
}

class CCommonLibCtx {
public:
    static std::shared_ptr<CCommonLibCtx> get();

    CCommonLibCtx();
    ~CCommonLibCtx();
    CCommonLibCtx(const CCommonLibCtx&) = delete;
    CCommonLibCtx& operator=(const CCommonLibCtx&) = delete;

    // The lock under which the context's tables are read and changed.
    std::recursive_mutex& lock() { return lock_; }

private:
    std::recursive_mutex lock_;
    // The impersonation token map and the per-thread impersonation counters belong here, first in
    // construction order; they come with the impersonation scopes of the file operations.
    std::vector<std::shared_ptr<io::CCoutMultiplexor>> cout_multiplexors_;
};
