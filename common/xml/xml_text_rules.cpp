#include "common/xml/xml_text_rules.h"

#include "compat/text_blocks.h"
#include "compat/unicode.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

namespace xml::detail {

namespace {

// Documents run to megabytes of plain text, so they are searched a block at a time for what
// needs a closer look.
using compat::block;

// The byte of a character XML leaves out: a control below U+0020, or the lead of the three-byte
// forms of the surrogates (ED) and of U+FFFE and U+FFFF (EF).
bool may_be_refused_character(unsigned char c) {
    return c < 0x20 || c == 0xED || c == 0xEF;
}

unsigned refused_character_mask(const char* text) {
    return compat::bytes_outside(text, 0x20, 0xFF) | compat::bytes_among<0xED, 0xEF>(text);
}

// Where the first of the bytes in Set stands from `from` on; npos for none.
template <char... Set> std::size_t find_any(std::string_view text, std::size_t from) {
    std::size_t pos = std::min(from, text.size());
    for (; text.size() - pos >= block; pos += block)
        if (const unsigned mask = compat::bytes_among<Set...>(text.data() + pos))
            return pos + static_cast<std::size_t>(std::countr_zero(mask));
    for (; pos < text.size(); ++pos)
        if (((text[pos] == Set) || ...))
            return pos;
    return text.npos;
}

bool is_refused_at(std::string_view text, std::size_t pos) {
    const auto c = static_cast<unsigned char>(text[pos]);
    if (c < 0x20)
        return c != '\t' && c != '\n' && c != '\r';
    const auto next = [&](std::size_t i) {
        return pos + i < text.size() ? static_cast<unsigned char>(text[pos + i]) : 0u;
    };
    if (c == 0xED)
        return next(1) >= 0xA0;
    return c == 0xEF && next(1) == 0xBF && (next(2) == 0xBE || next(2) == 0xBF);
}

bool has_refused_character(std::string_view text) {
    std::size_t pos = 0;
    for (; text.size() - pos >= block; pos += block) {
        for (unsigned bits = refused_character_mask(text.data() + pos); bits != 0; bits &= bits - 1)
            if (is_refused_at(text, pos + static_cast<std::size_t>(std::countr_zero(bits))))
                return true;
    }
    for (; pos < text.size(); ++pos)
        if (may_be_refused_character(static_cast<unsigned char>(text[pos])) && is_refused_at(text, pos))
            return true;
    return false;
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

bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
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

// What stops the judging: the text is not XML, or grows too large.
struct refused_t {};

struct entity_t {
    std::string_view name;
    // With the character references of its literal already replaced, as XML reads it.
    std::string replacement;
    bool external = false;
};

// One text that is walked, the document or an entity's replacement, with the part of it that
// has gone into the expanded text.
struct walk_t {
    std::string_view text;
    std::size_t pos = 0;
    std::size_t copied = 0;
};

class judge_t {
public:
    explicit judge_t(std::string_view document)
        : document_(document), budget_(max_entity_growth * document.size()) {}

    xml_text_verdict_t run() {
        if (has_refused_character(document_))
            return {true, {}};
        try {
            walk_t top{document_};
            walk_content(top, true);
            if (!expanding_)
                return {};
            copy_up_to(top, top.text.size());
            return {false, std::move(expanded_)};
        } catch (const refused_t&) {
            return {true, {}};
        }
    }

private:
    static void require(bool holds) {
        if (!holds)
            throw refused_t();
    }

    static std::size_t behind(const walk_t& walk, std::size_t from, std::string_view close) {
        const std::size_t found = walk.text.find(close, from);
        require(found != walk.text.npos);
        return found + close.size();
    }

    // All that the expansion makes counts, also what is read only to be dropped.
    void append(std::string_view text) {
        grown_ += text.size();
        require(grown_ <= budget_);
        expanded_ += text;
    }

    void copy_up_to(walk_t& walk, std::size_t end) {
        append(walk.text.substr(walk.copied, end - walk.copied));
        walk.copied = end;
    }

    // Elements, text and the markup between them. Only the document itself, ahead of its root,
    // may declare a document type.
    void walk_content(walk_t& walk, bool is_document) {
        const std::string_view text = walk.text;
        while ((walk.pos = find_any<'<', '&'>(text, walk.pos)) != text.npos) {
            if (text[walk.pos] == '&') {
                // Outside the root a reference is text beside it.
                require(!is_document || depth_ > 0);
                reference(walk, 0);
                continue;
            }
            const std::string_view rest = text.substr(walk.pos);
            if (rest.starts_with("<!--"))
                walk.pos = behind(walk, walk.pos + 4, "-->");
            else if (rest.starts_with("<![CDATA["))
                walk.pos = behind(walk, walk.pos + 9, "]]>");
            else if (rest.starts_with("<?"))
                walk.pos = behind(walk, walk.pos + 2, "?>");
            else if (rest.starts_with("<!DOCTYPE") && is_document && !seen_element_)
                document_type(walk);
            else if (rest.starts_with("</"))
                end_tag(walk, is_document);
            else if (start_tag(walk) && is_document)
                ++depth_;
        }
        walk.pos = text.size();
    }

    void end_tag(walk_t& walk, bool is_document) {
        walk.pos = behind(walk, walk.pos + 2, ">");
        if (is_document && depth_ > 0)
            --depth_;
    }

    // Quoted values may hold a '>'; none may hold a '<'. True where the element is not empty.
    bool start_tag(walk_t& walk) {
        require(walk.pos + 1 < walk.text.size() && walk.text[walk.pos + 1] != '!');
        seen_element_ = true;
        ++walk.pos;
        for (;;) {
            walk.pos = find_any<'"', '\'', '>', '<'>(walk.text, walk.pos);
            require(walk.pos != walk.text.npos && walk.text[walk.pos] != '<');
            if (walk.text[walk.pos] == '>')
                return walk.text[walk.pos++ - 1] != '/';
            attribute_value(walk, walk.text[walk.pos++]);
        }
    }

    void attribute_value(walk_t& walk, char quote) {
        for (;;) {
            walk.pos = quote == '"' ? find_any<'"', '<', '&'>(walk.text, walk.pos)
                                    : find_any<'\'', '<', '&'>(walk.text, walk.pos);
            require(walk.pos != walk.text.npos && walk.text[walk.pos] != '<');
            if (walk.text[walk.pos] == quote) {
                ++walk.pos;
                return;
            }
            reference(walk, quote);
        }
    }

    // An entity's replacement inside a value: its quotes are data, its references are read in
    // turn, and a '<' is refused as it is in the value itself.
    void replacement_in_value(walk_t& walk, char quote) {
        while ((walk.pos = find_any<'"', '\'', '<', '&'>(walk.text, walk.pos)) != walk.text.npos) {
            const char c = walk.text[walk.pos];
            require(c != '<');
            if (c == '&') {
                reference(walk, quote);
            } else if (c == quote) {
                copy_up_to(walk, walk.pos);
                append(quote == '"' ? "&quot;" : "&apos;");
                walk.copied = ++walk.pos;
            } else {
                ++walk.pos;
            }
        }
    }

    // The reference at walk.pos, inside a value quoted by `quote`, or in content where that is 0.
    // Character references and the five predefined entities stand as they are, for the parser.
    void reference(walk_t& walk, char quote) {
        const std::size_t start = walk.pos;
        const std::size_t end = walk.text.find(';', start + 1);
        require(end != walk.text.npos && end > start + 1);
        const std::string_view name = walk.text.substr(start + 1, end - start - 1);
        walk.pos = end + 1;
        if (name.front() == '#') {
            require(character_reference(name.substr(1)).has_value());
            return;
        }
        require(std::all_of(name.begin(), name.end(), is_name_byte));
        for (const char* predefined : {"lt", "gt", "amp", "apos", "quot"})
            if (name == predefined)
                return;
        const auto found = std::find_if(entities_.begin(), entities_.end(),
                                        [&](const entity_t& entity) { return entity.name == name; });
        require(found != entities_.end() && !found->external);
        require(std::find(open_.begin(), open_.end(), name) == open_.end());
        copy_up_to(walk, start);
        walk.copied = walk.pos;
        open_.push_back(name);
        walk_t inner{found->replacement};
        if (quote != 0) {
            replacement_in_value(inner, quote);
            copy_up_to(inner, inner.text.size());
        } else {
            node_for_reference(inner, name);
        }
        open_.pop_back();
    }

    // In content the platform's DOM keeps a reference as a node of its own, named after the
    // entity and no element, with the replacement's nodes beneath it where nothing of this layer
    // looks. The replacement is read for its faults and its size, and an instruction of the same
    // name stands for the node.
    void node_for_reference(walk_t& inner, std::string_view name) {
        const std::size_t mark = expanded_.size();
        walk_content(inner, false);
        copy_up_to(inner, inner.text.size());
        expanded_.resize(mark);
        append("<?");
        append(name);
        append("?>");
    }

    static std::optional<std::uint32_t> character_reference(std::string_view digits) {
        const bool hex = !digits.empty() && digits.front() == 'x';
        if (hex)
            digits.remove_prefix(1);
        if (digits.empty())
            return std::nullopt;
        std::uint32_t value = 0;
        for (const char c : digits) {
            const int digit = digit_value(c, hex);
            if (digit < 0)
                return std::nullopt;
            value = value * (hex ? 16 : 10) + static_cast<std::uint32_t>(digit);
            if (value > 0x10FFFF)
                return std::nullopt;
        }
        return is_xml_char(value) ? std::optional<std::uint32_t>(value) : std::nullopt;
    }

    void skip_blanks(walk_t& walk) {
        while (walk.pos < walk.text.size() && is_blank(walk.text[walk.pos]))
            ++walk.pos;
    }

    std::string_view quoted(walk_t& walk) {
        require(walk.pos < walk.text.size() && (walk.text[walk.pos] == '"' || walk.text[walk.pos] == '\''));
        const std::size_t end = walk.text.find(walk.text[walk.pos], walk.pos + 1);
        require(end != walk.text.npos);
        const std::string_view value = walk.text.substr(walk.pos + 1, end - walk.pos - 1);
        walk.pos = end + 1;
        return value;
    }

    // Behind the '>' of a declaration, whose quoted parts may hold one.
    void end_of_declaration(walk_t& walk) {
        for (;;) {
            walk.pos = find_any<'"', '\'', '>'>(walk.text, walk.pos);
            require(walk.pos != walk.text.npos);
            if (walk.text[walk.pos] == '>') {
                ++walk.pos;
                return;
            }
            quoted(walk);
        }
    }

    // The name, an external identifier that is never read, and the declarations in brackets.
    // A reference to a parameter entity there is refused: it could stand for a file.
    void document_type(walk_t& walk) {
        walk.pos += 9;
        for (;;) {
            walk.pos = find_any<'"', '\'', '>', '['>(walk.text, walk.pos);
            require(walk.pos != walk.text.npos);
            const char c = walk.text[walk.pos];
            if (c == '>') {
                ++walk.pos;
                return;
            }
            if (c == '[') {
                ++walk.pos;
                internal_subset(walk);
                continue;
            }
            quoted(walk);
        }
    }

    void internal_subset(walk_t& walk) {
        for (;;) {
            skip_blanks(walk);
            const std::string_view rest = walk.text.substr(walk.pos);
            require(!rest.empty() && rest.front() != '%');
            if (rest.front() == ']') {
                ++walk.pos;
                return;
            }
            if (rest.starts_with("<!--"))
                walk.pos = behind(walk, walk.pos + 4, "-->");
            else if (rest.starts_with("<?"))
                walk.pos = behind(walk, walk.pos + 2, "?>");
            else if (rest.starts_with("<!ENTITY"))
                entity_declaration(walk);
            else if (rest.starts_with("<!"))
                end_of_declaration(walk);
            else
                require(false);
        }
    }

    std::string_view read_name(walk_t& walk) {
        const std::size_t start = walk.pos;
        while (walk.pos < walk.text.size() && is_name_byte(walk.text[walk.pos]))
            ++walk.pos;
        require(walk.pos > start);
        return walk.text.substr(start, walk.pos - start);
    }

    // The first declaration of a name is the one that counts. Parameter entities are declared
    // only for the declarations themselves, and a reference to one is refused.
    void entity_declaration(walk_t& walk) {
        walk.pos += 8;
        skip_blanks(walk);
        const bool parameter = walk.pos < walk.text.size() && walk.text[walk.pos] == '%';
        if (parameter) {
            ++walk.pos;
            skip_blanks(walk);
        }
        entity_t entity{read_name(walk), {}, false};
        skip_blanks(walk);
        const std::string_view rest = walk.text.substr(walk.pos);
        if (rest.starts_with("SYSTEM") || rest.starts_with("PUBLIC"))
            entity.external = true;
        else
            entity.replacement = replacement_of(quoted(walk));
        end_of_declaration(walk);
        if (parameter || std::any_of(entities_.begin(), entities_.end(),
                                     [&](const entity_t& known) { return known.name == entity.name; }))
            return;
        entities_.push_back(std::move(entity));
        expanding_ = true;
    }

    // Character references are replaced where the entity is declared; references to entities
    // stay, to be read where the entity is used.
    static std::string replacement_of(std::string_view literal) {
        std::string replacement;
        std::size_t pos = 0;
        for (std::size_t at; (at = literal.find_first_of("&%", pos)) != literal.npos;) {
            require(literal[at] == '&');
            replacement.append(literal.substr(pos, at - pos));
            const std::size_t end = literal.find(';', at + 1);
            require(end != literal.npos && end > at + 1);
            const std::string_view name = literal.substr(at + 1, end - at - 1);
            if (name.front() == '#') {
                const std::optional<std::uint32_t> c = character_reference(name.substr(1));
                require(c.has_value());
                char encoded[4];
                replacement.append(encoded, compat::put_utf8(encoded, *c));
            } else {
                require(std::all_of(name.begin(), name.end(), is_name_byte));
                replacement.append(literal.substr(at, end + 1 - at));
            }
            pos = end + 1;
        }
        replacement.append(literal.substr(pos));
        return replacement;
    }

    std::string_view document_;
    std::size_t budget_;
    std::vector<entity_t> entities_;
    // The entities whose replacement is being read, innermost last: one that refers to itself,
    // however indirectly, is refused.
    std::vector<std::string_view> open_;
    bool seen_element_ = false;
    // Elements open around the document's own text.
    std::size_t depth_ = 0;
    std::size_t grown_ = 0;
    bool expanding_ = false;
    std::string expanded_;
};

} // namespace

xml_text_verdict_t judge_xml_text(std::string_view utf8) {
    return judge_t(utf8).run();
}

} // namespace xml::detail
