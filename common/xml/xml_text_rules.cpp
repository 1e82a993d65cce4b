#include "common/xml/xml_text_rules.h"

#include "common/xml/nesting_depth.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

// Documents run to megabytes of plain text, so they are searched a block at a time for the two
// things that need a closer look: a byte below U+0020, and an '&'. The block's loop has a fixed
// length and no branch, so that it takes a few vector steps.
constexpr std::size_t block = 32;

bool may_need_care(const char* text) {
#if defined(__SSE2__)
    // Where the machine has vectors: a byte is below U+0020 where the larger of it and 0x1F is
    // 0x1F, compared without sign.
    const __m128i below = _mm_set1_epi8(0x1F);
    const __m128i ampersand = _mm_set1_epi8('&');
    int care = 0;
    for (std::size_t half = 0; half < block; half += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + half));
        care |= _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(_mm_max_epu8(bytes, below), below),
                                               _mm_cmpeq_epi8(bytes, ampersand)));
    }
    return care != 0;
#else
    unsigned char bytes[block];
    std::memcpy(bytes, text, sizeof bytes);
    unsigned char care = 0;
    for (const unsigned char byte : bytes)
        care |= static_cast<unsigned char>((byte < 0x20) | (byte == '&'));
    return care != 0;
#endif
}

bool is_refused_control(unsigned char c) {
    return c < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

bool is_xml_char(std::uint32_t c) {
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= 0x10FFFF);
}

bool is_name_byte(char c) {
    const auto u = static_cast<unsigned char>(c);
    return u >= 0x80 || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           c == '_' || c == ':' || c == '-' || c == '.';
}

int digit_value(char c, bool hex) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (hex && c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (hex && c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Scans for the two rare things first, so that ordinary text costs one quick pass.
bool has_refused_control(std::string_view text, bool& has_reference) {
    std::size_t pos = 0;
    for (; text.size() - pos >= block; pos += block) {
        if (!may_need_care(text.data() + pos))
            continue;
        for (std::size_t i = pos; i < pos + block; ++i) {
            has_reference |= text[i] == '&';
            if (is_refused_control(static_cast<unsigned char>(text[i])))
                return true;
        }
    }
    for (; pos < text.size(); ++pos) {
        has_reference |= text[pos] == '&';
        if (is_refused_control(static_cast<unsigned char>(text[pos])))
            return true;
    }
    return false;
}

class reference_checker_t {
public:
    explicit reference_checker_t(std::string_view text) : text_(text) {}

    bool has_undefined_reference() {
        std::size_t pos = 0;
        while ((pos = text_.find_first_of("<&", pos)) != text_.npos) {
            if (text_[pos] == '&') {
                if (!is_defined_reference(pos))
                    return true;
            } else {
                pos = behind_markup(pos);
            }
        }
        return false;
    }

private:
    std::size_t behind(std::size_t from, const char* close) const {
        const std::size_t found = text_.find(close, from);
        return found == text_.npos ? text_.size() : found + std::strlen(close);
    }

    // Text inside comments, sections of character data, instructions and the document type
    // holds no references of the document's own.
    std::size_t behind_markup(std::size_t pos) {
        const std::string_view rest = text_.substr(pos);
        if (rest.starts_with("<!--"))
            return behind(pos + 4, "-->");
        if (rest.starts_with("<![CDATA["))
            return behind(pos + 9, "]]>");
        if (rest.starts_with("<?"))
            return behind(pos + 2, "?>");
        if (rest.starts_with("<!DOCTYPE")) {
            bool empty = false;
            const std::size_t end = nesting_depth_impl::end_of_tag(text_, pos + 2, empty);
            collect_declared_entities(text_.substr(pos, end - pos));
            return end;
        }
        return pos + 1;
    }

    void collect_declared_entities(std::string_view doctype) {
        for (std::size_t pos = 0; (pos = doctype.find("<!ENTITY", pos)) != doctype.npos;) {
            pos = doctype.find_first_not_of(" \t\r\n", pos + 8);
            if (pos == doctype.npos || doctype[pos] == '%')
                continue;
            const std::size_t end =
                std::find_if_not(doctype.begin() + pos, doctype.end(), is_name_byte) - doctype.begin();
            declared_.push_back(doctype.substr(pos, end - pos));
        }
    }

    // Moves `pos` behind the reference that starts there.
    bool is_defined_reference(std::size_t& pos) const {
        const std::size_t start = pos + 1;
        const std::size_t end = text_.find(';', start);
        if (end == text_.npos || end == start)
            return false;
        pos = end + 1;
        const std::string_view name = text_.substr(start, end - start);
        if (name.front() == '#')
            return is_character_reference(name.substr(1));
        if (!std::all_of(name.begin(), name.end(), is_name_byte))
            return false;
        for (const char* predefined : {"lt", "gt", "amp", "apos", "quot"})
            if (name == predefined)
                return true;
        return std::find(declared_.begin(), declared_.end(), name) != declared_.end();
    }

    static bool is_character_reference(std::string_view digits) {
        const bool hex = !digits.empty() && digits.front() == 'x';
        if (hex)
            digits.remove_prefix(1);
        if (digits.empty())
            return false;
        std::uint32_t value = 0;
        for (const char c : digits) {
            const int digit = digit_value(c, hex);
            if (digit < 0)
                return false;
            value = value * (hex ? 16 : 10) + static_cast<std::uint32_t>(digit);
            if (value > 0x10FFFF)
                return false;
        }
        return is_xml_char(value);
    }

    std::string_view text_;
    std::vector<std::string_view> declared_;
};

} // namespace

bool breaks_xml_text_rules(std::string_view utf8) {
    bool has_reference = false;
    if (has_refused_control(utf8, has_reference))
        return true;
    return has_reference && reference_checker_t(utf8).has_undefined_reference();
}
