// A single-client request and response server on a named pipe. It knows the
// frames and nothing of the commands: each request goes to the dispatcher, and
// whatever that throws goes back to the client as an error frame.
#pragma once

#include "invoke/invoke_dispatcher.h"
#include "invoke/pipe_handler.h"
#include "invoke/request_text.h"

#include <exception>
#include <memory>
#include <string>

namespace win {
class win_manual_reset_event_t;
}

namespace wrap {

// The pause after each command; it bounds how fast a client can poll.
inline constexpr unsigned pause_between_commands_ms = 100;

class CPipeInvokeSrv {
public:
    // Creates the pipe "\\.\pipe\<pipeName>".
    CPipeInvokeSrv(const std::wstring& pipeName, std::shared_ptr<IInvokeDispatcher> commands);
    ~CPipeInvokeSrv();
    CPipeInvokeSrv(const CPipeInvokeSrv&) = delete;
    CPipeInvokeSrv& operator=(const CPipeInvokeSrv&) = delete;

    void WaitClientConnection();
    // Serves the client until it goes away.
    void DispatchLoop();
    // One request and its response. False: the client has gone.
    bool ProcessCommand();

    // A request frame's bytes to the response frame's bytes; never throws for a bad request,
    // nor for a frame that lacks its closing U+0000, which is refused like any text outside
    // the grammar.
    win::pipes::byte_buffer_t ExecuteFrame(const win::pipes::byte_buffer_t& message);
    // The same for a frame that is done with once it is read: its bytes go before the work starts.
    win::pipes::byte_buffer_t ExecuteFrame(win::pipes::byte_buffer_t&& message);
    // The same over the frames' texts.
    std::wstring ExecuteRequest(const std::wstring& request);

    // "cmd:<name> xml:<document>", prefixes without regard to case.
    static bool ParseRequest(const std::wstring& request, std::wstring& command, std::wstring& document);
    static std::wstring MakeXmlResponse(const std::wstring& document);
    static std::wstring MakeErrorResponse(const std::exception& error);
    // False: the client has gone.
    bool SendResponse(const win::pipes::byte_buffer_t& frame);

private:
    win::pipes::byte_buffer_t Execute(const request_text::frame_t& request);

    std::shared_ptr<win::pipes::CPipeHandler> pipe;
    std::shared_ptr<win::win_manual_reset_event_t> stopEvent;
    std::shared_ptr<IInvokeDispatcher> dispatcher;
    // The wide name of the command being run, kept so that its storage serves the next one.
    std::wstring commandName;
};

// Creates the server, waits for one client, serves it, and returns when it has gone.
void RunPipeInvokeServer(const std::wstring& pipeName, std::shared_ptr<IInvokeDispatcher> dispatcher);

} // namespace wrap
