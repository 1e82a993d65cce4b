// The floor of the server benchmark where the server's documents are pugixml's: pugixml alone
// parsing and writing the same documents, in UTF-8.
#include "bench/server_requests.h"
#include "invoke/base64.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <string>

namespace {

using namespace server_bench;

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
    const std::string request = narrow(document_of(small_request));
    for (auto _ : state)
        benchmark::DoNotOptimize(pugixml_status_round(request));
}
BENCHMARK(BM_PugixmlAlone_GetAsyncOpStatus)->Unit(benchmark::kMicrosecond);

[[gnu::noinline]] std::string pugixml_files_list_round(const std::string& request) {
    pugi::xml_document input;
    input.load_buffer(request.data(), request.size());
    const std::string list_text =
        wrap::base64_decode(input.child("InputArguments").child("InPathsXML").attribute("value").value());
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
        wrap::base64_encode(save(out_list)).c_str();
    return save(output);
}

void BM_PugixmlAlone_FilesList(benchmark::State& state) {
    const std::string request = narrow(document_of(files_list_request(static_cast<int>(state.range(0)))));
    for (auto _ : state)
        benchmark::DoNotOptimize(pugixml_files_list_round(request));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PugixmlAlone_FilesList)->Arg(2500)->Arg(10000)->Arg(40000)->Unit(benchmark::kMillisecond);

} // namespace
