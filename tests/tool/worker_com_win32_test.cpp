// Windows only: a task's worker takes a single-threaded COM apartment of its own, and a thread
// that is already in the multithreaded one cannot take it.
#include "common/exc/exc.h"
#include "snapshot/worker_com.h"

#include <gtest/gtest.h>

#include <objbase.h>
#include <thread>

TEST(WorkerCom, AFreshThreadTakesTheApartmentAndAThreadInAnotherOneIsRefused) {
    std::thread([] {
        impl::InitializeWorkerCom();
        EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
        impl::UninitializeWorkerCom();
    }).join();
    std::thread([] {
        ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        try {
            impl::InitializeWorkerCom();
            ADD_FAILURE() << "no failure";
            impl::UninitializeWorkerCom();
        } catch (const exc::com_exc_t& e) {
            EXPECT_EQ(e.code(), RPC_E_CHANGED_MODE);
            EXPECT_EQ(e.messages().back().text, "Cannot initialize COM runtime");
        }
        ::CoUninitialize();
    }).join();
}
