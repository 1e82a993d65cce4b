#include "common/runtime/impersonation.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "common/runtime/common_lib_ctx.h"
#include "common/win/last_error.h"
#include "common/win/path.h"
#include "common/win/thread_id.h"

#include <algorithm>
#include <cwctype>
#include <utility>

namespace win {

namespace {

std::mutex g_token_calls_lock;
std::shared_ptr<token_calls_t> g_token_calls;

std::shared_ptr<token_calls_t> token_calls() {
    std::lock_guard<std::mutex> guard(g_token_calls_lock);
    if (!g_token_calls)
        g_token_calls = platform_token_calls();
    return g_token_calls;
}

shared_handle_t token_for(const WinImpersonationTokensMap& tokens, const std::wstring& path) {
    const std::wstring share = impersonation_share_key(path);
    if (share.empty())
        return nullptr;
    shared_handle_t token = tokens.find(share);
    if (token)
        log_info(logging::lib_logger(), "Found impersonation token for share [%1].", to_ansi_nothrow(share));
    return token;
}

// Narrow paths are in the ANSI code page, or failing that in UTF-8.
std::wstring widen_path(const std::string& path) {
    try {
        return to_unicode(path);
    } catch (const std::exception& e) {
        log_exception(logging::lib_logger(), e);
    }
    return from_utf8(path);
}

void revert_to_self(token_calls_t& calls) {
    if (!calls.revert_to_self())
        throw exc::win_sys_exc_t("RevertToSelf() function call failed.", last_error());
}

} // namespace

std::shared_ptr<token_calls_t> set_token_calls(std::shared_ptr<token_calls_t> calls) {
    std::lock_guard<std::mutex> guard(g_token_calls_lock);
    return std::exchange(g_token_calls, std::move(calls));
}

bool WinImpersonationTokensMap::share_less_t::operator()(const std::wstring& a, const std::wstring& b) const {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](wchar_t x, wchar_t y) {
        return std::towlower(static_cast<std::wint_t>(x)) < std::towlower(static_cast<std::wint_t>(y));
    });
}

WinImpersonationTokensMap::~WinImpersonationTokensMap() {
    try {
        std::lock_guard<std::mutex> guard(lock_);
        tokens_.clear();
    } catch (const std::exception& e) {
        try {
            log_exception(logging::lib_logger(), "Failed to destroy WinImpersonationTokensMap", e);
        } catch (...) {
        }
    } catch (...) {
    }
}

void WinImpersonationTokensMap::add(const std::wstring& share, shared_handle_t token) {
    std::lock_guard<std::mutex> guard(lock_);
    tokens_[share] = std::move(token);
}

void WinImpersonationTokensMap::remove(const std::wstring& share) {
    std::lock_guard<std::mutex> guard(lock_);
    tokens_.erase(share);
}

shared_handle_t WinImpersonationTokensMap::find(const std::wstring& share) const {
    std::lock_guard<std::mutex> guard(lock_);
    const auto found = tokens_.find(share);
    return found == tokens_.end() ? nullptr : found->second;
}

void win_impersonation_counter_t::add(DWORD thread_id) {
    std::lock_guard<std::mutex> guard(lock_);
    ++counts_[thread_id];
}

std::uint32_t win_impersonation_counter_t::take(DWORD thread_id) {
    std::lock_guard<std::mutex> guard(lock_);
    const auto found = counts_.find(thread_id);
    if (found == counts_.end())
        return 0;
    if (--found->second > 0)
        return found->second;
    counts_.erase(found);
    return 0;
}

std::uint32_t win_impersonation_counter_t::count(DWORD thread_id) const {
    std::lock_guard<std::mutex> guard(lock_);
    const auto found = counts_.find(thread_id);
    return found == counts_.end() ? 0 : found->second;
}

std::shared_ptr<win_impersonation_counter_t> impersonation_counters_t::for_thread(DWORD thread_id) {
    auto& counter = counters_[thread_id];
    if (!counter)
        counter = std::make_shared<win_impersonation_counter_t>();
    return counter;
}

win_impersonation_session_t::win_impersonation_session_t(shared_handle_t token,
                                                         std::shared_ptr<win_impersonation_counter_t> counter)
    : source_token_(std::move(token)), counter_(std::move(counter)) {
    exc::traced("Failed to impersonate user.", [&] {
        if (!source_token_ || !source_token_->valid())
            return;
        const std::shared_ptr<token_calls_t> calls = token_calls();
        HANDLE duplicate = calls->duplicate_token(source_token_->get());
        if (duplicate == nullptr)
            return;
        duplicate_token_ = std::make_shared<win_handle_t>(duplicate);
        if (!calls->impersonate_logged_on_user(duplicate)) {
            log_exception(logging::lib_logger(),
                          exc::win_sys_exc_t("Failed to impersonate thread.", last_error()));
            return;
        }
        impersonated_ = 1;
        counter_->add(current_thread_id());
    });
}

win_impersonation_session_t::~win_impersonation_session_t() {
    try {
        if (impersonated_ != 0 && counter_->take(current_thread_id()) == 0)
            revert_to_self(*token_calls());
    } catch (const std::exception& e) {
        try {
            log_exception(logging::lib_logger(), e);
        } catch (...) {
        }
    } catch (...) {
    }
}

std::wstring impersonation_share_key(const std::wstring& path) {
    if (path.size() < 2 || path[0] != L'\\' || path[1] != L'\\')
        return std::wstring();
    const std::vector<std::wstring> components = path_components(path);
    if (components.size() < 2)
        return std::wstring();
    return L"\\\\" + components[0] + L"\\" + components[1];
}

impersonation_session_ptr impersonate_for(const std::wstring& path) {
    const std::shared_ptr<CCommonLibCtx> context = CCommonLibCtx::get();
    std::lock_guard<std::recursive_mutex> guard(context->lock());
    const shared_handle_t token = token_for(*context->impersonation_tokens(), path);
    if (!token)
        return nullptr;
    log_info(logging::lib_logger(),
             "File operations for path '%1' will be performed under impersonation context.",
             to_ansi_nothrow(path));
    return std::make_shared<win_impersonation_session_t>(
        token, context->impersonation_counters()->for_thread(current_thread_id()));
}

impersonation_session_ptr impersonate_for(const std::string& path) {
    std::wstring wide;
    try {
        wide = widen_path(path);
    } catch (const std::exception& e) {
        log_exception(logging::lib_logger(), e);
        return nullptr;
    }
    return impersonate_for(wide);
}

} // namespace win
