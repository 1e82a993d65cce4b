// The items list of a large VM set inside the response and request documents,
// against pugixml alone doing the same documents in UTF-8.
#include "documents/files_list.h"
#include "invoke/arguments.h"
#include "invoke/base64.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <string>

namespace {

constexpr int item_count = 10000;

ItemsList make_items() {
    ItemsList items;
    for (int i = 0; i < item_count; ++i) {
        const std::wstring n = std::to_wstring(i);
        const std::wstring folder = L"C:\\ClusterStorage\\Volume1\\Hyper-V\\VM-" + std::to_wstring(i / 16);
        items.emplace_back(folder, L"*.vhdx", i % 2, L"Virtual Hard Disks\\disk-" + n + L".vhdx",
                           L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy12\\Hyper-V\\VM-" +
                               std::to_wstring(i / 16) + L"\\Virtual Hard Disks\\disk-" + n + L".vhdx");
    }
    return items;
}

std::wstring make_request(const ItemsList& items) {
    OutputArguments_t output;
    output.WriteEncoded("InPathsXML", SerializeItemsList(items));
    std::wstring request = output.Serialize();
    request.replace(request.find(L"<OutputArguments>"), 17, L"<InputArguments>");
    request.replace(request.find(L"</OutputArguments>"), 18, L"</InputArguments>");
    return request;
}

struct string_writer_t : pugi::xml_writer {
    std::string text;
    void write(const void* data, std::size_t size) override {
        text.append(static_cast<const char*>(data), size);
    }
};

std::string save(const pugi::xml_document& document) {
    string_writer_t writer;
    document.save(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return writer.text;
}

struct utf8_item_t {
    std::string recursive, path, mask, fullPath, relativePath;
};

std::vector<utf8_item_t> to_utf8_items(const ItemsList& items) {
    std::vector<utf8_item_t> result;
    auto narrow = [](const std::wstring& w) { return std::string(w.begin(), w.end()); }; // ASCII sample
    for (const CFilesListItem& item : items)
        result.push_back({item.recursive ? "true" : "false", narrow(item.path), narrow(item.mask),
                          narrow(item.fullPath), narrow(item.relativePath)});
    return result;
}

// The wide road, which the POSIX server no longer takes. Its time is mostly the allocator's: an
// iteration's blocks end above glibc's trim threshold, so the heap is given back when they are
// freed and faulted in afresh by the next iteration, thousands of pages each time. Run with
// GLIBC_TUNABLES=glibc.malloc.trim_threshold=1000000000:glibc.malloc.mmap_threshold=1000000000
// to see the work alone.
void BM_Documents_WriteFilesListResponse(benchmark::State& state) {
    const ItemsList items = make_items();
    for (auto _ : state) {
        OutputArguments_t output;
        output.WriteEncoded("FilesList", SerializeItemsList(items));
        benchmark::DoNotOptimize(output.Serialize());
    }
    state.SetItemsProcessed(state.iterations() * item_count);
}
BENCHMARK(BM_Documents_WriteFilesListResponse)->Unit(benchmark::kMillisecond);

void BM_Documents_ReadFilesListRequest(benchmark::State& state) {
    const std::wstring request = make_request(make_items());
    for (auto _ : state) {
        ItemsList items;
        DeserializeItemsList(InputArguments_t(request).ReadEncoded("InPathsXML"), items);
        benchmark::DoNotOptimize(items.data());
    }
    state.SetItemsProcessed(state.iterations() * item_count);
}
BENCHMARK(BM_Documents_ReadFilesListRequest)->Unit(benchmark::kMillisecond);

void BM_PugixmlAlone_WriteFilesListResponse(benchmark::State& state) {
    const std::vector<utf8_item_t> items = to_utf8_items(make_items());
    for (auto _ : state) {
        pugi::xml_document list;
        pugi::xml_node root = list.append_child("FilesList");
        for (const utf8_item_t& item : items) {
            pugi::xml_node file = root.append_child("File");
            file.append_attribute("Recursive").set_value(item.recursive.c_str());
            file.append_attribute("Path").set_value(item.path.c_str());
            file.append_attribute("Mask").set_value(item.mask.c_str());
            file.append_attribute("FullPath").set_value(item.fullPath.c_str());
            file.append_attribute("RelativePath").set_value(item.relativePath.c_str());
        }
        pugi::xml_document response;
        response.append_child("OutputArguments")
            .append_child("FilesList")
            .append_attribute("value")
            .set_value(wrap::base64_encode(save(list)).c_str());
        benchmark::DoNotOptimize(save(response));
    }
    state.SetItemsProcessed(state.iterations() * item_count);
}
BENCHMARK(BM_PugixmlAlone_WriteFilesListResponse)->Unit(benchmark::kMillisecond);

void BM_PugixmlAlone_ReadFilesListRequest(benchmark::State& state) {
    const std::wstring wide_request = make_request(make_items());
    const std::string request(wide_request.begin(), wide_request.end());
    for (auto _ : state) {
        pugi::xml_document document;
        document.load_buffer(request.data(), request.size());
        const std::string list_text = wrap::base64_decode(
            document.child("InputArguments").child("InPathsXML").attribute("value").value());
        pugi::xml_document list;
        list.load_buffer(list_text.data(), list_text.size());
        std::vector<utf8_item_t> items;
        for (pugi::xml_node file : list.child("FilesList").children())
            items.push_back({file.attribute("Recursive").value(), file.attribute("Path").value(),
                             file.attribute("Mask").value(), file.attribute("FullPath").value(),
                             file.attribute("RelativePath").value()});
        benchmark::DoNotOptimize(items.data());
    }
    state.SetItemsProcessed(state.iterations() * item_count);
}
BENCHMARK(BM_PugixmlAlone_ReadFilesListRequest)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
