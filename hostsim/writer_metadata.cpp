#include "hostsim/writer_metadata.h"

#include "hostsim/com_object.h"
#include "hostsim/wide_text.h"

#include <pugixml.hpp>

#include <sstream>

namespace hostsim {

namespace {

class file_description_t final : public com_object_t<IVssWMFiledesc> {
public:
    file_description_t(std::shared_ptr<host_t> host, const file_spec_t& file)
        : host_(std::move(host)), file_(file) {}

    HRESULT STDMETHODCALLTYPE GetPath(BSTR* pbstrPath) override {
        return give_text("GetPath", file_.path, pbstrPath);
    }

    HRESULT STDMETHODCALLTYPE GetFilespec(BSTR* pbstrFilespec) override {
        return give_text("GetFilespec", file_.spec, pbstrFilespec);
    }

    HRESULT STDMETHODCALLTYPE GetRecursive(boolean* pbRecursive) override {
        if (HRESULT hr = host_->refuse("GetRecursive", {file_.path, file_.spec}, pbRecursive))
            return hr;
        *pbRecursive = file_.recursive;
        return S_OK;
    }

private:
    HRESULT give_text(const char* op, const std::wstring& text, BSTR* out) {
        if (HRESULT hr = host_->refuse(op, {file_.path, file_.spec}, out))
            return hr;
        *out = new_bstr(text);
        return S_OK;
    }

    std::shared_ptr<host_t> host_;
    const file_spec_t& file_;
};

class component_object_t final : public com_object_t<IVssWMComponent> {
public:
    component_object_t(std::shared_ptr<host_t> host, const component_t& component)
        : host_(std::move(host)), component_(component) {}

    HRESULT STDMETHODCALLTYPE GetComponentInfo(PVSSCOMPONENTINFO* ppInfo) override {
        if (HRESULT hr = host_->refuse("GetComponentInfo", {component_.name}, ppInfo))
            return hr;
        auto* info = new VSS_COMPONENTINFO{};
        info->type = component_.type;
        info->bstrLogicalPath = component_.logical_path ? new_bstr(*component_.logical_path) : nullptr;
        info->bstrComponentName = new_bstr(component_.name);
        info->bstrCaption = component_.caption.empty() ? nullptr : new_bstr(component_.caption);
        info->cFileCount = static_cast<UINT>(component_.files.size());
        *ppInfo = info;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE FreeComponentInfo(PVSSCOMPONENTINFO pInfo) override {
        if (HRESULT hr = host_->refuse("FreeComponentInfo", {component_.name}))
            return hr;
        if (pInfo) {
            SysFreeString(pInfo->bstrLogicalPath);
            SysFreeString(pInfo->bstrComponentName);
            SysFreeString(pInfo->bstrCaption);
            delete pInfo;
        }
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetFile(UINT iFile, IVssWMFiledesc** ppFiledesc) override {
        if (HRESULT hr = host_->refuse("GetFile", {component_.name, std::to_wstring(iFile)},
                                       ppFiledesc && iFile < component_.files.size()))
            return hr;
        *ppFiledesc = new file_description_t(host_, component_.files[iFile]);
        return S_OK;
    }

private:
    std::shared_ptr<host_t> host_;
    const component_t& component_;
};

std::string writer_document(const writer_t& writer) {
    pugi::xml_document doc;
    auto root = doc.append_child("WRITER_METADATA");
    root.append_attribute("writerId") = to_utf8(guid_text(writer.id)).c_str();
    root.append_attribute("instanceId") = to_utf8(guid_text(writer.instance)).c_str();
    root.append_attribute("friendlyName") = to_utf8(writer.name).c_str();
    root.append_attribute("usage") = static_cast<int>(writer.usage);
    root.append_attribute("dataSource") = static_cast<int>(writer.source);
    for (auto& c : writer.components) {
        auto node = root.append_child("COMPONENT");
        node.append_attribute("componentName") = to_utf8(c.name).c_str();
        node.append_attribute("caption") = to_utf8(c.caption).c_str();
        node.append_attribute("componentType") = static_cast<int>(c.type);
        if (c.logical_path)
            node.append_attribute("logicalPath") = to_utf8(*c.logical_path).c_str();
        for (auto& f : c.files) {
            auto file = node.append_child("FILE_GROUP");
            file.append_attribute("path") = to_utf8(f.path).c_str();
            file.append_attribute("filespec") = to_utf8(f.spec).c_str();
            file.append_attribute("recursive") = f.recursive ? "yes" : "no";
        }
    }
    std::ostringstream out;
    doc.save(out, "  ");
    return out.str();
}

class writer_metadata_t final : public com_object_t<IVssExamineWriterMetadata> {
public:
    writer_metadata_t(std::shared_ptr<host_t> host, const writer_t& writer)
        : host_(std::move(host)), writer_(writer) {}

    HRESULT STDMETHODCALLTYPE GetIdentity(VSS_ID* pidInstance, VSS_ID* pidWriter, BSTR* pbstrWriterName,
                                          VSS_USAGE_TYPE* pUsage, VSS_SOURCE_TYPE* pSource) override {
        if (HRESULT hr = host_->refuse("GetIdentity", {writer_.name},
                                       pidInstance && pidWriter && pbstrWriterName && pUsage && pSource))
            return hr;
        *pidInstance = writer_.instance;
        *pidWriter = writer_.id;
        *pbstrWriterName = new_bstr(writer_.name);
        *pUsage = writer_.usage;
        *pSource = writer_.source;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetFileCounts(UINT* pcIncludeFiles, UINT* pcExcludeFiles,
                                            UINT* pcComponents) override {
        if (HRESULT hr = host_->refuse("GetFileCounts", {writer_.name},
                                       pcIncludeFiles && pcExcludeFiles && pcComponents))
            return hr;
        *pcIncludeFiles = 0;
        *pcExcludeFiles = 0;
        *pcComponents = static_cast<UINT>(writer_.components.size());
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetComponent(UINT iComponent, IVssWMComponent** ppComponent) override {
        std::wstring name =
            iComponent < writer_.components.size() ? writer_.components[iComponent].name : L"";
        if (HRESULT hr = host_->refuse("GetComponent", {name, std::to_wstring(iComponent)},
                                       ppComponent && iComponent < writer_.components.size()))
            return hr;
        *ppComponent = new component_object_t(host_, writer_.components[iComponent]);
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE SaveAsXML(BSTR* pbstrXML) override {
        if (HRESULT hr = host_->refuse("SaveAsXML", {writer_.name}, pbstrXML))
            return hr;
        *pbstrXML = new_bstr(from_utf8(writer_document(writer_)));
        return S_OK;
    }

private:
    bool answers_to(REFIID riid) const override { return riid == IID_IVssExamineWriterMetadata; }

    std::shared_ptr<host_t> host_;
    const writer_t& writer_;
};

} // namespace

IVssExamineWriterMetadata* make_writer_metadata(std::shared_ptr<host_t> host, const writer_t& writer) {
    return new writer_metadata_t(std::move(host), writer);
}

} // namespace hostsim
