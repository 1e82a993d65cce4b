// Windows only: a task's worker and a request's scope each take a single-threaded COM apartment,
// and a thread that is already in the multithreaded one cannot take it.
#include "common/exc/exc.h"
#include "invoke/invoke_server_com.h"
#include "snapshot/worker_com.h"

#include <gtest/gtest.h>

#include <functional>
#include <objbase.h>
#include <thread>

namespace {

// On a fresh thread: the apartment taken and given back, then refused in a thread already in
// the multithreaded one.
void expect_single_threaded_apartment(const std::function<void()>& take_and_give_back) {
    std::thread([&] {
        take_and_give_back();
        EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK) << "given back";
        ::CoUninitialize();
    }).join();
    std::thread([&] {
        ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        try {
            take_and_give_back();
            ADD_FAILURE() << "no failure";
        } catch (const exc::com_exc_t& e) {
            EXPECT_EQ(e.code(), RPC_E_CHANGED_MODE);
            EXPECT_EQ(e.messages().back().text, "Cannot initialize COM runtime");
        }
        ::CoUninitialize();
    }).join();
}

} // namespace

TEST(ComScopes, WorkersAndRequestsTakeASingleThreadedApartmentOrFail) {
    expect_single_threaded_apartment([] {
        impl::InitializeWorkerCom();
        EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
        impl::UninitializeWorkerCom();
    });
    expect_single_threaded_apartment([] {
        const wrap::CRequestComScope scope;
        EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
    });
}
