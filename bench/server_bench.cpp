// The server's own cost of one request, from the frame's bytes to the response
// frame's bytes (no pipe I/O, no pause between commands), against pugixml alone
// parsing and writing the same documents.
#include "compat/win_types.h"
#include "invoke/arguments.h"
#include "invoke/base64.h"
#include "invoke/files_list.h"
#include "invoke/pipe_invoke_server.h"
#include "invoke/pipe_text.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <string>
#include <unistd.h>

namespace {

const GUID sample_id = {0x1c2b3a49, 0x5d6e, 0x4f70, {0x81, 0x92, 0xa3, 0xb4, 0xc5, 0xd6, 0xe7, 0xf8}};

// What the real commands write, without a task behind them.
class bench_dispatcher_t : public wrap::IInvokeDispatcher {
public:
    void Invoke(const std::wstring& command, InputArguments_t& input, OutputArguments_t& output) override {
        if (command == L"GetAsyncOpStatus") {
            output.WriteGuid("SnapshotId", sample_id);
            output.WriteText("ErrDescription", L"");
            output.WriteBool("IsCompleted", true);
            output.WriteBool("IsSucceeded", true);
            output.WriteNumber("CreationTime", 134000000000000000);
            output.WriteNumber("CompletedTime", 134000000100000000);
            return;
        }
        ItemsList items;
        DeserializeItemsListUtf8(input.ReadEncodedUtf8("InPathsXML"), items);
        output.WriteEncodedUtf8("OutPathsXML", SerializeItemsListUtf8(items));
    }
};

ItemsList make_items(int item_count) {
    ItemsList items;
    for (int i = 0; i < item_count; ++i) {
        const std::wstring n = std::to_wstring(i);
        const std::wstring vm = std::to_wstring(i / 16);
        items.emplace_back(L"C:\\ClusterStorage\\Volume1\\Hyper-V\\VM-" + vm, L"*.vhdx", i % 2,
                           L"Virtual Hard Disks\\disk-" + n + L".vhdx",
                           L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy12\\Hyper-V\\VM-" + vm +
                               L"\\Virtual Hard Disks\\disk-" + n + L".vhdx");
    }
    return items;
}

std::wstring widen(const std::string& ascii) {
    return std::wstring(ascii.begin(), ascii.end());
}
std::string narrow(const std::wstring& ascii) {
    return std::string(ascii.begin(), ascii.end());
}

std::wstring files_list_request(int item_count) {
    return L"cmd:ConvertOffhostPaths xml:<InputArguments><InPathsXML value=\"" +
           widen(base64_encode(narrow(SerializeItemsList(make_items(item_count))))) +
           L"\"/></InputArguments>";
}

const std::wstring small_request = L"cmd:GetAsyncOpStatus xml:<InputArguments></InputArguments>";

std::wstring fresh_pipe_name() {
    static int counter = 0;
    return L"bench-" + std::to_wstring(::getpid()) + L"-" + std::to_wstring(++counter);
}

void run_server_side(benchmark::State& state, const std::wstring& request) {
    wrap::CPipeInvokeSrv server(fresh_pipe_name(), std::make_shared<bench_dispatcher_t>());
    const win::pipes::byte_buffer_t frame = win::pipes::EncodeFrameText(request);
    for (auto _ : state)
        benchmark::DoNotOptimize(server.ExecuteFrame(frame));
}

void BM_Server_GetAsyncOpStatus(benchmark::State& state) {
    run_server_side(state, small_request);
}
BENCHMARK(BM_Server_GetAsyncOpStatus)->Unit(benchmark::kMicrosecond);

// The cost per item must stay flat from a small list to a large one.
void BM_Server_FilesList(benchmark::State& state) {
    run_server_side(state, files_list_request(static_cast<int>(state.range(0))));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Server_FilesList)->Arg(2500)->Arg(10000)->Arg(40000)->Unit(benchmark::kMillisecond);

struct string_writer_t : pugi::xml_writer {
    std::string text;
    void write(const void* data, std::size_t size) override {
        text.append(static_cast<const char*>(data), size);
    }
};

std::string save(const pugi::xml_node& node) {
    string_writer_t writer;
    node.print(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return writer.text;
}

std::string document_of(const std::wstring& request) {
    return narrow(request.substr(request.find(L"xml:") + 4));
}

// One round of the floor in a function of its own, as the server's round is, so that a profiler
// can count each alone (valgrind --toggle-collect).
[[gnu::noinline]] std::string pugixml_status_round(const std::string& request) {
    pugi::xml_document input;
    input.load_buffer(request.data(), request.size());
    benchmark::DoNotOptimize(input.child("InputArguments"));
    pugi::xml_document output;
    pugi::xml_node root = output.append_child("OutputArguments");
    root.append_child("SnapshotId").append_attribute("value") = "{1c2b3a49-5d6e-4f70-8192-a3b4c5d6e7f8}";
    root.append_child("ErrDescription").append_attribute("value") = "";
    root.append_child("IsCompleted").append_attribute("value") = "true";
    root.append_child("IsSucceeded").append_attribute("value") = "true";
    root.append_child("CreationTime").append_attribute("value") = "134000000000000000";
    root.append_child("CompletedTime").append_attribute("value") = "134000000100000000";
    return save(output);
}

void BM_PugixmlAlone_GetAsyncOpStatus(benchmark::State& state) {
    const std::string request = document_of(small_request);
    for (auto _ : state)
        benchmark::DoNotOptimize(pugixml_status_round(request));
}
BENCHMARK(BM_PugixmlAlone_GetAsyncOpStatus)->Unit(benchmark::kMicrosecond);

[[gnu::noinline]] std::string pugixml_files_list_round(const std::string& request) {
    pugi::xml_document input;
    input.load_buffer(request.data(), request.size());
    const std::string list_text =
        base64_decode(input.child("InputArguments").child("InPathsXML").attribute("value").value());
    pugi::xml_document list;
    list.load_buffer(list_text.data(), list_text.size());
    pugi::xml_document out_list;
    pugi::xml_node out_root = out_list.append_child("FilesList");
    for (pugi::xml_node file : list.child("FilesList").children()) {
        pugi::xml_node copy = out_root.append_child("File");
        for (const char* name : {"Recursive", "Path", "Mask", "FullPath", "RelativePath"})
            copy.append_attribute(name) = file.attribute(name).value();
    }
    pugi::xml_document output;
    output.append_child("OutputArguments").append_child("OutPathsXML").append_attribute("value") =
        base64_encode(save(out_list)).c_str();
    return save(output);
}

void BM_PugixmlAlone_FilesList(benchmark::State& state) {
    const std::string request = document_of(files_list_request(static_cast<int>(state.range(0))));
    for (auto _ : state)
        benchmark::DoNotOptimize(pugixml_files_list_round(request));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PugixmlAlone_FilesList)->Arg(2500)->Arg(10000)->Arg(40000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
