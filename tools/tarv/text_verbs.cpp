// Unicode text: what is wrong with it, and from one encoding to another.
#include <CLI/CLI.hpp>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/ucsutil.h"
#include "tools/tarv/families.h"
#include "tools/tarv/file_verb.h"
#include "tools/tarv/text_conversion.h"
#include "tools/tarv/text_pieces.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/text_verbs.cpp#1 $");

namespace tarv {
namespace {

using tarvcore::ErrorInfo;

class CheckVerb : public FileVerb {
public:
    CheckVerb()
        : FileVerb(
              {"check", "TEXT...", "Whether bytes are valid UTF-8",
               "Answers \"valid\", or the error of the first bad sequence. Sequences have up to\n"
               "six bytes; surrogates, U+FEFF, U+FFFE and U+FFFF are refused.\n",
               "$ tarv text check --hex c3a9\n"
               "valid\n"
               "$ printf 'caf\\xc3\\xa9\\nfine\\n' | tarv text check -\n"
               "valid\n"
               "valid\n"}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        std::string bytes;
        if (auto error = read_bytes(fields[0], &bytes)) return error;
        tarvcore::check_valid_utf8(bytes.data(), bytes.size());
        result.text("verdict", verdict);
        return {};
    }

    void convert_file(ByteSource& source, Output& output) override {
        TextPieces pieces(source, Encoding::utf8, false);
        for (auto piece = pieces.next(); !piece.empty(); piece = pieces.next())
            tarvcore::check_valid_utf8(piece.data(), piece.size());
        output.write(verdict);
        output.write("\n");
    }

private:
    static constexpr std::string_view verdict = "valid";
};

Encoding encoding_of(const std::string& name) {
    return name == "utf8"      ? Encoding::utf8
           : name == "utf16le" ? Encoding::utf16le
                               : Encoding::utf32le;
}

class ConvertVerb : public FileVerb {
public:
    ConvertVerb()
        : FileVerb(
              {"convert", "TEXT...", "Text from one encoding to another",
               "Answers bytes as they are, or with --hex as digits; a file's with nothing behind\n"
               "them. A character that is not valid, or that --to does not have, is an error, or\n"
               "becomes the one of --replace, which takes one unit of --to: in utf8 it is ASCII.\n",
               "$ tarv text convert --from utf8 --to utf16le --hex c3a9\n"
               "e900\n"
               "$ printf '\\xffcaf\\n' | tarv text convert --from utf8 --to utf8 --replace ? "
               "--file -\n"
               "?caf\n"}) {}

    void add_options(CLI::App& app) override {
        FileVerb::add_options(app);
        const CLI::IsMember is_encoding({"utf8", "utf16le", "utf32le"});
        app.add_option("--from", from_, "The encoding of the input")
            ->required()
            ->check(is_encoding);
        app.add_option("--to", to_, "The encoding of the answer")->required()->check(is_encoding);
        app.add_option("--replace", replacement_, "Put this character in place of bad ones");
    }

    bool run(const Request& request, Output& output, Output& errors) override {
        conversion_ = TextConversion(encoding_of(from_), encoding_of(to_), replacement());
        return FileVerb::run(request, output, errors);
    }

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        std::string bytes;
        if (auto error = read_bytes(fields[0], &bytes)) return error;
        result.text("bytes", shown(conversion_(bytes)));
        return {};
    }

    void convert_file(ByteSource& source, Output& output) override {
        TextPieces pieces(source, conversion_.from(), conversion_.replaces());
        for (auto piece = pieces.next(); !piece.empty(); piece = pieces.next())
            output.write(conversion_(piece));
    }

private:
    unsigned replacement() const {
        if (!replacement_) return 0;
        unsigned c = 0;
        const unsigned length = replacement_->size();
        if (length == 0 || tarvcore::utf8_to_ucs4_char(replacement_->data(), length, &c) != length)
            throw UsageError("--replace takes one character");
        if (c >= (to_ == "utf8" ? 0x80u : to_ == "utf16le" ? 0x10000u : 0x80000000u))
            throw UsageError("--replace takes a character that is one unit of " + to_);
        return c;
    }

    std::string from_;
    std::string to_;
    std::optional<std::string> replacement_;
    TextConversion conversion_{Encoding::utf8, Encoding::utf8, 0};
};

}  // namespace

Verbs text_verbs() {
    Verbs verbs;
    verbs.push_back(std::make_unique<CheckVerb>());
    verbs.push_back(std::make_unique<ConvertVerb>());
    return verbs;
}

}  // namespace tarv
