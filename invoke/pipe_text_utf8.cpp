#include "invoke/pipe_text.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace win::pipes {

namespace {

constexpr char32_t replacement_character = 0xFFFD;
// Frames run to megabytes of ASCII: a block of this many characters that are all ASCII (and no
// zero) is moved eight bytes at a time. The words are read as stored, so only where the host
// is little-endian, as the frames are.
constexpr std::size_t block = 16;
constexpr bool words_are_little_endian = std::endian::native == std::endian::little;

char16_t unit_at(const std::uint8_t* bytes, std::size_t index) {
    return static_cast<char16_t>(bytes[2 * index] | bytes[2 * index + 1] << 8);
}

std::uint64_t word_at(const void* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Four units below U+0080 and none of them zero.
bool is_ascii_unit_word(std::uint64_t units) {
    constexpr std::uint64_t ones = 0x0001000100010001u;
    return (units & 0xFF80FF80FF80FF80u) == 0 && ((units - ones) & ~units & 0x8000800080008000u) == 0;
}

// Eight bytes below 0x80 and none of them zero.
bool is_ascii_byte_word(std::uint64_t bytes) {
    constexpr std::uint64_t ones = 0x0101010101010101u;
    return (bytes & 0x8080808080808080u) == 0 && ((bytes - ones) & ~bytes & 0x8080808080808080u) == 0;
}

bool is_ascii_unit_block(const std::uint8_t* bytes) {
    if constexpr (!words_are_little_endian)
        return false;
    for (std::size_t i = 0; i < 2 * block; i += 8)
        if (!is_ascii_unit_word(word_at(bytes + i)))
            return false;
    return true;
}

bool is_ascii_byte_block(const char* text) {
    if constexpr (!words_are_little_endian)
        return false;
    return is_ascii_byte_word(word_at(text)) && is_ascii_byte_word(word_at(text + 8));
}

// The low bytes of four units, in order.
std::uint32_t narrowed(std::uint64_t units) {
    units = (units | (units >> 8)) & 0x0000FFFF0000FFFFu;
    return static_cast<std::uint32_t>(units | (units >> 16));
}

// Four bytes as four units, in order.
std::uint64_t widened(std::uint32_t bytes) {
    std::uint64_t units = (bytes | (std::uint64_t(bytes) << 16)) & 0x0000FFFF0000FFFFu;
    return (units | (units << 8)) & 0x00FF00FF00FF00FFu;
}

std::size_t utf8_length(char32_t c) {
    return c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
}

// The character at the start of UTF-8 text; a sequence that is not well-formed gives U+FFFD
// for its maximal subpart (the longest start of a well-formed sequence, or one byte).
char32_t decode_utf8(std::string_view text, std::size_t& taken) {
    const auto lead = static_cast<unsigned char>(text[0]);
    taken = 1;
    if (lead < 0x80)
        return lead;
    std::size_t length = 0;
    char32_t value = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        value = lead & 0x1Fu;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        value = lead & 0x0Fu;
        low = lead == 0xE0 ? 0xA0 : 0x80;
        high = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        value = lead & 0x07u;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return replacement_character;
    }
    for (taken = 1; taken < length; ++taken) {
        if (taken == text.size())
            return replacement_character;
        const auto next = static_cast<unsigned char>(text[taken]);
        if (next < low || next > high)
            return replacement_character;
        value = (value << 6) | (next & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    return value;
}

// Sizing and writing walk the text alike: the first pass counts, the second fills storage of
// exactly that size, so that a text of megabytes is never reallocated.
struct utf8_counter_t {
    std::size_t size = 0;
    void ascii_block(const std::uint8_t*) { size += block; }
    void put(char32_t c) { size += utf8_length(c); }
};

struct utf8_writer_t {
    char* out;
    void ascii_block(const std::uint8_t* bytes) {
        for (std::size_t i = 0; i < block; i += 4) {
            const std::uint32_t four = narrowed(word_at(bytes + 2 * i));
            std::memcpy(out + i, &four, sizeof four);
        }
        out += block;
    }
    void put(char32_t c) {
        if (c < 0x80) {
            *out++ = static_cast<char>(c);
            return;
        }
        const std::size_t length = utf8_length(c);
        static constexpr unsigned char leads[] = {0, 0, 0xC0, 0xE0, 0xF0};
        for (std::size_t i = length - 1; i > 0; --i, c >>= 6)
            out[i] = static_cast<char>(0x80 | (c & 0x3F));
        out[0] = static_cast<char>(leads[length] | c);
        out += length;
    }
};

// True when the closing U+0000 was met.
template <class Sink> bool walk_frame(const std::uint8_t* bytes, std::size_t units, Sink& sink) {
    std::size_t i = 0;
    while (i < units) {
        if (units - i >= block && is_ascii_unit_block(bytes + 2 * i)) {
            sink.ascii_block(bytes + 2 * i);
            i += block;
            continue;
        }
        const char16_t unit = unit_at(bytes, i++);
        if (unit == 0)
            return true;
        if (unit < 0xD800 || unit > 0xDFFF) {
            sink.put(unit);
        } else if (unit <= 0xDBFF && i < units && unit_at(bytes, i) >= 0xDC00 &&
                   unit_at(bytes, i) <= 0xDFFF) {
            sink.put(0x10000 + ((char32_t(unit) - 0xD800) << 10) + (char32_t(unit_at(bytes, i)) - 0xDC00));
            ++i;
        } else {
            sink.put(replacement_character);
        }
    }
    return false;
}

struct utf16_counter_t {
    std::size_t units = 0;
    void ascii_block(const char*) { units += block; }
    void put(char32_t c) { units += c >= 0x10000 ? 2 : 1; }
};

struct utf16_writer_t {
    std::uint8_t* out;
    void ascii_block(const char* text) {
        for (std::size_t i = 0; i < block; i += 4) {
            std::uint32_t four;
            std::memcpy(&four, text + i, sizeof four);
            const std::uint64_t units = widened(four);
            std::memcpy(out + 2 * i, &units, sizeof units);
        }
        out += 2 * block;
    }
    void put_unit(char32_t unit) {
        *out++ = static_cast<std::uint8_t>(unit & 0xFF);
        *out++ = static_cast<std::uint8_t>(unit >> 8);
    }
    void put(char32_t c) {
        if (c < 0x10000) {
            put_unit(c);
            return;
        }
        c -= 0x10000;
        put_unit(0xD800 + (c >> 10));
        put_unit(0xDC00 + (c & 0x3FF));
    }
};

template <class Sink> void walk_utf8(std::string_view text, Sink& sink) {
    std::size_t i = 0;
    while (i < text.size()) {
        if (text.size() - i >= block && is_ascii_byte_block(text.data() + i)) {
            sink.ascii_block(text.data() + i);
            i += block;
            continue;
        }
        std::size_t taken = 0;
        sink.put(decode_utf8(text.substr(i), taken));
        i += taken;
    }
}

} // namespace

utf8_frame_t DecodeFrameUtf8(const byte_buffer_t& bytes) {
    const std::size_t units = bytes.size() / 2;
    utf8_counter_t counter;
    utf8_frame_t frame;
    frame.terminated = walk_frame(bytes.data(), units, counter);
    frame.text.resize(counter.size);
    utf8_writer_t writer{frame.text.data()};
    walk_frame(bytes.data(), units, writer);
    return frame;
}

byte_buffer_t EncodeFrameUtf8(std::string_view head, std::string_view body) {
    utf16_counter_t counter;
    walk_utf8(head, counter);
    walk_utf8(body, counter);
    byte_buffer_t bytes(2 * (counter.units + 1));
    utf16_writer_t writer{bytes.data()};
    walk_utf8(head, writer);
    walk_utf8(body, writer);
    writer.put_unit(0);
    return bytes;
}

} // namespace win::pipes
