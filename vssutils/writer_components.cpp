#include "vssutils/writer_components.h"

#include "common/format/format.h"
#include "common/logging/log.h"
#include "compat/unique_any.h"
#include "vssutils/vss_exc.h"

namespace VSSUtils {

namespace {

std::wstring text_or_empty(BSTR text) {
    return text ? std::wstring(text, SysStringLen(text)) : std::wstring();
}

// The platform's info goes back to it on every path, also when a copy fails.
class component_info_t {
public:
    explicit component_info_t(WmComponentPtr component) : component_(component) {}
    ~component_info_t() {
        if (info_)
            component_->FreeComponentInfo(info_);
    }
    component_info_t(const component_info_t&) = delete;
    component_info_t& operator=(const component_info_t&) = delete;

    PVSSCOMPONENTINFO* out() { return &info_; }
    const VSS_COMPONENTINFO& operator*() const { return *info_; }

private:
    WmComponentPtr component_;
    PVSSCOMPONENTINFO info_ = nullptr;
};

using bstr_getter_t = HRESULT (IVssWMFiledesc::*)(BSTR*);

std::wstring read_file_text(WmFiledescPtr file, bstr_getter_t getter, const char* logText,
                            const char* words) {
    log_scope_t scope(log_scope_t::silent, logging::tool_logger(), logText);
    compat::unique_bstr_t text;
    CheckVss(((*file).*getter)(text.put()), words);
    scope.close_quietly();
    return text.text();
}

} // namespace

WmComponentPtr GetWmComponent(WriterMetadataPtr metadata, std::uint32_t index) {
    WmComponentPtr component;
    HRESULT hr = metadata->GetComponent(index, component.put());
    if (hr < 0)
        ThrowVssFailure(
            hr, format_message("Writer was unable to provide VM metadata. Component ordinal number: '%1'.",
                               num_to_string(static_cast<std::uint64_t>(index))));
    return component;
}

SWmComponentInfo GetWmComponentInfo(WmComponentPtr component) {
    component_info_t info(component);
    CheckVss(component->GetComponentInfo(info.out()), "Failed to get VSS component information");
    SWmComponentInfo copy;
    copy.componentName = text_or_empty((*info).bstrComponentName);
    copy.logicalPath = text_or_empty((*info).bstrLogicalPath);
    copy.type = (*info).type;
    copy.fileCount = (*info).cFileCount;
    return copy;
}

WmFiledescPtr GetWmFile(WmComponentPtr component, std::uint32_t index) {
    WmFiledescPtr file;
    HRESULT hr = component->GetFile(index, file.put());
    if (hr < 0)
        ThrowVssFailure(hr,
                        format_message("Failed to get information about specific VM file. File index: [%1]",
                                       num_to_string(static_cast<std::uint64_t>(index))));
    return file;
}

std::wstring GetWmFilePath(WmFiledescPtr file) {
    return read_file_text(
        file, &IVssWMFiledesc::GetPath, "Getting file path",
        "Failed to get fully qualified directory path for the specified IVssVMFiledesc object.");
}

std::wstring GetWmFileMask(WmFiledescPtr file) {
    return read_file_text(file, &IVssWMFiledesc::GetFilespec, "Getting file mask",
                          "Failed to get file mask for the specified IVssVMFiledesc object.");
}

bool GetWmFileRecursive(WmFiledescPtr file) {
    log_scope_t scope(log_scope_t::silent, logging::tool_logger(), "Getting recursive flag");
    boolean recursive = 0;
    CheckVss(file->GetRecursive(&recursive),
             "Failed to get recursive flag for the specified IVssWMFiledesc object.");
    scope.close_quietly();
    return recursive != 0;
}

} // namespace VSSUtils
