#include "client/call_command.h"

#include "client/invoke_client.h"
#include "client/response_printer.h"
#include "common/exc/convert.h"
#include "common/format/format.h"

#include <fstream>
#include <iterator>
#include <ostream>

namespace client {

namespace {

std::string read_file_bytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw usage_error_t{"Can't read the file '" + path + "'."};
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

} // namespace

void AddCommandLineArgument(CRequestArguments& request, const std::string& argument) {
    const std::size_t equals = argument.find('=');
    if (equals == std::string::npos || equals == 0 || argument[0] == '-')
        throw usage_error_t{"An argument is written Name=value, Name=@file or Name=@@text: '" + argument +
                            "'."};
    const std::wstring name = to_unicode(argument.substr(0, equals));
    const std::string value = argument.substr(equals + 1);
    if (value.rfind("@@", 0) == 0)
        request.AddText(name, to_unicode(value.substr(1)));
    else if (value.rfind('@', 0) == 0)
        request.AddEncodedBytes(name, read_file_bytes(value.substr(1)));
    else
        request.AddText(name, to_unicode(value));
}

int RunCallCommand(const client_options_t& options, const std::vector<std::string>& arguments,
                   std::ostream& out) {
    if (arguments.empty())
        throw usage_error_t{"call needs a command name."};
    if (arguments[0].rfind('-', 0) == 0)
        throw usage_error_t{"call takes a command name, not the option '" + arguments[0] + "'."};
    CRequestArguments request;
    for (std::size_t i = 1; i < arguments.size(); ++i)
        AddCommandLineArgument(request, arguments[i]);

    const auto connection = CInvokeClient::Connect(options.pipeName, options.connectTimeoutMs);
    const std::wstring frame =
        connection->Exchange(MakeRequestText(to_unicode(arguments[0]), request.Document()));
    if (options.raw) {
        out << to_ansi_nothrow(frame) << '\n';
        return frame.rfind(L"xml:", 0) == 0 ? exit_success : exit_error_response;
    }
    const CResponse response = CResponse::FromFrame(frame);
    PrintResponse(response, out);
    return response.IsSuccess() ? exit_success : exit_error_response;
}

} // namespace client
