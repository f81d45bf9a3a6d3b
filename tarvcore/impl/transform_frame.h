// How bits become characters and characters bits, whatever the encoding.
//
// An encoding is described by a codec, a class with static members only:
//
//     Helper                            its class of transform_helpers.h
//     bits_per_char, bytes_per_group, chars_per_group, has_padding
//     alphabet, value_of(code)          the characters' values, or the marks of transform_tables.h
//     padding_count(bits)               of a text after whose last whole group of `bits_per_char`
//                                       so many bits were left over; only where there is padding
//     encode(bytes, size, text, pad)    for memory: writes the text whole and answers its end
//     decode_groups(text, length, bytes)
//                                       decodes groups of nothing but the alphabet, from the begin
//                                       to the first other group, and answers how many characters
//                                       they have
//     decode(text, length, bytes, require_padding)
//
// Those for memory touch nothing outside the text and the bytes, for which there is room as for the
// longest result of such an input.
#pragma once

#include <concepts>
#include <iterator>
#include <memory>
#include <utility>

#include "tarvcore/config.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/transform_concepts.h"
#include "tarvcore/impl/transform_helpers.h"
#include "tarvcore/impl/transform_tables.h"

namespace tarvcore::impl {

// Where decoding has stopped to write, and why.
struct TransformProgress {
    unsigned char* end;
    TransformFault fault;
};

template <InMemory Iterator>
const unsigned char* bytes_at(Iterator iterator) {
    return reinterpret_cast<const unsigned char*>(std::to_address(iterator));
}
template <InMemory Iterator>
const char* text_at(Iterator iterator) {
    return reinterpret_cast<const char*>(std::to_address(iterator));
}
template <class Result, InMemory Iterator>
Result* destination_at(Iterator iterator) {
    return reinterpret_cast<Result*>(std::to_address(iterator));
}

template <InMemory Iterator>
Iterator advanced(Iterator iterator, unsigned count) {
    return iterator + static_cast<std::iter_difference_t<Iterator>>(count);
}

template <ByteOutput Out>
void write_byte(Out& out, unsigned value) {
    const auto byte = static_cast<unsigned char>(value);
    if constexpr (std::output_iterator<Out, unsigned char>) {
        *out = byte;
    } else {
        *out = std::byte(byte);
    }
    ++out;
}

template <class Codec>
class TransformEncoder {
public:
    explicit TransformEncoder(Flag pad = true) : pad_(pad) {}

    template <ByteInput In, TextOutput Out>
    Out write(In first, In last, Out out) {
        if constexpr (InMemory<In> && InMemory<Out>) {
            for (; bits_ != 0 && first != last; ++first)
                put(byte_value(*first), out);
            const auto size = static_cast<unsigned>(last - first);
            const unsigned whole = size - size % Codec::bytes_per_group;
            if (whole != 0) {
                Codec::encode(bytes_at(first), whole, destination_at<char>(out), false);
                first = advanced(first, whole);
                out = advanced(out, whole / Codec::bytes_per_group * Codec::chars_per_group);
            }
        }
        for (; first != last; ++first)
            put(byte_value(*first), out);
        return out;
    }

    template <TextOutput Out>
    Out finish(Out out) {
        // Without padding no bits are ever left over.
        if constexpr (Codec::has_padding) {
            if (const unsigned bits = std::exchange(bits_, 0); bits != 0) {
                put_char(accumulator_ << (Codec::bits_per_char - bits), out);
                for (unsigned i = pad_ ? Codec::padding_count(bits) : 0; i != 0; --i)
                    *out++ = '=';
            }
        }
        return out;
    }

    // Writes a byte.
    template <TextOutput Out>
    void put(unsigned byte, Out& out) {
        accumulator_ = accumulator_ << 8 | byte;
        for (bits_ += 8; bits_ >= Codec::bits_per_char;) {
            bits_ -= Codec::bits_per_char;
            put_char(accumulator_ >> bits_, out);
        }
    }

private:
    template <TextOutput Out>
    void put_char(unsigned value, Out& out) {
        *out = Codec::alphabet[value & ((1u << Codec::bits_per_char) - 1)];
        ++out;
    }

    unsigned accumulator_ = 0;
    unsigned bits_ = 0;  // of the accumulator that are not written yet
    bool pad_;
};

template <class Codec>
class TransformDecoder {
public:
    explicit TransformDecoder(Flag require_padding = true) : require_padding_(require_padding) {}

    template <TextInput In, ByteOutput Out>
    Out write(In first, In last, Out out) {
        raise(feed(first, last, out));
        return out;
    }

    void finish() { raise(end()); }

    // The same without raising; `out` is moved on.  After a fault the decoder is of no use.
    template <TextInput In, ByteOutput Out>
    TransformFault feed(In first, In last, Out& out) {
        if constexpr (InMemory<In> && InMemory<Out>) {
            for (; place_ != 0 && first != last; ++first) {
                if (const auto fault = put(character_code(*first), out); is_fault(fault))
                    return fault;
            }
            const auto length = static_cast<unsigned>(last - first);
            if (length >= Codec::chars_per_group && !padded_) {
                const unsigned decoded = Codec::decode_groups(text_at(first), length,
                                                              destination_at<unsigned char>(out));
                first = advanced(first, decoded);
                out = advanced(out, decoded / Codec::chars_per_group * Codec::bytes_per_group);
            }
        }
        for (; first != last; ++first) {
            if (const auto fault = put(character_code(*first), out); is_fault(fault)) return fault;
        }
        return TransformFault::none;
    }

    TransformFault end() const {
        if (place_ == 0) return TransformFault::none;
        if (padded_ || require_padding_) return TransformFault::truncated_sequence;
        return check_last_bits();
    }

private:
    static bool is_fault(TransformFault fault) { return fault != TransformFault::none; }
    static void raise(TransformFault fault) {
        if (is_fault(fault)) [[unlikely]]
            throw_error(Codec::Helper::error(fault));
    }

    template <ByteOutput Out>
    TransformFault put(unsigned code, Out& out) {
        const unsigned value = code < 0x80 ? Codec::value_of(code) : invalid_mark;
        if (Codec::has_padding && (padded_ || value == padding_mark)) {
            if (value != padding_mark) return TransformFault::padding;
            // The marks go on where the group that they complete is complete.
            if (padded_ && place_ == 0) return TransformFault::invalid_character;
            padded_ = true;
        } else {
            if (value == invalid_mark) return TransformFault::invalid_character;
            accumulator_ = accumulator_ << Codec::bits_per_char | value;
            bits_ += Codec::bits_per_char;
            if (bits_ >= 8) {
                bits_ -= 8;
                write_byte(out, accumulator_ >> bits_);
            }
        }
        if (++place_ < Codec::chars_per_group) return TransformFault::none;
        place_ = 0;
        return padded_ ? check_last_bits() : TransformFault::none;
    }

    // Of a group that is not full.
    TransformFault check_last_bits() const {
        // A group of padding alone has none, and a whole character of bits too many is the begin of
        // another byte.
        if (bits_ == 0 || bits_ >= Codec::bits_per_char) return TransformFault::truncated_sequence;
        const unsigned last_bits = accumulator_ & ((1u << bits_) - 1);
        return last_bits == 0 ? TransformFault::none : TransformFault::invalid_character;
    }

    unsigned accumulator_ = 0;
    unsigned bits_ = 0;   // of the accumulator that are no byte yet
    unsigned place_ = 0;  // in the current group
    bool padded_ = false;
    bool require_padding_;
};

// The ends of what a codec's functions for memory do, in one way for all; for their sources.

// What is left after the last whole group, and the padding.
template <class Codec>
char* encode_last_group(const unsigned char* bytes, unsigned size, char* text, bool pad) {
    TransformEncoder<Codec> encoder(pad);
    for (; size != 0; --size)
        encoder.put(*bytes++, text);
    return encoder.finish(text);
}

template <class Codec>
TransformProgress decode_in_memory(const char* text, unsigned length, unsigned char* bytes,
                                   bool require_padding) {
    TransformDecoder<Codec> decoder(require_padding);
    TransformFault fault = decoder.feed(text, text + length, bytes);
    if (fault == TransformFault::none) fault = decoder.end();
    return {bytes, fault};
}

}  // namespace tarvcore::impl
