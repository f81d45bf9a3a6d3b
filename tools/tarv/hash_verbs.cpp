// Hashes of bytes, on arguments, lines, and files of any size.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/murmur_hash.h"
#include "tools/tarv/families.h"
#include "tools/tarv/file_verb.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/hash_verbs.cpp#1 $");

namespace tarv {
namespace {

using tarvcore::ErrorInfo;
using tarvcore::MurmurHashContext;

std::string digits_of(const MurmurHashContext& context) {
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08lx",
                  static_cast<unsigned long>(context.calculate_digest()));
    return digits;
}

class HashVerb : public FileVerb {
public:
    HashVerb()
        : FileVerb({"", "BYTES...", "Hashes of bytes: MurmurHash3 of 32 bits",
                    "Answers 8 digits. Without --seed they differ from run to run.\n",
                    "$ tarv hash --seed 0 foobar\n"
                    "a4c4d4bd\n"
                    "$ tarv hash --seed 0 --hex 00ff\n"
                    "dd4ece94\n"
                    "$ printf 'foobar' | tarv hash --seed 0 --file -\n"
                    "a4c4d4bd\n"}) {}

    void add_options(CLI::App& app) override {
        FileVerb::add_options(app);
        app.add_option("--seed", seed_, "From 0 to 4294967295 (drawn at random)")->type_name("N");
    }

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        std::string bytes;
        if (auto error = read_bytes(fields[0], &bytes)) return error;
        result.text("hash", digits_of(context().update(bytes.data(), bytes.size())));
        return {};
    }

    void convert_file(ByteSource& source, Output& output) override {
        std::vector<char> bytes(piece_size);
        MurmurHashContext hash = context();
        while (const unsigned size = source.read(bytes))
            hash.update(bytes.data(), size);
        output.write(digits_of(hash) + '\n');
    }

private:
    MurmurHashContext context() const {
        return seed_ ? MurmurHashContext(*seed_) : MurmurHashContext();
    }

    std::optional<std::uint32_t> seed_;
};

}  // namespace

Verbs hash_verbs() {
    Verbs verbs;
    verbs.push_back(std::make_unique<HashVerb>());
    return verbs;
}

}  // namespace tarv
