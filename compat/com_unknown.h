// The root COM interface. On Windows the SDK's; elsewhere a declaration with the same
// table layout (QueryInterface, AddRef, Release), so that counted pointers and the
// VSS interfaces built on it look the same to the code above the seam.
#pragma once

#include "compat/win_types.h"

#ifndef _WIN32

struct IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

protected:
    // Objects are destroyed by their last Release, never through this interface.
    ~IUnknown() = default;
};

extern const IID IID_IUnknown;

#endif
