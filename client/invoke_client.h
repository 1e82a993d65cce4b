// The client's end of the pipe protocol: one connection to a server, one request
// at a time, each answered by one frame.
#pragma once

#include "client/request_arguments.h"
#include "client/response.h"
#include "compat/win_types.h"
#include "invoke/pipe_handler.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace client {

// How long Connect keeps trying while the server has not created its pipe yet.
inline constexpr DWORD default_connect_timeout_ms = 10000;

// "\\.\pipe\<name>", the path that a server started with that pipe name creates.
std::wstring PipePathOf(const std::wstring& pipeName);

class CInvokeClient {
public:
    // Throws exc::win_sys_exc_t when no server answered on the name in time.
    static std::unique_ptr<CInvokeClient> Connect(const std::wstring& pipeName,
                                                  DWORD timeoutMs = default_connect_timeout_ms);

    // "cmd:<command> xml:<document>", and the response to it. Throws exc::runtime_exc_t
    // when the server went away without an answer.
    CResponse Call(const std::wstring& command, const CRequestArguments& arguments);
    // Any request text (the closing U+0000 is added) and the response frame's text.
    std::wstring Exchange(const std::wstring& requestText);

    // The raw transport, for frames the protocol doesn't allow. False: the server has gone.
    bool SendMessage(const win::pipes::byte_buffer_t& message);
    // The next frame's text; nullopt when the server has gone.
    std::optional<std::wstring> ReceiveFrame();

    // Closes the connection; the server takes it as the end of the session.
    void Disconnect();

    // Hears every response frame's text as it arrives, for a caller that audits the server.
    void ObserveFrames(std::function<void(const std::wstring& frame)> observer);

    explicit CInvokeClient(std::shared_ptr<win::pipes::pipe_channel_t> channel);

private:
    win::pipes::pipe_channel_t& Channel() const;

    std::shared_ptr<win::pipes::pipe_channel_t> channel;
    std::function<void(const std::wstring& frame)> frameObserver;
};

// The request text of a command.
std::wstring MakeRequestText(const std::wstring& command, const std::wstring& document);

} // namespace client
