// Bytes as text and back, on arguments, lines, and files of any size.
#include <CLI/CLI.hpp>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/transforms.h"
#include "tools/tarv/families.h"
#include "tools/tarv/file_verb.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/encode_verbs.cpp#1 $");

namespace tarv {
namespace {

using tarvcore::ErrorInfo;
using tarvcore::HexTransform;

// A verb with and without padding.
class TransformVerb : public FileVerb {
public:
    using FileVerb::FileVerb;

    void add_options(CLI::App& app) override {
        FileVerb::add_options(app);
        app.add_flag("--no-pad", no_pad_, "Without padding");
    }

protected:
    bool pad() const { return !no_pad_; }

private:
    bool no_pad_ = false;
};

template <class Transform>
class EncodeVerb : public TransformVerb {
public:
    EncodeVerb(const char* name, const char* summary, const char* examples)
        : TransformVerb(
              {name, "BYTES...", summary,
               "BYTES are those of the argument or line, or with --hex its digits' values.\n"
               "The text of a file has no line ends, not even at its end.\n",
               examples}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        std::string bytes;
        if (auto error = read_bytes(fields[0], &bytes)) return error;
        result.text("text", Transform::encode(bytes, pad()));
        return {};
    }

    void convert_file(ByteSource& source, Output& output) override {
        std::vector<char> bytes(piece_size);
        std::vector<char> text(Transform::encoded_size(piece_size) + 8);
        typename Transform::Encoder encoder(pad());
        while (const unsigned size = source.read(bytes)) {
            const char* const end = encoder.write(bytes.data(), bytes.data() + size, text.data());
            output.write(std::string_view(text.data(), end));
        }
        const char* const end = encoder.finish(text.data());
        output.write(std::string_view(text.data(), end));
    }
};

template <class Transform>
class DecodeVerb : public TransformVerb {
public:
    DecodeVerb(const char* name, const char* summary, const char* examples)
        : TransformVerb(
              {name, "TEXT...", summary,
               "Nothing in TEXT is passed over, white space and line ends neither. Padding is\n"
               "complete or, with --no-pad, may be missing. Answers the bytes as they are, or\n"
               "with --hex as digits; a file's bytes with nothing behind them.\n",
               examples}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        std::string bytes;
        if (auto error = Transform::decode_nothrow(fields[0], &bytes, pad())) return error;
        result.text("bytes", shown(std::move(bytes)));
        return {};
    }

    void convert_file(ByteSource& source, Output& output) override {
        std::vector<char> text(piece_size);
        std::vector<char> bytes(Transform::max_decoded_size(piece_size) + 8);
        typename Transform::Decoder decoder(pad());
        while (const unsigned length = source.read(text)) {
            const char* const end = decoder.write(text.data(), text.data() + length, bytes.data());
            output.write(std::string_view(bytes.data(), end));
        }
        decoder.finish();
    }
};

}  // namespace

Verbs encode_verbs() {
    Verbs verbs;
    verbs.push_back(std::make_unique<EncodeVerb<tarvcore::Base64Transform>>(
        "base64", "Bytes to Base64",
        "$ tarv encode base64 foobar\n"
        "Zm9vYmFy\n"
        "$ tarv encode base64 --hex 00ff\n"
        "AP8=\n"
        "$ printf 'foobar\\n' | tarv encode base64 -\n"
        "Zm9vYmFy\n"));
    verbs.push_back(
        std::make_unique<EncodeVerb<tarvcore::Base32Transform>>("base32", "Bytes to Base32",
                                                                "$ tarv encode base32 foobar\n"
                                                                "MZXW6YTBOI======\n"
                                                                "$ tarv encode base32 --hex 00ff\n"
                                                                "AD7Q====\n"));
    verbs.push_back(std::make_unique<EncodeVerb<HexTransform>>("hex", "Bytes to two digits each",
                                                               "$ tarv encode hex foobar\n"
                                                               "666f6f626172\n"
                                                               "$ tarv encode hex --hex 00ff\n"
                                                               "00ff\n"));
    return verbs;
}

Verbs decode_verbs() {
    Verbs verbs;
    verbs.push_back(
        std::make_unique<DecodeVerb<tarvcore::Base64Transform>>("base64", "Base64 to bytes",
                                                                "$ tarv decode base64 Zm9vYmFy\n"
                                                                "foobar\n"
                                                                "$ tarv decode base64 --hex AP8=\n"
                                                                "00ff\n"));
    verbs.push_back(std::make_unique<DecodeVerb<tarvcore::Base32Transform>>(
        "base32", "Base32 to bytes",
        "$ tarv decode base32 MZXW6YTBOI======\n"
        "foobar\n"
        "$ tarv decode base32 --hex AD7Q====\n"
        "00ff\n"));
    verbs.push_back(std::make_unique<DecodeVerb<HexTransform>>("hex", "Two digits each to bytes",
                                                               "$ tarv decode hex 666f6f626172\n"
                                                               "foobar\n"
                                                               "$ tarv decode hex --hex 00ff\n"
                                                               "00ff\n"));
    return verbs;
}

}  // namespace tarv
