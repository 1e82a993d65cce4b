#include "client/invoke_client.h"
#include "client/subcommand.h"
#include "common/format/format.h"
#include "invoke/pipe_text.h"
#include "test_server.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>

using namespace client;
using client_test::contains;
using client_test::run_client;
using client_test::run_t;
using client_test::test_server_t;

namespace {

bool has_line_ending_with(const std::string& log, const std::string& text) {
    return log.find(text + "\r\n") != std::string::npos;
}

// Says that a command has come and answers once released, with a document of no element: Wine's
// MSXML would break an element's text over lines of the log.
class holding_dispatcher_t : public wrap::IInvokeDispatcher {
public:
    void Invoke(const std::wstring&, InputArguments_t&, OutputArguments_t&) override {
        received.set_value();
        released.get_future().wait();
    }
    std::promise<void> received;
    std::promise<void> released;
};

} // namespace

TEST(ClientSession, CommandsAnswerInTurnAndTheTraceShowsThem) {
    client_test::test_log_t log;
    test_server_t server;
    auto connection = CInvokeClient::Connect(server.name());

    const std::wstring text = L"<a & \"b\">\n\u00e9";
    const std::wstring document = L"<FilesList><File Path=\"\u20ac\"/></FilesList>";
    const CResponse echo = connection->Call(
        L"Echo", CRequestArguments().AddText(L"Text", text).AddEncoded(L"Document", document));
    ASSERT_TRUE(echo.IsSuccess()) << to_ansi_nothrow(echo.Frame());
    EXPECT_EQ(echo.Value(L"text"), text);
    EXPECT_EQ(echo.Decoded(L"FilesList"), document);

    const CResponse nothing = connection->Call(L"Nothing", CRequestArguments());
    EXPECT_TRUE(nothing.IsSuccess());
    EXPECT_TRUE(nothing.Arguments().empty());

    const CResponse failed = connection->Call(L"Fail", CRequestArguments());
    EXPECT_TRUE(failed.IsFailure());
    EXPECT_EQ(failed.Body(), L"The cause.\n--tr:The step.");

    connection->Disconnect();
    EXPECT_EQ(server.finish(), "");
    for (const char* line :
         {"rpc|     [SoapEnter] Nothing:<InputArguments></InputArguments>",
          "rpc|     [SoapExit] Nothing:<OutputArguments/>", "RPC method call has failed (Fail).",
          "prx|   Leaving dispatch loop.", "prx| Closing pipe invoke server."})
        EXPECT_TRUE(has_line_ending_with(log.text(), line)) << line;
}

// The server's answers to bad frames are read where the server is tested; here, over a pipe,
// that the next command is served after those only a pipe can carry: none, and one too long.
TEST(ClientSession, BadFramesGetErrorFramesAndTheNextCommandIsServed) {
    test_server_t server;
    auto connection = CInvokeClient::Connect(server.name());
    const std::vector<std::pair<win::pipes::byte_buffer_t, std::wstring>> cases = {
        {{}, L"err:Unknown type of request: ''."},
        {win::pipes::EncodeFrameText(std::wstring(5 * 1024 * 1024, L'x')),
         L"err:Unknown type of request: 'xxxx"},
    };
    for (const auto& [message, expected] : cases) {
        ASSERT_TRUE(connection->SendMessage(message));
        const std::optional<std::wstring> response = connection->ReceiveFrame();
        ASSERT_TRUE(response);
        EXPECT_EQ(response->substr(0, expected.size()), expected)
            << to_ansi_nothrow(response->substr(0, 200));
        EXPECT_TRUE(connection->Call(L"Nothing", CRequestArguments()).IsSuccess());
    }
}

TEST(ClientSession, AClientThatLeavesBeforeItsAnswerEndsTheServingWithAWarning) {
    client_test::test_log_t log;
    const auto dispatcher = std::make_shared<holding_dispatcher_t>();
    test_server_t server(dispatcher);
    auto connection = CInvokeClient::Connect(server.name());
    ASSERT_TRUE(connection->SendMessage(win::pipes::EncodeFrameText(L"cmd:Hold xml:<InputArguments/>")));
    // A client gone before the server took it would be a failed connection on Windows.
    dispatcher->received.get_future().wait();
    connection->Disconnect();
    dispatcher->released.set_value();

    EXPECT_EQ(server.finish(), "");
    const std::string lines = log.text();
    EXPECT_TRUE(has_line_ending_with(lines, "prx| WARN|Response 'xml:<OutputArguments/>' was not sent."))
        << lines;
    EXPECT_TRUE(has_line_ending_with(lines, "prx|   Leaving dispatch loop."));
}

// Arguments and decoded documents; an error response line by line, with its own status; the raw answer.
TEST(ClientCommand, CallPrintsArgumentsDecodedDocumentsAndErrorsLineByLineWithTheirOwnStatus) {
    const auto file = client_test::scratch_folder() / "document.xml";
    std::ofstream(file, std::ios::binary) << "<FilesList>\r\n<File/>\r\n</FilesList>";
    const std::tuple<std::vector<std::string>, int, std::string> calls[] = {
        {{"call", "Echo", "Text=@@at", "Document=@" + file.string()},
         client::exit_success,
         "OK\nText: @at\nFilesList (decoded):\n    <FilesList>\n    <File/>\n    </FilesList>\n"},
        {{"call", "Fail"}, client::exit_error_response, "ERROR\n    The cause.\n    --tr:The step.\n"},
        {{"--raw", "call", "Nothing"}, client::exit_success, "xml:<OutputArguments/>\n"}};
    for (auto [line, status, out] : calls) {
        client_test::test_server_t server;
        line.insert(line.begin(), "--pipe=" + to_ansi_nothrow(server.name()));
        const run_t run = run_client(line);
        EXPECT_EQ(run.status, status) << run.err;
        EXPECT_EQ(run.out, out);
    }
}

TEST(ClientCommand, MistakesOnTheCommandLineAndAbsentServersHaveTheirStatus) {
    for (const std::vector<std::string>& line :
         std::vector<std::vector<std::string>>{{"call", "Nothing"},
                                               {"--pipe", "x", "fly"},
                                               {"--pipe", "x", "call"},
                                               {"--pipe", "x", "call", "Nothing", "novalue"},
                                               {"--pipe", "x", "call", "Nothing", "Doc=@/no/such/file"},
                                               {"--pipe", "x", "call", "--verbose"},
                                               {"--pipe", "x", "call", "Nothing", "-x=1"},
                                               {"--bogus"}}) {
        const run_t run = run_client(line);
        EXPECT_EQ(run.status, client::exit_usage) << run.err;
        EXPECT_TRUE(contains(run.err, "Usage:"));
    }
    EXPECT_EQ(run_client({"--help"}).status, client::exit_success);
    // Every subcommand shows its use, and does nothing else, whatever stands beside --help.
    const std::string target = (std::filesystem::temp_directory_path() / "mirrack-help-made-this").string();
    for (const client::subcommand_t& subcommand : client::Subcommands()) {
        const run_t help = run_client({"--pipe", "nobody-here", subcommand.name, "--spec", "s.xml", "--to",
                                       target, "--help", "Name=v"});
        EXPECT_EQ(help.status, client::exit_success) << subcommand.name << help.err;
        EXPECT_TRUE(contains(help.out, subcommand.usage)) << help.out;
    }
    EXPECT_FALSE(std::filesystem::exists(target));
    pipe_test::socket_folder();
    EXPECT_EQ(run_client({"--pipe", "nobody-here", "--timeout", "30", "call", "Nothing"}).status,
              client::exit_failure);
}
