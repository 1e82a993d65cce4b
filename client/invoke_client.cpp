#include "client/invoke_client.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "invoke/pipe_text.h"

namespace client {

std::wstring PipePathOf(const std::wstring& pipeName) {
    return L"\\\\.\\pipe\\" + pipeName;
}

std::wstring MakeRequestText(const std::wstring& command, const std::wstring& document) {
    return L"cmd:" + command + L" xml:" + document;
}

std::unique_ptr<CInvokeClient> CInvokeClient::Connect(const std::wstring& pipeName, DWORD timeoutMs) {
    return std::make_unique<CInvokeClient>(
        win::pipes::connect_client_channel(PipePathOf(pipeName), timeoutMs));
}

CInvokeClient::CInvokeClient(std::shared_ptr<win::pipes::pipe_channel_t> channel_)
    : channel(std::move(channel_)) {}

win::pipes::pipe_channel_t& CInvokeClient::Channel() const {
    if (!channel)
        throw exc::runtime_exc_t("The client is not connected.");
    return *channel;
}

CResponse CInvokeClient::Call(const std::wstring& command, const CRequestArguments& arguments) {
    return CResponse::FromFrame(Exchange(MakeRequestText(command, arguments.Document())));
}

std::wstring CInvokeClient::Exchange(const std::wstring& requestText) {
    exchange_t exchange{requestText, L"", std::chrono::steady_clock::now(), {}};
    const auto tell = [&] {
        exchange.answered = std::chrono::steady_clock::now();
        if (observer)
            observer(exchange);
    };
    if (!SendMessage(win::pipes::EncodeFrameText(requestText))) {
        tell();
        throw exc::runtime_exc_t("The server closed the pipe before the request was sent.");
    }
    std::optional<std::wstring> response = ReceiveFrame();
    exchange.response = response.value_or(L"");
    tell();
    if (!response)
        throw exc::runtime_exc_t("The server closed the pipe without a response.");
    return *response;
}

bool CInvokeClient::SendMessage(const win::pipes::byte_buffer_t& message) {
    return win::pipes::WriteWholeMessage(Channel(), message);
}

std::optional<std::wstring> CInvokeClient::ReceiveFrame() {
    win::pipes::byte_buffer_t message;
    if (!win::pipes::ReadWholeMessage(Channel(), message))
        return std::nullopt;
    return win::pipes::DecodeFrameText(message).text;
}

void CInvokeClient::Disconnect() {
    channel.reset();
}

} // namespace client
