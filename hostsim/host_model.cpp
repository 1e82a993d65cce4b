#include "hostsim/host_model.h"

#include "compat/unique_fd_posix.h"
#include "hostsim/wide_text.h"

#include <pugixml.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <system_error>
#include <variant>

namespace hostsim {

namespace {

// A complaint about the content of a well-formed file.
struct model_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The bytes of a file, or the errno of the failure: a folder, say, opens but cannot be read.
std::variant<std::string, int> read_whole_file(const std::filesystem::path& file) {
    const compat::unique_fd_t fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd.valid())
        return errno;
    std::string bytes;
    char buffer[65536];
    for (;;) {
        const ssize_t got = ::read(fd.get(), buffer, sizeof buffer);
        if (got == 0)
            return bytes;
        if (got > 0)
            bytes.append(buffer, static_cast<std::size_t>(got));
        else if (errno != EINTR)
            return errno;
    }
}

[[noreturn]] void complain(const pugi::xml_node& node, const std::string& what) {
    throw model_error("<" + std::string(node.name()) + "> at offset " + std::to_string(node.offset_debug()) +
                      ": " + what);
}

std::wstring text_of(const pugi::xml_node& node, const char* attribute) {
    return from_utf8(node.attribute(attribute).value());
}

std::wstring required_text(const pugi::xml_node& node, const char* attribute) {
    auto a = node.attribute(attribute);
    if (!a)
        complain(node, std::string("attribute '") + attribute + "' is missing");
    return from_utf8(a.value());
}

GUID required_guid(const pugi::xml_node& node, const char* attribute) {
    auto id = parse_guid(required_text(node, attribute));
    if (!id)
        complain(node, std::string("attribute '") + attribute + "' is not a GUID");
    return *id;
}

std::uint32_t parse_number(const pugi::xml_node& node, const char* attribute, const char* text) {
    char* end = nullptr;
    unsigned long long v = std::strtoull(text, &end, 0);
    if (end == text || *end != '\0' || v > 0xFFFFFFFFull)
        complain(node, std::string("attribute '") + attribute + "' is not a number: '" + text + "'");
    return static_cast<std::uint32_t>(v);
}

std::optional<std::uint32_t> optional_number(const pugi::xml_node& node, const char* attribute) {
    auto a = node.attribute(attribute);
    if (!a)
        return std::nullopt;
    return parse_number(node, attribute, a.value());
}

bool optional_bool(const pugi::xml_node& node, const char* attribute) {
    std::wstring v = text_of(node, attribute);
    return iequals(v, L"true") || v == L"1";
}

volume_t read_volume(const pugi::xml_node& node, const std::filesystem::path& host_dir) {
    volume_t v;
    v.name = with_trailing_backslash(required_text(node, "name"));
    v.dir = host_dir / required_text(node, "dir");
    for (auto& mount : split_text(required_text(node, "mount"), L';'))
        v.mounts.push_back(with_trailing_backslash(mount));
    if (v.mounts.empty())
        complain(node, "a volume needs at least one mount point");
    v.csv = optional_bool(node, "csv");
    return v;
}

share_t read_share(const pugi::xml_node& node, const std::filesystem::path& host_dir) {
    share_t s;
    s.unc = with_trailing_backslash(required_text(node, "unc"));
    if (s.unc.rfind(L"\\\\", 0) != 0)
        complain(node, "a share's unc must begin with \\\\");
    s.root = node.attribute("root") ? with_trailing_backslash(text_of(node, "root")) : s.unc;
    s.dir = host_dir / required_text(node, "dir");
    return s;
}

// The entry of choices the attribute names; a complaint naming what for any other text.
template <typename T, std::size_t N>
T required_choice(const pugi::xml_node& node, const char* attribute,
                  const std::pair<const wchar_t*, T> (&choices)[N], bool any_case, const char* what) {
    const std::wstring text = required_text(node, attribute);
    for (auto& [name, value] : choices)
        if (any_case ? iequals(text, name) : text == name)
            return value;
    complain(node, std::string("unknown ") + what + " '" + to_utf8(text) + "'");
}

provider_t read_provider(const pugi::xml_node& node) {
    provider_t p;
    p.id = required_guid(node, "id");
    static const std::pair<const wchar_t*, provider_kind> kinds[] = {
        {L"system", provider_kind::system},     {L"software", provider_kind::software},
        {L"hardware", provider_kind::hardware}, {L"fileshare", provider_kind::fileshare},
        {L"csv", provider_kind::csv},
    };
    p.kind = required_choice(node, "type", kinds, true, "provider type");
    if (node.attribute("volumes")) {
        p.explicit_volumes = true;
        p.volumes = split_text(text_of(node, "volumes"), L';');
        p.all_volumes = p.volumes.size() == 1 && p.volumes.front() == L"*";
    }
    p.transportable = optional_bool(node, "transportable");
    p.refuse = optional_number(node, "refuse").value_or(0);
    return p;
}

template <class T, class Read>
void read_all(const pugi::xml_node& parent, const char* name, std::vector<T>& into, Read read) {
    for (auto node : parent.children(name))
        into.push_back(read(node));
}

component_t read_component(const pugi::xml_node& node) {
    component_t c;
    c.name = required_text(node, "name");
    c.caption = text_of(node, "caption");
    c.type = static_cast<VSS_COMPONENT_TYPE>(optional_number(node, "type").value_or(VSS_CT_FILEGROUP));
    if (node.attribute("logicalPath"))
        c.logical_path = text_of(node, "logicalPath");
    for (auto file : node.children("File"))
        c.files.push_back(
            {required_text(file, "path"), required_text(file, "spec"), optional_bool(file, "recursive")});
    return c;
}

writer_t read_writer(const pugi::xml_node& node) {
    writer_t w;
    w.id = required_guid(node, "id");
    w.instance = required_guid(node, "instance");
    w.name = required_text(node, "name");
    w.usage = static_cast<VSS_USAGE_TYPE>(optional_number(node, "usage").value_or(VSS_UT_USERDATA));
    w.source = static_cast<VSS_SOURCE_TYPE>(optional_number(node, "source").value_or(VSS_ST_OTHER));
    read_all(node, "Component", w.components, read_component);
    return w;
}

fault_t read_fault(const pugi::xml_node& node) {
    fault_t f;
    f.op = to_utf8(required_text(node, "op"));
    if (auto v = optional_number(node, "hr"))
        f.hr = static_cast<HRESULT>(*v);
    f.err = optional_number(node, "err");
    if (auto v = optional_number(node, "status"))
        f.status = static_cast<HRESULT>(*v);
    f.delay_ms = optional_number(node, "delayMs").value_or(0);
    f.nth = optional_number(node, "nth").value_or(0);
    f.match = text_of(node, "match");
    return f;
}

writer_fault_t read_writer_fault(const pugi::xml_node& node) {
    writer_fault_t f;
    f.writer = required_guid(node, "writer");
    static const std::pair<const wchar_t*, writer_phase> phases[] = {
        {L"identify", writer_phase::identify},
        {L"prepare", writer_phase::prepare},
        {L"snapshot", writer_phase::snapshot},
        {L"complete", writer_phase::complete},
    };
    f.at = required_choice(node, "at", phases, false, "phase");
    f.state = static_cast<VSS_WRITER_STATE>(optional_number(node, "state").value_or(VSS_WS_UNKNOWN));
    f.hr = static_cast<HRESULT>(optional_number(node, "hr").value_or(0));
    return f;
}

registry_key_t read_registry_key(const pugi::xml_node& node) {
    registry_key_t key;
    key.path = required_text(node, "path");
    for (auto v : node.children("Value")) {
        registry_entry_t entry;
        entry.name = text_of(v, "name");
        std::wstring type = required_text(v, "type");
        if (type == L"REG_SZ") {
            entry.type = 1;
            entry.text = text_of(v, "data");
        } else if (type == L"REG_DWORD") {
            entry.type = 4;
            entry.number = parse_number(v, "data", v.attribute("data").value());
        } else {
            complain(v, "unknown value type '" + to_utf8(type) + "'");
        }
        key.values.push_back(std::move(entry));
    }
    return key;
}

host_model_t read_host(const pugi::xml_node& host, const std::filesystem::path& host_dir) {
    host_model_t model;
    model.name = text_of(host, "name");
    for (auto env : host.children("Environment"))
        for (auto var : env.children("Var"))
            model.environment.emplace_back(required_text(var, "name"), text_of(var, "value"));
    for (auto reg : host.children("Registry"))
        read_all(reg, "Key", model.registry, read_registry_key);
    read_all(host, "Volume", model.volumes,
             [&](const pugi::xml_node& n) { return read_volume(n, host_dir); });
    read_all(host, "Share", model.shares, [&](const pugi::xml_node& n) { return read_share(n, host_dir); });
    read_all(host, "Provider", model.providers, read_provider);
    read_all(host, "Writer", model.writers, read_writer);
    read_all(host, "Fault", model.faults, read_fault);
    read_all(host, "WriterFault", model.writer_faults, read_writer_fault);
    return model;
}

// Far deeper than any host description; a deeper document is refused before anything walks it.
const unsigned max_depth = 256;

// The parser builds the tree without recursion, and the depth is measured the same way.
bool nested_deeper_than(const pugi::xml_document& doc, unsigned limit) {
    unsigned depth = 1;
    for (auto node = doc.first_child(); node;) {
        if (node.type() == pugi::node_element && depth > limit)
            return true;
        if (auto child = node.first_child()) {
            node = child;
            ++depth;
            continue;
        }
        while (node && !node.next_sibling()) {
            node = node.parent();
            --depth;
        }
        if (node)
            node = node.next_sibling();
    }
    return false;
}

} // namespace

std::variant<host_model_t, std::string> load_host_model(const std::filesystem::path& host_dir) {
    const auto file = host_dir / "host.xml";
    const auto content = read_whole_file(file);
    if (auto* error = std::get_if<int>(&content))
        return file.string() + ": the host cannot be read: " + std::generic_category().message(*error);
    const auto& bytes = std::get<std::string>(content);
    pugi::xml_document doc;
    auto parsed = doc.load_buffer(bytes.data(), bytes.size());
    if (!parsed)
        return file.string() + ": " + parsed.description() + " at offset " + std::to_string(parsed.offset);
    if (nested_deeper_than(doc, max_depth))
        return file.string() + ": the document is nested deeper than " + std::to_string(max_depth) +
               " levels";
    auto host = doc.child("Host");
    if (!host)
        return file.string() + ": the document has no <Host> element";
    try {
        return read_host(host, std::filesystem::absolute(host_dir));
    } catch (const model_error& e) {
        return file.string() + ": " + e.what();
    }
}

} // namespace hostsim
