// COM for the lifetime of a scope, and the process's COM security.
#pragma once

// Initialises COM on the calling thread and uninitialises it when the scope
// ends, also during unwinding. Throws com_exc_t "Cannot initialize COM runtime".
class CComRuntimeGuard {
public:
    CComRuntimeGuard();
    ~CComRuntimeGuard();
    CComRuntimeGuard(const CComRuntimeGuard&) = delete;
    CComRuntimeGuard& operator=(const CComRuntimeGuard&) = delete;
};

// A failure is logged and otherwise ignored: the process goes on with whatever
// security COM has.
void SetProcessComSecurity();
