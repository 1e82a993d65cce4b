// A counted COM pointer: holds one reference to an interface, AddRef on copy, Release on
// destruction. The same template serves the SDK's interfaces and the simulated ones.
#pragma once

#include "compat/com_unknown.h"

#include <utility>

namespace compat {

template <class T> class com_ptr_t {
public:
    com_ptr_t() noexcept = default;
    com_ptr_t(std::nullptr_t) noexcept {}

    // Takes a new reference to p.
    explicit com_ptr_t(T* p) noexcept : p_(p) {
        if (p_)
            p_->AddRef();
    }

    com_ptr_t(const com_ptr_t& other) noexcept : com_ptr_t(other.p_) {}
    com_ptr_t(com_ptr_t&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}

    com_ptr_t& operator=(const com_ptr_t& other) noexcept {
        com_ptr_t(other).swap(*this);
        return *this;
    }
    com_ptr_t& operator=(com_ptr_t&& other) noexcept {
        com_ptr_t(std::move(other)).swap(*this);
        return *this;
    }

    ~com_ptr_t() { reset(); }

    // Gives up the reference without releasing it.
    T* detach() noexcept { return std::exchange(p_, nullptr); }

    void reset() noexcept {
        if (T* p = std::exchange(p_, nullptr))
            p->Release();
    }

    // For out-parameters: drops the current reference first, so that a reused pointer
    // never leaks the object it held.
    T** put() noexcept {
        reset();
        return &p_;
    }

    T* get() const noexcept { return p_; }
    T* operator->() const noexcept { return p_; }
    T& operator*() const noexcept { return *p_; }
    explicit operator bool() const noexcept { return p_ != nullptr; }

    void swap(com_ptr_t& other) noexcept { std::swap(p_, other.p_); }

    // QueryInterface for another interface of the same object.
    template <class U> HRESULT query(REFIID iid, com_ptr_t<U>& out) const noexcept {
        return p_->QueryInterface(iid, reinterpret_cast<void**>(out.put()));
    }

    friend bool operator==(const com_ptr_t& a, const com_ptr_t& b) noexcept { return a.p_ == b.p_; }
    friend bool operator==(const com_ptr_t& a, std::nullptr_t) noexcept { return a.p_ == nullptr; }

private:
    T* p_ = nullptr;
};

} // namespace compat
