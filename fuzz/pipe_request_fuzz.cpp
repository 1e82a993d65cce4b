// One pipe message through the invoke server, as a backup server would send it: frame
// decoding, the request grammar, the request document and the arguments the commands
// read, up to the response frame. The dispatcher behind the server reads like the tool's
// commands and does nothing else.
#include "fuzz/command_arguments.h"
#include "fuzz/fuzz_input.h"
#include "invoke/arguments.h"
#include "invoke/pipe_invoke_server.h"
#include "invoke/pipe_text.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <unistd.h>

namespace {

class reading_dispatcher_t : public wrap::IInvokeDispatcher {
public:
    void Invoke(const std::wstring&, InputArguments_t& input, OutputArguments_t& output) override {
        fuzz::read_like_the_commands(input, output);
    }
};

std::filesystem::path socket_folder() {
    return std::filesystem::temp_directory_path() / ("mirrack-fuzz-" + std::to_string(::getpid()));
}

void remove_socket_folder() {
    std::error_code ignored;
    std::filesystem::remove_all(socket_folder(), ignored);
}

// One server for the whole run: its pipe is made once, and no client ever connects.
wrap::CPipeInvokeSrv& server() {
    static wrap::CPipeInvokeSrv* const instance = [] {
        ::setenv("MIRRACK_PIPE_DIR", socket_folder().c_str(), 1);
        std::atexit(remove_socket_folder);
        return new wrap::CPipeInvokeSrv(L"fuzz", std::make_shared<reading_dispatcher_t>());
    }();
    return *instance;
}

bool starts_with(const std::wstring& text, const wchar_t* prefix) {
    return text.rfind(prefix, 0) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const win::pipes::byte_buffer_t frame(data, data + size);
    const win::pipes::frame_text_t request = win::pipes::DecodeFrameText(frame);
    const std::wstring response = win::pipes::DecodeFrameText(server().ExecuteFrame(frame)).text;
    fuzz::require(starts_with(response, L"xml:") || starts_with(response, L"err:"),
                  "every response is a document or an error");
    fuzz::require(request.terminated || starts_with(response, L"err:"), "an unterminated frame is refused");
    const win::pipes::frame_text_t sent = win::pipes::DecodeFrameText(win::pipes::EncodeFrameText(response));
    fuzz::require(sent.terminated, "a response frame is terminated");
    if (!fuzz::has_no_scalar_value(response))
        fuzz::require(sent.text == fuzz::up_to_zero(response), "the client reads the response as sent");
    return 0;
}
