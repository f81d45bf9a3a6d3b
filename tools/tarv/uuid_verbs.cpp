// Identifiers: new ones, and what is in them.
#include <CLI/CLI.hpp>

#include <string>
#include <string_view>

#include "tarvcore/config.h"
#include "tarvcore/safe_cast.h"
#include "tarvcore/uuid.h"
#include "tools/tarv/families.h"
#include "tools/tarv/number.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/uuid_verbs.cpp#1 $");

namespace tarv {
namespace {

using tarvcore::ErrorInfo;
using tarvcore::Uuid;

class NewVerb : public Verb {
public:
    NewVerb()
        : Verb({"new", "", "New identifiers",
                "Random ones (version 4), or sequential ones (version 13), which sort by time.\n",
                "$ tarv uuid new\n"
                "\u2026\n"
                "$ tarv uuid new --sequential -n 2\n"
                "\u2026\n"
                "\u2026\n"}) {}

    void add_options(CLI::App& app) override {
        app.add_flag("--random", random_, "Random ones (unless --sequential)");
        app.add_flag("--sequential", sequential_, "Sequential ones")->excludes("--random");
        app.add_option("-n", count_, "How many (1)")->type_name("N");
    }

    bool run(const Request& request, Output& output, Output&) override {
        for (unsigned i = 0; i < count_; ++i) {
            const Uuid uuid = sequential_ ? Uuid::create_sequential() : Uuid::create_random();
            Result result(output, request.json ? Result::Form::json : Result::Form::block);
            result.text("uuid", uuid.as_string());
            result.finish();
        }
        return true;
    }

private:
    bool random_ = false;
    bool sequential_ = false;
    unsigned count_ = 1;
};

// On lines, fields with their names.
class NamedFields {
public:
    explicit NamedFields(Result& result) : result_(result) {}

    void number(const char* name, unsigned long long value) {
        if (result_.form() == Result::Form::json) {
            result_.number(name, static_cast<long long>(value));
        } else {
            text(name, std::to_string(value));
        }
    }
    void text(const char* name, const std::string& value) {
        const bool json = result_.form() == Result::Form::json;
        result_.text(name, json ? value : name + ('=' + value));
    }

private:
    Result& result_;
};

class ParseVerb : public LineVerb {
public:
    ParseVerb()
        : LineVerb({"parse", "TEXT...", "Identifier text to its parts",
                    "TEXT has 36 characters, or 32 without hyphens, or 38 with braces.\n"
                    "Answers it with its version, the eight bits below the version, sequence,\n"
                    "timestamp and node; of version 12 also the legacy number and its flags.\n",
                    "$ tarv uuid parse 7c9e6679-7425-40de-944b-e07fc1f90ae7\n"
                    "7c9e6679-7425-40de-944b-e07fc1f90ae7 version=4 flags=13 sequence=5195 "
                    "timestamp=62615149183133305 node=e07fc1f90ae7\n"}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        const Uuid uuid = Uuid::from_string(fields[0].data(), fields[0].size());
        result.text("uuid", uuid.as_string());
        NamedFields named(result);
        named.number("version", uuid.version());
        named.number("flags", uuid.custom_flags());
        named.number("sequence", uuid.sequence());
        named.number("timestamp", uuid.timestamp());
        named.text("node", uuid.as_string(Uuid::format_plain).substr(20));
        if (uuid.version() == Uuid::version_legacy_interaction) {
            named.number("legacy", uuid.legacy_interaction_id());
            named.number("legacy_flags", uuid.legacy_interaction_id_flags());
            named.number("unresolved", uuid.is_unresolved_legacy_interaction_id());
        }
        return {};
    }
};

class LegacyVerb : public LineVerb {
public:
    LegacyVerb()
        : LineVerb({"legacy", "ID...", "Legacy interaction numbers to identifiers",
                    "ID is from 0 to 4294967295, and stands in the last ten digits.\n",
                    "$ tarv uuid legacy 4294967295\n"
                    "\u2026-004294967295\n"
                    "$ tarv uuid legacy --unresolved --flags 3 42\n"
                    "00000000-0000-c000-8000-030000000042\n"}) {}

    void add_options(CLI::App& app) override {
        app.add_option("--flags", flags_, "From 0 to 255 (0)")
            ->type_name("F")
            ->check(CLI::Range(0, 255));
        app.add_flag("--unresolved", unresolved_, "With zeros in place of random bits");
    }

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        long long number = 0;
        if (auto error = parse_number(fields[0], &number)) return error;
        const auto id = tarvcore::safe_cast<unsigned>(number);
        const auto flags = static_cast<unsigned char>(flags_);
        const Uuid uuid = unresolved_ ? Uuid::create_unresolved_legacy_interaction_id(id, flags)
                                      : Uuid::create_legacy_interaction_id(id, flags);
        result.text("uuid", uuid.as_string());
        return {};
    }

private:
    unsigned flags_ = 0;
    bool unresolved_ = false;
};

}  // namespace

Verbs uuid_verbs() {
    Verbs verbs;
    verbs.push_back(std::make_unique<NewVerb>());
    verbs.push_back(std::make_unique<ParseVerb>());
    verbs.push_back(std::make_unique<LegacyVerb>());
    return verbs;
}

}  // namespace tarv
