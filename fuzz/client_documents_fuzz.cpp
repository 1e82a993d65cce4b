// The two documents the client reads: a response of the tool, as wide text behind "xml:", and a
// backup specification, as the bytes of its file. A reader may refuse, never crash.
#include "client/response.h"
#include "client/spec_file_vms.h"
#include "fuzz/fuzz_input.h"

#include <exception>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = fuzz::bytes_of(data, size);
    try {
        const client::CResponse response = client::CResponse::FromFrame(L"xml:" + fuzz::wide_text(bytes));
        fuzz::require(response.IsSuccess(), "a document behind \"xml:\" that reads is a success");
    } catch (const std::exception&) {
    }
    try {
        for (const client::spec_vm_t& vm : client::SpecVms(std::string(bytes)))
            fuzz::require(!vm.id.empty(), "every VM has its id");
    } catch (const std::exception&) {
    }
    return 0;
}
