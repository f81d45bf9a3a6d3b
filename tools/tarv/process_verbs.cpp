// What a process finds: the environment, and random numbers.
#include <CLI/CLI.hpp>

#include <string>
#include <string_view>

#include "tarvcore/config.h"
#include "tarvcore/error_info.h"
#include "tarvcore/process_info.h"
#include "tarvcore/random.h"
#include "tools/tarv/families.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/process_verbs.cpp#1 $");

namespace tarv {
namespace {

using tarvcore::ErrorCode;
using tarvcore::ErrorInfo;
using tarvcore::ErrorParams;

class EnvVerb : public LineVerb {
public:
    EnvVerb()
        : LineVerb({"", "NAME...", "The values of environment variables",
                    "A variable may be there and empty; one that is not there is an error.\n",
                    "$ tarv env WINDIR\n"
                    "C:\\windows\n"}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        const std::string_view name = fields[0];
        bool found = false;
        const std::string value =
            tarvcore::get_environment_variable(name.data(), name.size(), &found);
        if (!found) {
            return ErrorInfo::create(ErrorCode("error.tarv.env.missing", true),
                                     "There is no environment variable \"{@name}\"",
                                     ErrorParams().add("name", std::string(name)),
                                     TARVCORE_LOCATION("tarv::EnvVerb::convert()"));
        }
        result.text("value", value);
        return {};
    }
};

class RandomVerb : public Verb {
public:
    RandomVerb()
        : Verb({"", "", "Random numbers",
                "Each is from 0 to 4294967295, all equally likely. Not for secrets.\n",
                "$ tarv random -n 2\n"
                "\u2026\n"
                "\u2026\n"}) {}

    void add_options(CLI::App& app) override {
        app.add_option("-n", count_, "How many (1)")->type_name("N");
    }

    bool run(const Request& request, Output& output, Output&) override {
        for (unsigned i = 0; i < count_; ++i) {
            Result result(output, request.json ? Result::Form::json : Result::Form::block);
            result.number("number", tarvcore::random_uint32());
            result.finish();
        }
        return true;
    }

private:
    unsigned count_ = 1;
};

}  // namespace

Verbs env_verbs() {
    Verbs verbs;
    verbs.push_back(std::make_unique<EnvVerb>());
    return verbs;
}

Verbs random_verbs() {
    Verbs verbs;
    verbs.push_back(std::make_unique<RandomVerb>());
    return verbs;
}

}  // namespace tarv
