// Error codes, messages, and the errors of the operating system.
#include <CLI/CLI.hpp>

#include <limits>
#include <optional>
#include <string>

#include "tarvcore/config.h"
#include "tarvcore/error_composer.h"
#include "tarvcore/error_info.h"
#include "tarvcore/error_params.h"
#include "tarvcore/os_error.h"
#include "tarvcore/safe_cast.h"
#include "tools/tarv/families.h"
#include "tools/tarv/number.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/error_verbs.cpp#1 $");

namespace tarv {
namespace {

using tarvcore::ErrorCode;
using tarvcore::ErrorComposer;
using tarvcore::ErrorInfo;
using tarvcore::ErrorParams;
using tarvcore::safe_cast;

void add_code_and_message(Result& result, const ErrorInfo& record) {
    const auto message = record.expanded_message();
    result.text("code", record.code().as_string_view());
    if (result.form() == Result::Form::json) {
        result.text("message", message.as_string_view());
    } else {
        result.text("message", on_one_line(message.as_string_view()));
    }
}

class ErrnoVerb : public LineVerb {
public:
    ErrnoVerb()
        : LineVerb(
              {"errno", "NUMBER...", "What an errno value means",
               "Answers the whole record for an argument, CODE MESSAGE for a line of standard\n"
               "input.\n",
               "$ printf '2\\n' | tarv error errno -\n"
               "error.errno.ENOENT No such file, directory, or resource\n"}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        long long number = 0;
        if (auto error = parse_number(fields[0], &number)) return error;
        const auto record = ErrorInfo::from_errno(TARVCORE_LOCATION("tarv::ErrnoVerb::convert()"),
                                                  safe_cast<int>(number));
        switch (result.form()) {
            case Result::Form::line:
                add_code_and_message(result, *record);
                break;
            case Result::Form::block:
                result.block(trace_text(*record));
                break;
            case Result::Form::json:
                result.record(*record);
                break;
        }
        return {};
    }
};

class WinVerb : public LineVerb {
public:
    WinVerb()
        : LineVerb(
              {"win", "NUMBER...", "What a Windows error number means",
               "Answers ERRNO CODE MESSAGE: the errno value that corresponds to the number, 0 if\n"
               "none does, and code and message of the number itself.\n",
               "$ tarv error win 5 32\n"
               "13 error.os.windows.5 Access denied.\n"
               "1 error.os.windows.32 Sharing violation.\n"}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        long long number = 0;
        if (auto error = parse_number(fields[0], &number)) return error;
        const auto code = safe_cast<unsigned long>(number);
        result.number("errno", tarvcore::errno_from_winerror(code));
        add_code_and_message(result, *ErrorInfo::from_winerror_nomap(
                                         TARVCORE_LOCATION("tarv::WinVerb::convert()"), {}, code));
        return {};
    }
};

class MatchVerb : public LineVerb {
public:
    MatchVerb()
        : LineVerb(
              {"match", "CODE PATTERN", "Whether an error code belongs to a family",
               "Answers yes or no. A code belongs to the family of every prefix of it that ends\n"
               "at a dot; the empty pattern is the family of all codes, \".\" of all but the\n"
               "empty one. On a line of standard input one blank stands between the two.\n",
               "$ tarv error match error.tarvcore.uuid.parse error.tarvcore\n"
               "yes\n"},
              {2, 2, ' '}) {}

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        const ErrorCode code(fields[0].data(), fields[0].size(), false);
        const bool matches = code.matches(fields[1].data(), fields[1].size());
        result.truth("matches", matches);
        return {};
    }
};

class ExpandVerb : public LineVerb {
public:
    ExpandVerb()
        : LineVerb(
              {"expand", "TEMPLATE NAME=VALUE...", "Put values into a message template",
               "Answers the template with every {@NAME} replaced by its value; names without a\n"
               "value stay. On a line of standard input one TAB stands between template and\n"
               "values, so that all of them may contain blanks.\n",
               "$ tarv error expand \"Bad {@type} '{@value}'\" type=int value=-1\n"
               "Bad int '-1'\n"},
              {1, Layout::any_number, '\t'}) {}

    void add_options(CLI::App& app) override {
        app.add_option_function<std::string>(
               "--limit", [this](const std::string& text) { limit_ = parse_limit(text); },
               "Cut values longer than that, and put \"...\" behind them")
            ->type_name("BYTES");
    }

protected:
    ErrorInfo::Ptr convert(Fields fields, Result& result) override {
        ErrorParams params;
        for (const std::string_view pair : fields.subspan(1)) {
            const auto equals = pair.find('=');
            if (equals == pair.npos) return not_a_pair(pair);
            const std::string_view value = pair.substr(equals + 1);
            params.add(pair.data(), equals, value.data(), value.size());
        }
        const std::string_view text = fields[0];
        const auto message =
            limit_ ? params.expanded_message_with_limit(text.data(), text.size(), *limit_)
                   : params.expanded_message(text.data(), text.size());
        result.text("message", message.as_string_view());
        return {};
    }

private:
    static unsigned parse_limit(const std::string& text) {
        long long limit = 0;
        const auto error = parse_number(text, &limit);
        if (error || limit < 0 || limit > std::numeric_limits<unsigned>::max()) {
            throw UsageError("--limit takes a number of bytes, not \"" + text + '"');
        }
        return static_cast<unsigned>(limit);
    }

    static ErrorInfo::Ptr not_a_pair(std::string_view text) {
        return ErrorComposer("Not of the form NAME=VALUE: \"{@text}\"")
            .param("text", std::string(text))
            .create(ErrorCode("error.tarv.usage.pair", true),
                    TARVCORE_LOCATION("tarv::ExpandVerb::not_a_pair()"));
    }

    std::optional<unsigned> limit_;
};

}  // namespace

Verbs error_verbs() {
    Verbs verbs;
    verbs.push_back(std::make_unique<ErrnoVerb>());
    verbs.push_back(std::make_unique<WinVerb>());
    verbs.push_back(std::make_unique<MatchVerb>());
    verbs.push_back(std::make_unique<ExpandVerb>());
    return verbs;
}

}  // namespace tarv
