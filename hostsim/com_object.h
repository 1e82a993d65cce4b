// Reference counting and QueryInterface for the simulator's COM objects. An object is
// made with one reference, which its creator hands out; the last Release deletes it.
#pragma once

#include "compat/com_unknown.h"

#include <atomic>

namespace hostsim {

template <class Interface> class com_object_t : public Interface {
public:
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }

    ULONG STDMETHODCALLTYPE Release() override {
        ULONG left = --references_;
        if (left == 0)
            delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        if (!object)
            return E_POINTER;
        *object = nullptr;
        if (riid != IID_IUnknown && !answers_to(riid))
            return E_NOINTERFACE;
        *object = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }

protected:
    com_object_t() = default;
    virtual ~com_object_t() = default;

    // The interface ids, besides IUnknown, that this object gives itself out for.
    virtual bool answers_to(REFIID) const { return false; }

private:
    std::atomic<ULONG> references_{1};
};

} // namespace hostsim
