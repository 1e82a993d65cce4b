#include "snapshot/operation_info.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

const GUID taskId = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};

} // namespace

TEST(OperationInfo, OutcomeIsSeenWholeOnceCompletionIsSeen) {
    COperationInfo info(taskId, 1);
    std::thread worker([&] { info.MarkFailed(L"line one\nline two", 99); });
    SOperationStatus status = info.Read();
    while (!status.isCompleted) {
        // Until completion is published the outcome fields stay at their start values.
        EXPECT_TRUE(status.isSucceeded);
        EXPECT_EQ(status.errDescription, L"");
        std::this_thread::yield();
        status = info.Read();
    }
    worker.join();
    EXPECT_FALSE(status.isSucceeded);
    EXPECT_EQ(status.errDescription, L"line one\nline two");
    EXPECT_EQ(status.completedTime, 99);
}
