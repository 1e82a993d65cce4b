#include "invoke/pipe_text.h"

#include "compat/text_blocks.h"
#include "compat/unicode.h"

#include <cstdint>
#include <cstring>

namespace win::pipes {

namespace {

// Frames run to megabytes of ASCII: a block of characters that are all ASCII (and no zero, which
// ends a frame) is moved in a few vector steps.
using compat::block;

char16_t unit_at(const std::uint8_t* bytes, std::size_t index) {
    return static_cast<char16_t>(bytes[2 * index] | bytes[2 * index + 1] << 8);
}

bool is_ascii_without_zero(const char* bytes) {
    return compat::bytes_outside(bytes, 1, 0x7F) == 0;
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
    void ascii_block(const char*) { size += block; }
    void put(char32_t c) { size += compat::utf8_length(c); }
    void unpaired() {}
};

struct utf8_writer_t {
    staged_output_t<std::string> out;
    std::size_t first_unpaired = std::string::npos;
    void unpaired() {
        if (first_unpaired == std::string::npos)
            first_unpaired = out.written();
    }
    void ascii_block(const char* narrowed) {
        char* const to = out.room(block);
        std::memcpy(to, narrowed, block);
        out.advance(to + block);
    }
    void put(char32_t c) { out.advance(compat::put_utf8(out.room(4), c)); }
};

enum class walk_until_t { frame_end, non_ascii };

// The frame's units from `i` on; true when the closing U+0000 was met. `i` is left where the walk
// stopped: at the end, behind the U+0000, or, walking until non_ascii, at the first unit that is
// not ASCII.
template <class Sink>
bool walk_frame(const std::uint8_t* bytes, std::size_t units, std::size_t& i, Sink& sink,
                walk_until_t until = walk_until_t::frame_end) {
    while (i < units) {
        char narrowed[block];
        if (units - i >= block) {
            compat::narrow_units(bytes + 2 * i, narrowed);
            if (is_ascii_without_zero(narrowed)) {
                sink.ascii_block(narrowed);
                i += block;
                continue;
            }
        }
        const char16_t unit = unit_at(bytes, i);
        if (unit == 0) {
            ++i;
            return true;
        }
        if (until == walk_until_t::non_ascii && unit >= 0x80)
            return false;
        ++i;
        const char16_t pair[2] = {unit, i < units ? unit_at(bytes, i) : char16_t(0)};
        const compat::decoded_t decoded = compat::decode_utf16({pair, i < units ? 2u : 1u});
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
        compat::widen_to_units(text, to);
        out.advance(to + 2 * block);
    }
    void put_unit(char32_t unit) {
        std::uint8_t* const to = out.room(2);
        to[0] = static_cast<std::uint8_t>(unit & 0xFF);
        to[1] = static_cast<std::uint8_t>(unit >> 8);
        out.advance(to + 2);
    }
    void put(char32_t c) {
        compat::put_utf16(c, [this](char32_t unit) { put_unit(unit); });
    }
};

template <class Sink> void walk_utf8(std::string_view text, Sink& sink) {
    std::size_t i = 0;
    while (i < text.size()) {
        if (text.size() - i >= block && is_ascii_without_zero(text.data() + i)) {
            sink.ascii_block(text.data() + i);
            i += block;
            continue;
        }
        const compat::decoded_t decoded = compat::decode_utf8(text.substr(i));
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
    frame.terminated = walk_frame(bytes.data(), units, i, writer, walk_until_t::non_ascii);
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
