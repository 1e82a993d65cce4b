#include "bench/server_requests.h"

#include "compat/win_types.h"
#include "invoke/arguments.h"
#include "invoke/base64.h"

#include <unistd.h>

namespace server_bench {

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

} // namespace

std::shared_ptr<wrap::IInvokeDispatcher> make_dispatcher() {
    return std::make_shared<bench_dispatcher_t>();
}

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
           widen(wrap::base64_encode(narrow(SerializeItemsList(make_items(item_count))))) +
           L"\"/></InputArguments>";
}

const std::wstring small_request = L"cmd:GetAsyncOpStatus xml:<InputArguments></InputArguments>";

std::wstring document_of(const std::wstring& request) {
    return request.substr(request.find(L"xml:") + 4);
}

std::wstring fresh_pipe_name() {
    static int counter = 0;
    return L"bench-" + std::to_wstring(::getpid()) + L"-" + std::to_wstring(++counter);
}

} // namespace server_bench
