// File operations on a network share under another account: a process-wide map
// from share to access token, and a scope that impersonates the token on the
// calling thread for as long as an operation on such a path lasts. Nested scopes
// on one thread revert only when the outermost ends.
#pragma once

#include "common/win/handle.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace win {

// The token calls of the platform; tests put a fake in their place.
class token_calls_t {
public:
    virtual ~token_calls_t() = default;
    // DuplicateToken with SecurityImpersonation: the duplicate, or null with last_error() set.
    virtual HANDLE duplicate_token(HANDLE token) = 0;
    // ImpersonateLoggedOnUser: false with last_error() set.
    virtual bool impersonate_logged_on_user(HANDLE token) = 0;
    // RevertToSelf: false with last_error() set.
    virtual bool revert_to_self() = 0;
};

// Where there is no impersonation the calls fail quietly, and a scope has no effect.
std::shared_ptr<token_calls_t> platform_token_calls();
// Returns the calls in use before.
std::shared_ptr<token_calls_t> set_token_calls(std::shared_ptr<token_calls_t> calls);

// Share key "\\server\share" to token; keys compare without regard to case.
class WinImpersonationTokensMap {
public:
    WinImpersonationTokensMap() = default;
    ~WinImpersonationTokensMap();
    WinImpersonationTokensMap(const WinImpersonationTokensMap&) = delete;
    WinImpersonationTokensMap& operator=(const WinImpersonationTokensMap&) = delete;

    void add(const std::wstring& share, shared_handle_t token);
    void remove(const std::wstring& share);
    // Null when the share has no token.
    shared_handle_t find(const std::wstring& share) const;

private:
    struct share_less_t {
        bool operator()(const std::wstring& a, const std::wstring& b) const;
    };
    mutable std::mutex lock_;
    std::map<std::wstring, shared_handle_t, share_less_t> tokens_;
};

// How many scopes of each thread hold an impersonation now.
class win_impersonation_counter_t {
public:
    void add(DWORD thread_id);
    // Takes one away; returns how many remain.
    std::uint32_t take(DWORD thread_id);
    std::uint32_t count(DWORD thread_id) const;

private:
    mutable std::mutex lock_;
    std::map<DWORD, std::uint32_t> counts_;
};

// The context's counters, one per thread that has begun a scope; used under the
// context's lock.
class impersonation_counters_t {
public:
    std::shared_ptr<win_impersonation_counter_t> for_thread(DWORD thread_id);

private:
    std::map<DWORD, std::shared_ptr<win_impersonation_counter_t>> counters_;
};

// The scope. Bound to the thread that made it.
class win_impersonation_session_t {
public:
    // Impersonates the token on the calling thread. A token that cannot be
    // duplicated gives a scope without effect; a failure to impersonate is
    // logged and does the same.
    win_impersonation_session_t(shared_handle_t token, std::shared_ptr<win_impersonation_counter_t> counter);
    // The last scope of the thread to end reverts the thread to its own identity.
    ~win_impersonation_session_t();
    win_impersonation_session_t(const win_impersonation_session_t&) = delete;
    win_impersonation_session_t& operator=(const win_impersonation_session_t&) = delete;

    bool impersonated() const { return impersonated_ != 0; }

private:
    shared_handle_t source_token_;
    std::uint8_t impersonated_ = 0;
    shared_handle_t duplicate_token_;
    std::shared_ptr<win_impersonation_counter_t> counter_;
};

using impersonation_session_ptr = std::shared_ptr<win_impersonation_session_t>;

// "\\server\share" for a path that starts with two backslashes; empty otherwise.
std::wstring impersonation_share_key(const std::wstring& path);

// The scope for an operation on the path: empty when no token is kept for its share.
impersonation_session_ptr impersonate_for(const std::wstring& path);
impersonation_session_ptr impersonate_for(const std::string& path);

} // namespace win
