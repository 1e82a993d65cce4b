// The pipe endpoint as both platforms have it: one server per name.
#include "common/exc/exc.h"
#include "invoke/pipe_handler.h"
#include "pipe_test_support.h"

#include <gtest/gtest.h>

using namespace win::pipes;

TEST(PipeEndpoint, ALiveServerKeepsItsName) {
    const std::wstring path = pipe_test::fresh_pipe_path();
    const auto first = create_server_channel(path);
    try {
        create_server_channel(path);
        FAIL() << "two servers on one name";
    } catch (const exc::win_sys_exc_t& e) {
        EXPECT_EQ(e.code(), DWORD(ERROR_PIPE_BUSY));
        EXPECT_EQ(e.messages().back().text,
                  "Failed to create named pipe '" + std::string(path.begin(), path.end()) + "'.");
    }

    // The attempt left the live server alone: its client is still the first to come.
    const auto client = connect_client_channel(path, 1000);
    ASSERT_EQ(wait_for_client(*first, {}, 1000), client_wait_t::connected);
    ASSERT_TRUE(WriteWholeMessage(*client, byte_buffer_t{7}));
    byte_buffer_t message;
    ASSERT_TRUE(ReadWholeMessage(*first, message));
    EXPECT_EQ(message, byte_buffer_t{7});
}
