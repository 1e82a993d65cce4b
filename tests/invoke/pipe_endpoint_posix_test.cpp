// POSIX only: the pipe as a Unix socket in its private folder.
#include "common/exc/exc.h"
#include "invoke/pipe_handler.h"
#include "pipe_test_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace win::pipes;

namespace {

std::filesystem::path socket_of(const std::wstring& path) {
    return pipe_test::socket_folder() / std::filesystem::path(path.substr(9));
}

// What a server that died without cleaning up leaves: a socket file nobody listens on.
void leave_stale_socket(const std::filesystem::path& file) {
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, file.c_str());
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    ::close(fd);
}

} // namespace

TEST(PipeEndpointPosix, SocketsLiveInAPrivateDirectoryAndGoWithTheirServerButNotWithAStaleOne) {
    const std::wstring path = pipe_test::fresh_pipe_path();
    std::filesystem::remove_all(pipe_test::socket_folder());
    {
        const auto server = create_server_channel(path);
        struct stat info {};
        ASSERT_EQ(::stat(pipe_test::socket_folder().c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777, 0700u);
        EXPECT_TRUE(std::filesystem::exists(socket_of(path)));
    }
    EXPECT_FALSE(std::filesystem::exists(socket_of(path)));
    // A stale socket does not keep its name.
    const std::wstring stale = pipe_test::fresh_pipe_path();
    std::filesystem::create_directories(pipe_test::socket_folder());
    leave_stale_socket(socket_of(stale));
    const auto server = create_server_channel(stale);
    const auto stale_client = connect_client_channel(stale, 1000);
    EXPECT_EQ(wait_for_client(*server, {}, 1000), client_wait_t::connected);
}

// A Windows pipe of one instance makes a second client wait for it instead.
TEST(PipeEndpointPosix, ASecondClientIsTurnedAwayWhileTheFirstIsServedAndBadNamesAreRefused) {
    const std::wstring path = pipe_test::fresh_pipe_path();
    const auto server = create_server_channel(path);
    const auto first = connect_client_channel(path, 1000);
    ASSERT_EQ(wait_for_client(*server, {}, 1000), client_wait_t::connected);
    const auto second = connect_client_channel(path, 1000);

    ASSERT_TRUE(WriteWholeMessage(*first, byte_buffer_t{1, 2, 3}));
    byte_buffer_t message;
    ASSERT_TRUE(ReadWholeMessage(*server, message));
    EXPECT_FALSE(ReadWholeMessage(*second, message));
    // Windows takes any character but a backslash in a pipe's name.
    for (const std::wstring bad : {L"\\\\.\\pipe\\a/b", L"\\\\.\\pipe\\", L"C:\\temp\\x", L"\\\\.\\pipe\\.."})
        EXPECT_THROW(create_server_channel(bad), exc::win_sys_exc_t);
}
