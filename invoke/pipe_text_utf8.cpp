#include "invoke/pipe_text.h"

#include "common/format/unicode_units.h"

#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace win::pipes {

namespace {

// Frames run to megabytes of ASCII: a block of this many characters that are all ASCII (and no
// zero) is moved in a few vector steps. The loops have a fixed length and go through local
// arrays, so that the compiler can see that nothing aliases. Units are read as stored, so only
// where the host is little-endian, as the frames are.
constexpr std::size_t block = 16;
constexpr bool units_as_stored = std::endian::native == std::endian::little;

char16_t unit_at(const std::uint8_t* bytes, std::size_t index) {
    return static_cast<char16_t>(bytes[2 * index] | bytes[2 * index + 1] << 8);
}

// ASCII here excludes U+0000, which ends a frame.
#if defined(__SSE2__)
// Where the machine has them, a block is two vector loads, a pack and two tests. A unit above
// 0x7FFF packs to zero and one from 0x80 up to 0x7FFF to a byte with its top bit set, so that a
// block is ASCII only when no packed byte is zero or has that bit.
__m128i packed_units(const std::uint8_t* bytes) {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 16));
    return _mm_packus_epi16(low, high);
}

bool is_ascii_vector(__m128i bytes) {
    const __m128i zero = _mm_cmpeq_epi8(bytes, _mm_setzero_si128());
    return _mm_movemask_epi8(_mm_or_si128(bytes, zero)) == 0;
}

bool is_ascii_unit_block(const std::uint8_t* bytes) {
    return units_as_stored && is_ascii_vector(packed_units(bytes));
}

bool is_ascii_byte_block(const char* text) {
    return units_as_stored && is_ascii_vector(_mm_loadu_si128(reinterpret_cast<const __m128i*>(text)));
}

void narrow_ascii_units(const std::uint8_t* bytes, char* out) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), packed_units(bytes));
}

void widen_ascii_bytes(const char* text, std::uint8_t* out) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 16), _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
}
#else
bool is_ascii_unit_block(const std::uint8_t* bytes) {
    if constexpr (!units_as_stored)
        return false;
    char16_t units[block];
    std::memcpy(units, bytes, sizeof units);
    unsigned outside = 0;
    for (const char16_t unit : units)
        outside |= static_cast<char16_t>(unit - 1) >= 0x7F ? 1u : 0u;
    return outside == 0;
}

bool is_ascii_byte_block(const char* text) {
    if constexpr (!units_as_stored)
        return false;
    unsigned char bytes[block];
    std::memcpy(bytes, text, sizeof bytes);
    unsigned outside = 0;
    for (const unsigned char byte : bytes)
        outside |= static_cast<unsigned char>(byte - 1) >= 0x7F ? 1u : 0u;
    return outside == 0;
}

void narrow_ascii_units(const std::uint8_t* bytes, char* out) {
    char16_t units[block];
    std::memcpy(units, bytes, sizeof units);
    char narrowed[block];
    for (std::size_t i = 0; i < block; ++i)
        narrowed[i] = static_cast<char>(units[i]);
    std::memcpy(out, narrowed, block);
}

void widen_ascii_bytes(const char* text, std::uint8_t* out) {
    unsigned char bytes[block];
    std::memcpy(bytes, text, sizeof bytes);
    char16_t units[block];
    for (std::size_t i = 0; i < block; ++i)
        units[i] = bytes[i];
    std::memcpy(out, units, sizeof units);
}
#endif

std::size_t utf8_length(char32_t c) {
    return c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
}

// Output goes through a small staging block and is appended to its container a block at a time:
// the container's storage is reserved once and never filled with zeros first, which for a frame
// of megabytes is a pass over memory of its own.
template <class Container> class staged_output_t {
public:
    using unit_t = typename Container::value_type;

    explicit staged_output_t(Container& target) : target_(target) {}
    staged_output_t(const staged_output_t&) = delete;
    staged_output_t& operator=(const staged_output_t&) = delete;

    // Room for `count` more units; `advance` then says where the writing ended.
    unit_t* room(std::size_t count) {
        if (stage_size - used_ < count)
            flush();
        return stage_ + used_;
    }
    void advance(const unit_t* end) { used_ = static_cast<std::size_t>(end - stage_); }
    void flush() {
        target_.insert(target_.end(), stage_, stage_ + used_);
        used_ = 0;
    }
    std::size_t written() const noexcept { return target_.size() + used_; }

private:
    static constexpr std::size_t stage_size = 1024;
    Container& target_;
    unit_t stage_[stage_size];
    std::size_t used_ = 0;
};

// Sizing and writing walk the text alike: the first pass counts, the second fills storage of
// exactly that size, so that a text of megabytes is never reallocated.
struct utf8_counter_t {
    std::size_t size = 0;
    void ascii_block(const std::uint8_t*) { size += block; }
    void put(char32_t c) { size += utf8_length(c); }
    void unpaired() {}
};

struct utf8_writer_t {
    staged_output_t<std::string> out;
    std::size_t first_unpaired = std::string::npos;
    void unpaired() {
        if (first_unpaired == std::string::npos)
            first_unpaired = out.written();
    }
    void ascii_block(const std::uint8_t* bytes) {
        char* const to = out.room(block);
        narrow_ascii_units(bytes, to);
        out.advance(to + block);
    }
    void put(char32_t c) {
        char* const to = out.room(4);
        const std::size_t length = utf8_length(c);
        static constexpr unsigned char leads[] = {0, 0, 0xC0, 0xE0, 0xF0};
        for (std::size_t i = length - 1; i > 0; --i, c >>= 6)
            to[i] = static_cast<char>(0x80 | (c & 0x3F));
        to[0] = static_cast<char>(length == 1 ? c : leads[length] | c);
        out.advance(to + length);
    }
};

enum class walk_t { to_end, ascii_only };

// The frame's units from `i` on; true when the closing U+0000 was met. `i` is left where the walk
// stopped: at the end, behind the U+0000, or, walking ascii_only, at the first unit that is not ASCII.
template <class Sink>
bool walk_frame(const std::uint8_t* bytes, std::size_t units, std::size_t& i, Sink& sink,
                walk_t walk = walk_t::to_end) {
    while (i < units) {
        if (units - i >= block && is_ascii_unit_block(bytes + 2 * i)) {
            sink.ascii_block(bytes + 2 * i);
            i += block;
            continue;
        }
        const char16_t unit = unit_at(bytes, i);
        if (unit == 0) {
            ++i;
            return true;
        }
        if (walk == walk_t::ascii_only && unit >= 0x80)
            return false;
        ++i;
        const char16_t pair[2] = {unit, i < units ? unit_at(bytes, i) : char16_t(0)};
        const unicode::decoded_t decoded = unicode::decode_utf16({pair, i < units ? 2u : 1u});
        if (!decoded.well_formed)
            sink.unpaired();
        sink.put(decoded.value);
        i += decoded.units - 1;
    }
    return false;
}

struct utf16_writer_t {
    staged_output_t<byte_buffer_t> out;
    void ascii_block(const char* text) {
        std::uint8_t* const to = out.room(2 * block);
        widen_ascii_bytes(text, to);
        out.advance(to + 2 * block);
    }
    void put_unit(char32_t unit) {
        std::uint8_t* const to = out.room(2);
        to[0] = static_cast<std::uint8_t>(unit & 0xFF);
        to[1] = static_cast<std::uint8_t>(unit >> 8);
        out.advance(to + 2);
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
        const unicode::decoded_t decoded = unicode::decode_utf8(text.substr(i));
        sink.put(decoded.value);
        i += decoded.units;
    }
}

} // namespace

// One pass for the ASCII that nearly every frame is, into storage reserved for it; only a frame
// that turns out to hold more is counted from there and given room again.
utf8_frame_t DecodeFrameUtf8(const byte_buffer_t& bytes) {
    const std::size_t units = bytes.size() / 2;
    utf8_frame_t frame;
    frame.text.reserve(units);
    utf8_writer_t writer{staged_output_t<std::string>(frame.text)};
    std::size_t i = 0;
    frame.terminated = walk_frame(bytes.data(), units, i, writer, walk_t::ascii_only);
    if (!frame.terminated && i < units) {
        writer.out.flush();
        utf8_counter_t counter;
        std::size_t counted_from = i;
        walk_frame(bytes.data(), units, counted_from, counter);
        frame.text.reserve(frame.text.size() + counter.size);
        frame.terminated = walk_frame(bytes.data(), units, i, writer);
    }
    writer.out.flush();
    frame.first_unpaired = writer.first_unpaired;
    return frame;
}

// No UTF-8 sequence makes more UTF-16 units than it has bytes, so room for one unit a byte takes
// any text in one pass.
byte_buffer_t EncodeFrameUtf8(std::string_view head, std::string_view body) {
    byte_buffer_t bytes;
    bytes.reserve(2 * (head.size() + body.size() + 1));
    utf16_writer_t writer{staged_output_t<byte_buffer_t>(bytes)};
    walk_utf8(head, writer);
    walk_utf8(body, writer);
    writer.put_unit(0);
    writer.out.flush();
    return bytes;
}

} // namespace win::pipes
