// The pipe endpoint as both platforms have it: one server per name, messages whole.
#include "common/exc/exc.h"
#include "common/win/event.h"
#include "invoke/pipe_handler.h"
#include "pipe_test_support.h"
#include "tests/support/failure_lines.h"

#include <gtest/gtest.h>

#include <thread>

using namespace win::pipes;

namespace {

byte_buffer_t pattern(std::size_t size) {
    byte_buffer_t bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    return bytes;
}

// A server endpoint with its client already connected. A Windows pipe holds no more than its
// buffer: what a client writes beyond it waits for the server's reads, so writers get a thread.
struct connected_pair_t {
    std::wstring path = pipe_test::fresh_pipe_path();
    std::shared_ptr<CPipeHandler> server = CreateNamedPipeEndpoint(path);
    std::shared_ptr<pipe_channel_t> client = connect_client_channel(path, 5000);
    connected_pair_t() { server->WaitClient(std::make_shared<win::win_manual_reset_event_t>(), 1000); }
};

} // namespace

TEST(PipeTransport, MessagesShortEmptyOrLongArriveWholeInBothDirections) {
    connected_pair_t pair;
    const std::size_t sizes[] = {1024, 1025, 0, 3 * 1024 * 1024 + 17};
    std::jthread writer([&] {
        for (const std::size_t size : sizes)
            EXPECT_TRUE(WriteWholeMessage(*pair.client, pattern(size)));
    });
    byte_buffer_t received;
    for (const std::size_t size : sizes) {
        ASSERT_TRUE(pair.server->ReadMessage(received));
        EXPECT_EQ(received, pattern(size));
    }
    writer.join();
    const byte_buffer_t big = pattern(sizes[3]);

    std::thread reader([&] { EXPECT_TRUE(ReadWholeMessage(*pair.client, received)); });
    EXPECT_TRUE(pair.server->WriteMessage(big));
    reader.join();
    EXPECT_EQ(received, big);
}

TEST(PipeTransport, AClientThatLeavesIsABrokenPipeNotAnError) {
    connected_pair_t pair;
    pair.client.reset();
    byte_buffer_t message = pattern(5);
    EXPECT_FALSE(pair.server->ReadMessage(message));
    EXPECT_FALSE(pair.server->WriteMessage(pattern(100)));

    // One that has gone before the server waits for it has come all the same.
    const std::wstring path = pipe_test::fresh_pipe_path();
    const auto server = CreateNamedPipeEndpoint(path);
    connect_client_channel(path, 5000).reset();
    server->WaitClient(std::make_shared<win::win_manual_reset_event_t>(), 1000);
    EXPECT_FALSE(server->ReadMessage(message));
}

TEST(PipeTransport, WaitForClientEndsOnTimeLimitOrSignalledEventAndAHandlerNeedsItsPipe) {
    const std::wstring path = pipe_test::fresh_pipe_path();
    const auto server = create_server_channel(path);
    EXPECT_EQ(wait_for_client(*server, {}, 30), client_wait_t::timed_out);

    CPipeHandler handler(path, server);
    const auto stop = std::make_shared<win::win_manual_reset_event_t>();
    stop->set();
    EXPECT_EQ(failure_lines([&] { handler.WaitClient(stop, 0); }),
              (std::vector<std::string>{"Timed out until client to connect.",
                                        "Failed to wait for client connection. Pipe: '\\\\.\\pipe\\" +
                                            std::string(path.begin() + 9, path.end()) + "'."}));

    // Without a pipe a handler refuses reads and writes.
    CPipeHandler none(L"\\\\.\\pipe\\none", nullptr);
    byte_buffer_t message;
    EXPECT_EQ(failure_lines([&] { none.ReadMessage(message); }).at(0), "pipe reader is not initialized.");
    EXPECT_EQ(failure_lines([&] { none.WriteMessage(message); }).at(0), "pipe reader is not initialized.");
}

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
