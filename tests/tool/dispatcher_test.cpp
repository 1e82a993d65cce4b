#include "tool/mirrack_dispatcher.h"

#include "common/exc/exc.h"
#include "invoke/arguments.h"

#include <gtest/gtest.h>

namespace {

std::string FailureOfInvoke(CMirrackDispatcher& dispatcher, const std::wstring& command) {
    InputArguments_t input(L"<InputArguments/>");
    OutputArguments_t output;
    try {
        dispatcher.Invoke(command, input, output);
    } catch (const std::exception& e) {
        return e.what();
    }
    return "no failure";
}

} // namespace

TEST(CommandNames, AreOrderedWithAsciiLettersFolded) {
    const CommandNameLess less;
    EXPECT_FALSE(less(L"closesnapshot", L"CloseSnapshot"));
    EXPECT_FALSE(less(L"CloseSnapshot", L"CLOSESNAPSHOT"));
    EXPECT_TRUE(less(L"Close", L"closesnapshot"));
    EXPECT_TRUE(less(L"abc", L"ABD"));
    // Upper case letters fold down to lower case, so they sort after the signs between the two alphabets.
    EXPECT_TRUE(less(L"[", L"Z"));
    EXPECT_TRUE(less(L"[", L"z"));
}

TEST(Dispatcher, RunsCommandsWhateverTheCaseOfTheirName) {
    CMirrackDispatcher dispatcher;
    for (const std::wstring name : {L"CloseSnapshot", L"closesnapshot", L"CLOSESNAPSHOT"}) {
        InputArguments_t input(L"<InputArguments/>");
        OutputArguments_t output;
        dispatcher.Invoke(name, input, output);
        EXPECT_EQ(output.Serialize(), L"<OutputArguments/>");
    }
}

TEST(Dispatcher, UnknownCommandFailsTheSameWayEveryTime) {
    CMirrackDispatcher dispatcher;
    EXPECT_EQ(FailureOfInvoke(dispatcher, L"Frobnicate"), "Command [Frobnicate] not found");
    EXPECT_EQ(FailureOfInvoke(dispatcher, L"Frobnicate"), "Command [Frobnicate] not found");
    EXPECT_EQ(FailureOfInvoke(dispatcher, L"frobnicate"), "Command [frobnicate] not found");
    EXPECT_EQ(FailureOfInvoke(dispatcher, L""), "Command [] not found");
}

TEST(Dispatcher, CommandFailuresReachTheCaller) {
    CMirrackDispatcher dispatcher;
    EXPECT_EQ(FailureOfInvoke(dispatcher, L"GetAsyncOpStatus"),
              "Snapshot is not initialized.\n--tr:Failed to get operation info.");
}
