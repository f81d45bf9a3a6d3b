// Bytes as text and back: Base64, Base32 and hexadecimal digits (RFC 4648).
#pragma once

#include <cstddef>
#include <iterator>
#include <ranges>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "tarvcore/config.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/error_info.h"
#include "tarvcore/impl/base32_codec.h"
#include "tarvcore/impl/base64_codec.h"
#include "tarvcore/impl/hex_codec.h"
#include "tarvcore/impl/transform_concepts.h"
#include "tarvcore/impl/transform_frame.h"

namespace tarvcore {

// The operations of one encoding, all static: this is what Base64Transform, Base32Transform and
// HexTransform have.
//
//     std::string text = Base64Transform::encode(bytes);           // any range of bytes in memory
//     auto bytes = Base64Transform::decode<std::vector<unsigned char>>(text);
//     char* end = Base64Transform::encode(first, last, buffer);    // any iterators
//     Base64Transform::encode(first, last, message);               // appended to a std::string
//
// Sources of encoders are bytes: anything of one byte but bool.  Sources of decoders are characters
// of any width; what is above ASCII is in no alphabet.  Where source and destination are in memory,
// vector instructions do the work.  Source and destination do not overlap.  A destination in memory
// has room for `encoded_size` or `max_decoded_size`; what it has beyond is not touched.
//
// Decoding is strict:
//
// - Nothing is skipped: white space and line ends are invalid characters.
// - Padding is complete or, with `require_padding` false, may be missing altogether.  Then the end
//   of the text must be the end of a byte, short of a character.
// - Nothing follows the padding, not even another text.
// - The bits that the last character has too many are zero: there is one text for given bytes (and
//   the other alphabet or case), as RFC 4648 allows to demand in its section 3.5.
//
// The first fault in the order of the text is raised, or answered by the `_nothrow` form.  CODE is
// "error.tarvcore.transforms.base64", ".base32" or ".hex":
//
//     CODE.invalid      a character outside the alphabet; padding after complete padding; bits of
//                       the last character that are not zero
//     CODE.padding      anything but padding after the first padding character
//     CODE.truncated    the text ends within a group of characters: without padding or with part
//                       of it; or, padded or not, where no byte ends ("A", "A===", "====")
//
// Thread safety: there is no state.
template <class Codec>
class Transform {
public:
    // In pieces, in constant memory: `write` for each piece, which need not fill groups, and
    // `finish` at the end, which begins anew.
    //
    //     Base64Transform::Encoder encoder;
    //     while (read(&piece)) out = encoder.write(piece.begin(), piece.end(), out);
    //     out = encoder.finish(out);
    //
    // A destination in memory has room for eight more than `encoded_size` of the piece, and at the
    // end for eight; that of a decoder for eight more than `max_decoded_size` of the piece.
    using Encoder = impl::TransformEncoder<Codec>;

    // The same; `finish` writes nothing, and raises what is wrong with the end of the text.  A
    // decoder that has raised, or finished, is of no further use.
    //
    //     Base64Transform::Decoder decoder;
    //     while (read(&piece)) out = decoder.write(piece.begin(), piece.end(), out);
    //     decoder.finish();
    using Decoder = impl::TransformDecoder<Codec>;

    // The exact length of a text.  Raises std::length_error where it is beyond std::size_t.
    static constexpr std::size_t encoded_size(std::size_t byte_count, impl::Flag pad = true);
    // The most bytes that a text of that length can have.
    static constexpr std::size_t max_decoded_size(std::size_t length);

    // Writes characters and answers their end.  `pad`: complete the last group with "=" (there are
    // none among hexadecimal digits).  Cannot fail.
    template <impl::ByteInput In, impl::TextOutput Out>
    static Out encode(In first, In last, Out out, impl::Flag pad = true);

    // Appends to a text, which the source is not part of.
    template <impl::ByteInput In>
    static void encode(In first, In last, std::string& text, impl::Flag pad = true);

    // The whole text.  A string's bytes, a literal's without the terminator.
    static std::string encode(std::string_view bytes, impl::Flag pad = true);
    template <impl::ByteRange Bytes>
    static std::string encode(const Bytes& bytes, impl::Flag pad = true);

    // Writes bytes and answers their end.  Where it raises, the bytes before the fault may have
    // been written, and in memory any behind them within the room for the text.
    template <impl::TextInput In, impl::ByteOutput Out>
    static Out decode(In first, In last, Out out, impl::Flag require_padding = true);

    // Appends to bytes, which the source is not part of.  They are as before where it raises.
    template <impl::TextInput In>
    static void decode(In first, In last, std::string& bytes, impl::Flag require_padding = true);

    // All bytes: a std::string, std::vector<unsigned char> or the like.
    template <impl::ByteContainer Bytes = std::string>
    static Bytes decode(std::string_view text, impl::Flag require_padding = true);

    // The same without raising.  `*bytes` is replaced, or after a fault left alone.
    template <impl::ByteContainer Bytes>
    [[nodiscard]] static ErrorInfo::Ptr decode_nothrow(std::string_view text, Bytes* bytes,
                                                       impl::Flag require_padding = true);

private:
    static void append(const unsigned char* bytes, std::size_t size, std::string& text, bool pad);
    // Puts the bytes behind the `offset` first ones in a container; after a fault, nothing.
    template <impl::ByteContainer Bytes>
    static impl::TransformFault decode_behind(const char* text, std::size_t length, Bytes& bytes,
                                              std::size_t offset, bool require_padding);
    static void raise(impl::TransformFault fault) {
        if (fault != impl::TransformFault::none) [[unlikely]]
            throw_error(Codec::Helper::error(fault));
    }
};

// Three bytes in four characters.  Encodes in the standard alphabet; decodes that and the one that
// is safe in URLs and file names ("-" and "_" for "+" and "/"), or a mixture.  "f" is "Zg==".
using Base64Transform = Transform<impl::Base64Codec>;

// Five bytes in eight characters, upper-case letters and the digits from 2 to 7; nothing else is
// decoded.  "f" is "MY======".
using Base32Transform = Transform<impl::Base32Codec>;

// Each byte in two digits, the higher four bits first.  Encodes in lower case, decodes both cases.
// The flags of padding change nothing.  "f" is "66".
using HexTransform = Transform<impl::HexCodec>;

template <class Codec>
constexpr std::size_t Transform<Codec>::encoded_size(std::size_t byte_count, impl::Flag pad) {
    constexpr unsigned long long chars = Codec::chars_per_group;
    const std::size_t rest = byte_count % Codec::bytes_per_group;
    const std::size_t rest_chars =
        rest == 0 ? 0
        : pad     ? Codec::chars_per_group
                  : (rest * 8 + Codec::bits_per_char - 1) / Codec::bits_per_char;
    const unsigned long long size = byte_count / Codec::bytes_per_group * chars + rest_chars;
    if (size > static_cast<std::size_t>(-1)) {
        throw std::length_error("tarvcore::Transform : excessive length");
    }
    return static_cast<std::size_t>(size);
}

template <class Codec>
constexpr std::size_t Transform<Codec>::max_decoded_size(std::size_t length) {
    return length / Codec::chars_per_group * Codec::bytes_per_group +
           length % Codec::chars_per_group * Codec::bits_per_char / 8;
}

template <class Codec>
template <impl::ByteInput In, impl::TextOutput Out>
Out Transform<Codec>::encode(In first, In last, Out out, impl::Flag pad) {
    if constexpr (impl::InMemory<In> && impl::InMemory<Out>) {
        char* const text = impl::destination_at<char>(out);
        char* const end =
            Codec::encode(impl::bytes_at(first), static_cast<unsigned>(last - first), text, pad);
        return impl::advanced(out, static_cast<unsigned>(end - text));
    } else {
        Encoder encoder(pad);
        return encoder.finish(encoder.write(std::move(first), std::move(last), std::move(out)));
    }
}

template <class Codec>
void Transform<Codec>::append(const unsigned char* bytes, std::size_t size, std::string& text,
                              bool pad) {
    const std::size_t offset = text.size();
    text.append(encoded_size(size, pad), '\0');
    Codec::encode(bytes, size, text.data() + offset, pad);
}

template <class Codec>
template <impl::ByteInput In>
void Transform<Codec>::encode(In first, In last, std::string& text, impl::Flag pad) {
    if constexpr (impl::InMemory<In>) {
        append(impl::bytes_at(first), static_cast<std::size_t>(last - first), text, pad);
    } else {
        encode(std::move(first), std::move(last), std::back_inserter(text), pad);
    }
}

template <class Codec>
std::string Transform<Codec>::encode(std::string_view bytes, impl::Flag pad) {
    std::string text;
    append(impl::bytes_at(bytes.begin()), bytes.size(), text, pad);
    return text;
}

template <class Codec>
template <impl::ByteRange Bytes>
std::string Transform<Codec>::encode(const Bytes& bytes, impl::Flag pad) {
    std::string text;
    append(impl::bytes_at(std::ranges::data(bytes)), std::ranges::size(bytes), text, pad);
    return text;
}

template <class Codec>
template <impl::TextInput In, impl::ByteOutput Out>
Out Transform<Codec>::decode(In first, In last, Out out, impl::Flag require_padding) {
    if constexpr (impl::InMemory<In> && impl::InMemory<Out>) {
        unsigned char* const bytes = impl::destination_at<unsigned char>(out);
        const auto [end, fault] = Codec::decode(
            impl::text_at(first), static_cast<unsigned>(last - first), bytes, require_padding);
        raise(fault);
        return impl::advanced(out, static_cast<unsigned>(end - bytes));
    } else {
        Decoder decoder(require_padding);
        out = decoder.write(std::move(first), std::move(last), std::move(out));
        decoder.finish();
        return out;
    }
}

template <class Codec>
template <impl::ByteContainer Bytes>
impl::TransformFault Transform<Codec>::decode_behind(const char* text, std::size_t length,
                                                     Bytes& bytes, std::size_t offset,
                                                     bool require_padding) {
    bytes.resize(offset + max_decoded_size(length));
    auto* const begin = reinterpret_cast<unsigned char*>(bytes.data()) + offset;
    const auto [end, fault] = Codec::decode(text, length, begin, require_padding);
    const bool good = fault == impl::TransformFault::none;
    bytes.resize(good ? offset + static_cast<std::size_t>(end - begin) : offset);
    return fault;
}

template <class Codec>
template <impl::TextInput In>
void Transform<Codec>::decode(In first, In last, std::string& bytes, impl::Flag require_padding) {
    const std::size_t offset = bytes.size();
    if constexpr (impl::InMemory<In>) {
        raise(decode_behind(impl::text_at(first), static_cast<std::size_t>(last - first), bytes,
                            offset, require_padding));
    } else {
        try {
            decode(std::move(first), std::move(last), std::back_inserter(bytes), require_padding);
        } catch (...) {
            bytes.resize(offset);
            throw;
        }
    }
}

template <class Codec>
template <impl::ByteContainer Bytes>
Bytes Transform<Codec>::decode(std::string_view text, impl::Flag require_padding) {
    Bytes bytes;
    raise(decode_behind(text.data(), text.size(), bytes, 0, require_padding));
    return bytes;
}

template <class Codec>
template <impl::ByteContainer Bytes>
ErrorInfo::Ptr Transform<Codec>::decode_nothrow(std::string_view text, Bytes* bytes,
                                                impl::Flag require_padding) {
    Bytes decoded;
    const impl::TransformFault fault =
        decode_behind(text.data(), text.size(), decoded, 0, require_padding);
    if (fault != impl::TransformFault::none) return Codec::Helper::error(fault);
    *bytes = std::move(decoded);
    return {};
}

}  // namespace tarvcore
