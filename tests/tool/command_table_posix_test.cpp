// POSIX only: the heap in use is read from glibc's mallinfo2.
#include "tool/mirrack_dispatcher.h"

#include "common/exc/exc.h"
#include "invoke/arguments.h"

#include <gtest/gtest.h>

#include <malloc.h>

// A client that sends a great many names the tool doesn't know must not grow the process.
TEST(CommandTable, UnknownNamesAreAnsweredWithoutBeingKept) {
    CMirrackDispatcher dispatcher;
    InputArguments_t input(L"<InputArguments/>");
    OutputArguments_t output;
    const auto heap_in_use = [] { return static_cast<long long>(mallinfo2().uordblks); };
    const std::wstring long_name(200, L'x');
    const long long before = heap_in_use();
    for (int i = 0; i < 20000; ++i) {
        const std::wstring name = long_name + std::to_wstring(i);
        try {
            dispatcher.Invoke(name, input, output);
            ADD_FAILURE() << "unknown name ran";
        } catch (const exc::runtime_exc_t&) {
        }
    }
    EXPECT_LT(heap_in_use() - before, 1 << 20);
}
