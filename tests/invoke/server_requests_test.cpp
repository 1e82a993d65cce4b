#include "common/exc/exc.h"
#include "common/format/format.h"
#include "invoke/arguments.h"
#include "invoke/pipe_invoke_server.h"
#include "invoke/pipe_text.h"
#include "msxml_layout.h"
#include "pipe_test_support.h"
#include "tests/common/log_test_support.h"

#include <gtest/gtest.h>

namespace {

// Records what the server hands on; "Fail" throws a two-line failure.
class recording_dispatcher_t : public wrap::IInvokeDispatcher {
public:
    void Invoke(const std::wstring& command, InputArguments_t& input, OutputArguments_t& output) override {
        invoked.push_back(command);
        if (command == L"Fail") {
            try {
                throw exc::runtime_exc_t("The cause.");
            } catch (const std::exception& e) {
                exc::rethrow_with_trace("The step.", e);
            }
        }
        if (command == L"Echo")
            output.WriteText("Said", input.ReadText("Say"));
    }
    void OnCallFailed(std::string_view command, std::string_view request, const std::exception& e) override {
        failed.push_back(std::string(command) + "|" + std::string(request));
        IInvokeDispatcher::OnCallFailed(command, request, e);
    }
    std::vector<std::wstring> invoked;
    std::vector<std::string> failed;
};

struct null_what_t : std::exception {
    const char* what() const noexcept override { return nullptr; }
};

class ServerRequests : public ::testing::Test {
protected:
    std::shared_ptr<recording_dispatcher_t> dispatcher = std::make_shared<recording_dispatcher_t>();
    wrap::CPipeInvokeSrv server{pipe_test::fresh_pipe_name(), dispatcher};
};

} // namespace

TEST(ServerGrammar, PrefixesIgnoreCaseAndTheNameEndsAtTheFirstSpace) {
    std::wstring command, document;
    ASSERT_TRUE(wrap::CPipeInvokeSrv::ParseRequest(L"CMD:CloseSnapshot XML:<a/>", command, document));
    EXPECT_EQ(command, L"CloseSnapshot");
    EXPECT_EQ(document, L"<a/>");
    ASSERT_TRUE(wrap::CPipeInvokeSrv::ParseRequest(L"cmd: xml:", command, document));
    EXPECT_EQ(command, L"");
    EXPECT_EQ(document, L"");
    for (const wchar_t* bad : {L"cmd:CloseSnapshot", L"cmd:CloseSnapshot  xml:<a/>", L"cmd:", L"cm", L"",
                               L"xml:<a/>", L"cmd:X xm", L"cmd:X html:<a/>"})
        EXPECT_FALSE(wrap::CPipeInvokeSrv::ParseRequest(bad, command, document)) << to_ansi_nothrow(bad);
}

TEST_F(ServerRequests, ACommandAnswersWithItsDocumentAndNoLineEnd) {
    EXPECT_EQ(msxml_layout::without_breaks(server.ExecuteRequest(
                  L"cmd:Echo xml:<InputArguments><Say value=\"hi\"/></InputArguments>")),
              L"xml:<OutputArguments><Said value=\"hi\"/></OutputArguments>");
    const std::wstring empty = server.ExecuteRequest(L"cmd:Nothing xml:<InputArguments/>");
    EXPECT_EQ(empty.rfind(L"xml:<OutputArguments", 0), 0u);
    EXPECT_EQ(empty.find(L"\r\n"), std::wstring::npos);
    EXPECT_EQ(dispatcher->invoked, (std::vector<std::wstring>{L"Echo", L"Nothing"}));
    EXPECT_EQ(wrap::CPipeInvokeSrv::MakeXmlResponse(L"<a/>\r\n"), L"xml:<a/>");
}

// As the system's conversions read it: the request goes on with U+FFFD in the surrogate's place.
TEST_F(ServerRequests, ALoneSurrogateInAFrameReadsAsTheReplacementCharacter) {
#ifdef _WIN32
    GTEST_SKIP() << "Windows' wide text is the frame's UTF-16 itself: nothing converts the surrogate.";
#endif
    const std::wstring request = L"cmd:Echo xml:<InputArguments><Say value=\"?\"/></InputArguments>";
    win::pipes::byte_buffer_t frame = win::pipes::EncodeFrameText(request);
    frame[2 * request.find(L'?')] = 0x00;
    frame[2 * request.find(L'?') + 1] = 0xDC;
    EXPECT_EQ(win::pipes::DecodeFrameText(server.ExecuteFrame(frame)).text,
              L"xml:<OutputArguments><Said value=\"\uFFFD\"/></OutputArguments>");
}

TEST_F(ServerRequests, FailuresBecomeErrorFramesWithAllTheirLines) {
    EXPECT_EQ(server.ExecuteRequest(L"cmd:Fail xml:<InputArguments/>"), L"err:The cause.\n--tr:The step.");
    EXPECT_EQ(server.ExecuteRequest(L"hello"), L"err:Unknown type of request: 'hello'.");
    const std::wstring no_document = server.ExecuteRequest(L"cmd:Echo xml:");
    EXPECT_EQ(no_document.rfind(L"err:", 0), 0u);
    EXPECT_NE(no_document.find(L"Failed to load XML document"), std::wstring::npos);
    EXPECT_EQ(server.RejectRequest(L"cmd:Echo xml:<a/>"),
              L"err:Unknown type of request: 'cmd:Echo xml:<a/>'.");

    // Only a well-formed request reaches the commands; every failure is reported with its request.
    EXPECT_EQ(dispatcher->invoked, std::vector<std::wstring>{L"Fail"});
    EXPECT_EQ(dispatcher->failed, (std::vector<std::string>{"Fail|<InputArguments/>", "|", "Echo|", "|"}));
    EXPECT_EQ(wrap::CPipeInvokeSrv::MakeErrorResponse(null_what_t()), L"err:n/a");
}

// The trace carries whole documents; nothing in a command or a document reads as a marker of
// the log's formatter.
class ServerTrace : public log_test::log_file_test {};

TEST_F(ServerTrace, EachCallShowsItsCommandAndDocumentsAsTheyAre) {
    auto dispatcher = std::make_shared<recording_dispatcher_t>();
    wrap::CPipeInvokeSrv server(pipe_test::fresh_pipe_name(), dispatcher);
    server.ExecuteRequest(L"cmd:Echo xml:<InputArguments><Say value=\"%1 %2\"/></InputArguments>");
    server.ExecuteRequest(L"cmd:%1x xml:<InputArguments/>");
    std::string log;
    // Each line of a message carries the tag; what follows it is the message's own text.
    for (const std::string& line : bodies())
        log += line.substr(line.find("| ") + 2) + "\n";
    log = msxml_layout::without_breaks(log);
    for (const char* trace : {"[SoapEnter] Echo:<InputArguments><Say value=\"%1 %2\"/></InputArguments>",
                              "[SoapExit] Echo:<OutputArguments><Said value=\"%1 %2\"/></OutputArguments>",
                              "[SoapEnter] %1x:<InputArguments/>", "[SoapExit] %1x:<OutputArguments/>"})
        EXPECT_NE(log.find(trace), std::string::npos) << trace << "\n" << log;
}
