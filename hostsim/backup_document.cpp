#include "hostsim/backup_document.h"

#include "hostsim/wide_text.h"

#include <pugixml.hpp>

#include <cctype>
#include <filesystem>
#include <sstream>
#include <stdexcept>

namespace hostsim {

namespace {

struct unreadable : std::runtime_error {
    unreadable() : std::runtime_error("unreadable backup document") {}
};

void put(pugi::xml_node node, const char* name, const std::wstring& value) {
    node.append_attribute(name) = to_utf8(value).c_str();
}

std::wstring text(const pugi::xml_node& node, const char* name) {
    return from_utf8(node.attribute(name).value());
}

GUID guid(const pugi::xml_node& node, const char* name) {
    auto id = parse_guid(text(node, name));
    if (!id)
        throw unreadable();
    return *id;
}

// A folder's name is bytes, which need not be UTF-8: '%' and every byte beyond ASCII are
// written as %XX, so that the document gives back the very bytes.
void put_path(pugi::xml_node node, const char* name, const std::filesystem::path& path) {
    static const char digits[] = "0123456789ABCDEF";
    std::string text;
    for (const char c : path.string()) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80 || c == '%')
            text += {'%', digits[byte >> 4], digits[byte & 0xF]};
        else
            text += c;
    }
    node.append_attribute(name) = text.c_str();
}

std::filesystem::path path(const pugi::xml_node& node, const char* name) {
    const std::string text = node.attribute(name).value();
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && std::isxdigit(static_cast<unsigned char>(text[i + 1])) &&
            std::isxdigit(static_cast<unsigned char>(text[i + 2]))) {
            bytes += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

bool flag(const pugi::xml_node& node, const char* name) {
    return node.attribute(name).as_bool();
}

} // namespace

std::wstring save_backup_document(const backup_document_t& d) {
    pugi::xml_document doc;
    auto root = doc.append_child("BackupComponents");
    put_path(root, "host", d.host_dir);
    put(root, "machine", d.machine);
    root.append_attribute("context") = static_cast<long long>(d.context);
    if (d.backup_state_set) {
        auto state = root.append_child("BackupState");
        state.append_attribute("selectComponents") = d.select_components;
        state.append_attribute("bootableSystemState") = d.bootable_system_state;
        state.append_attribute("type") = static_cast<int>(d.backup_type);
        state.append_attribute("partialFileSupport") = d.partial_file_support;
    }
    if (d.writers_restricted) {
        auto enabled = root.append_child("EnabledWriters");
        for (auto& id : d.enabled_writers)
            put(enabled.append_child("Writer"), "id", guid_text(id));
    }
    for (auto& c : d.components) {
        auto node = root.append_child("Component");
        put(node, "writer", guid_text(c.writer));
        put(node, "instance", guid_text(c.instance));
        node.append_attribute("type") = static_cast<int>(c.type);
        put(node, "logicalPath", c.logical_path);
        put(node, "name", c.name);
        if (c.succeeded)
            node.append_attribute("succeeded") = *c.succeeded;
    }
    if (d.set_id) {
        auto set = root.append_child("SnapshotSet");
        put(set, "id", guid_text(*d.set_id));
        for (auto& s : d.snapshots) {
            auto node = set.append_child("Snapshot");
            put(node, "id", guid_text(s.snapshot_id));
            put(node, "provider", guid_text(s.provider_id));
            put(node, "volume", s.volume_name);
            node.append_attribute("number") = s.number;
            node.append_attribute("attributes") = s.attributes;
            node.append_attribute("created") = static_cast<long long>(s.created);
            put(node, "machine", s.machine);
            if (s.number != 0)
                put_path(node, "data", d.host_dir / "state" / "shadows" / std::to_string(s.number));
        }
    }
    std::ostringstream out;
    doc.save(out, "  ");
    return from_utf8(out.str());
}

std::optional<backup_document_t> load_backup_document(const std::wstring& content) {
    pugi::xml_document doc;
    const std::string utf8 = to_utf8(content);
    if (!doc.load_buffer(utf8.data(), utf8.size()))
        return std::nullopt;
    auto root = doc.child("BackupComponents");
    if (!root)
        return std::nullopt;
    try {
        backup_document_t d;
        d.host_dir = path(root, "host");
        d.machine = text(root, "machine");
        d.context = static_cast<LONG>(root.attribute("context").as_llong());
        if (auto state = root.child("BackupState")) {
            d.backup_state_set = true;
            d.select_components = flag(state, "selectComponents");
            d.bootable_system_state = flag(state, "bootableSystemState");
            d.backup_type = static_cast<VSS_BACKUP_TYPE>(state.attribute("type").as_int());
            d.partial_file_support = flag(state, "partialFileSupport");
        }
        if (auto enabled = root.child("EnabledWriters")) {
            d.writers_restricted = true;
            for (auto w : enabled.children("Writer"))
                d.enabled_writers.push_back(guid(w, "id"));
        }
        for (auto node : root.children("Component")) {
            selected_component_t c;
            c.writer = guid(node, "writer");
            c.instance = guid(node, "instance");
            c.type = static_cast<VSS_COMPONENT_TYPE>(node.attribute("type").as_int());
            c.logical_path = text(node, "logicalPath");
            c.name = text(node, "name");
            if (node.attribute("succeeded"))
                c.succeeded = flag(node, "succeeded");
            d.components.push_back(std::move(c));
        }
        if (auto set = root.child("SnapshotSet")) {
            d.set_id = guid(set, "id");
            for (auto node : set.children("Snapshot")) {
                set_snapshot_t s;
                s.snapshot_id = guid(node, "id");
                s.provider_id = guid(node, "provider");
                s.volume_name = text(node, "volume");
                s.number = node.attribute("number").as_uint();
                s.attributes = node.attribute("attributes").as_int();
                s.created = node.attribute("created").as_llong();
                s.machine = text(node, "machine");
                d.snapshots.push_back(std::move(s));
            }
        }
        return d;
    } catch (const unreadable&) {
        return std::nullopt;
    }
}

} // namespace hostsim
