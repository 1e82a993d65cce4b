#include "client/response.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/xml/xml_node.h"
#include "invoke/base64.h"

#include <tinyxml.h>

namespace client {

namespace {

const std::wstring success_prefix = L"xml:";
const std::wstring failure_prefix = L"err:";
const char* const output_root = "OutputArguments";

bool has_prefix(const std::wstring& text, const std::wstring& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

response_argument_t read_argument(const TiXmlElement& element) {
    response_argument_t argument{from_utf8(element.ValueStr()), {}};
    for (const TiXmlAttribute* attribute = element.FirstAttribute(); attribute; attribute = attribute->Next())
        argument.attributes.emplace_back(from_utf8(attribute->NameTStr()), from_utf8(attribute->ValueStr()));
    return argument;
}

std::vector<response_argument_t> read_arguments(const std::wstring& document) {
    std::shared_ptr<TiXmlDocument> parsed;
    try {
        parsed = parse_xml_utf8(to_utf8(document));
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("The response document can't be read.", e);
    }
    const TiXmlElement* root = parsed->RootElement();
    if (!root || root->ValueStr() != output_root)
        throw exc::runtime_exc_t("The response document has no root element '%1'.", output_root);
    std::vector<response_argument_t> arguments;
    for (const TiXmlElement* child = root->FirstChildElement(); child; child = child->NextSiblingElement())
        arguments.push_back(read_argument(*child));
    return arguments;
}

} // namespace

const std::wstring& response_argument_t::Attribute(const std::wstring& attribute) const {
    for (const auto& [key, value] : attributes) {
        if (key == attribute)
            return value;
    }
    throw exc::runtime_exc_t("The argument '%1' has no attribute '%2'.", to_ansi_nothrow(name),
                             to_ansi_nothrow(attribute));
}

CResponse CResponse::FromFrame(const std::wstring& frame) {
    CResponse response;
    response.frame = frame;
    if (has_prefix(frame, success_prefix)) {
        response.kind = response_kind_t::success;
        response.body = frame.substr(success_prefix.size());
        response.arguments = read_arguments(response.body);
    } else if (has_prefix(frame, failure_prefix)) {
        response.kind = response_kind_t::failure;
        response.body = frame.substr(failure_prefix.size());
    } else {
        response.body = frame;
    }
    return response;
}

const response_argument_t& CResponse::Argument(const std::wstring& name) const {
    for (const response_argument_t& argument : arguments) {
        if (iequals(argument.name, name))
            return argument;
    }
    throw exc::runtime_exc_t("The response has no argument '%1'.", to_ansi_nothrow(name));
}

const std::wstring& CResponse::Value(const std::wstring& name) const {
    return Argument(name).Attribute(L"value");
}

std::wstring CResponse::Decoded(const std::wstring& name) const {
    return DecodeEncodedValue(Value(name));
}

std::wstring DecodeEncodedValue(const std::wstring& value) {
    // Base64 is ASCII; anything else is where the lenient decoder stops.
    std::string ascii(value.size(), '?');
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] < 0x80)
            ascii[i] = static_cast<char>(value[i]);
    }
    std::string bytes = wrap::base64_decode(ascii);
    bytes.resize(bytes.find('\0') == std::string::npos ? bytes.size() : bytes.find('\0'));
    return from_utf8(bytes);
}

} // namespace client
