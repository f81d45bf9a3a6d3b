#include "tools/tarv/verb.h"

#include <exception>

#include "tarvcore/config.h"
#include "tarvcore/error_composer.h"
#include "tools/tarv/line_reader.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/verb.cpp#1 $");

namespace tarv {

using tarvcore::ErrorCode;
using tarvcore::ErrorComposer;
using tarvcore::ErrorInfo;

namespace {

void split(std::string_view line, char separator, std::vector<std::string_view>& fields) {
    fields.clear();
    if (separator != '\0') {
        for (auto end = line.find(separator); end != line.npos; end = line.find(separator)) {
            fields.push_back(line.substr(0, end));
            line.remove_prefix(end + 1);
        }
    }
    fields.push_back(line);
}

ErrorInfo::Ptr check_field_count(const Layout& layout, unsigned count) {
    if (count >= layout.least && count <= layout.most) return {};
    return ErrorComposer("{@expected} fields wanted, {@count} given")
        .param("count", count)
        .param("expected", layout.least)
        .create(ErrorCode("error.tarv.usage.fields", true),
                TARVCORE_LOCATION("tarv::check_field_count()"));
}

}  // namespace

Verb::~Verb() = default;

bool LineVerb::run(const Request& request, Output& output, Output& errors) {
    if (request.has_dash && request.inputs.size() == 1) return run_lines(request, output, errors);
    if (request.has_dash && layout_.is_one_field()) {
        throw UsageError("- stands for standard input, and then is the only input");
    }
    if (request.crlf) throw UsageError("--crlf is about lines of standard input: give - as input");
    if (request.inputs.empty()) {
        throw UsageError(std::string("nothing to do: give ") + description().inputs +
                         ", or - for standard input");
    }
    return run_arguments(request, output, errors);
}

ErrorInfo::Ptr LineVerb::checked_convert(Fields fields, Result& result) {
    try {
        if (auto error = check_field_count(layout_, fields.size())) return error;
        return convert(fields, result);
    } catch (const std::exception& e) {
        return ErrorInfo::from_exception(e, TARVCORE_LOCATION("tarv::LineVerb::checked_convert()"));
    }
}

bool LineVerb::run_arguments(const Request& request, Output& output, Output& errors) {
    Result result(output, request.json ? Result::Form::json : Result::Form::block);
    const std::vector<std::string_view> arguments(request.inputs.begin(), request.inputs.end());
    const unsigned step = layout_.is_one_field() ? 1 : arguments.size();
    bool all_good = true;
    for (unsigned i = 0; i < arguments.size(); i += step) {
        const auto error = checked_convert(Fields(arguments).subspan(i, step), result);
        if (!error) {
            result.finish();
            continue;
        }
        if (error->matches("error.tarv.usage")) {
            throw UsageError(error->expanded_message().as_string());
        }
        all_good = false;
        result.clear();
        if (request.json) {
            result.fail(*error);
            continue;
        }
        // In the order of the inputs, where both streams lead to one place.
        output.flush();
        errors.write(trace_text(*error));
        errors.flush();
    }
    return all_good;
}

bool LineVerb::run_lines(const Request& request, Output& output, Output& errors) {
    Result result(output, request.json ? Result::Form::json : Result::Form::line);
    LineReader reader;
    std::string_view line;
    std::vector<std::string_view> fields;
    bool all_good = true;
    bool carriage_return_failed = false;
    while (reader.next(line)) {
        const bool has_carriage_return = line.ends_with('\r');
        if (has_carriage_return && request.crlf) line.remove_suffix(1);
        split(line, layout_.separator, fields);
        if (const auto error = checked_convert(fields, result)) {
            result.fail(*error);
            all_good = false;
            carriage_return_failed |= has_carriage_return && !request.crlf;
        } else {
            result.finish();
        }
    }
    if (carriage_return_failed) {
        output.flush();
        errors.write(
            "tarv: the lines end in CR LF, and CR counted as part of the input; "
            "--crlf drops it\n");
    }
    return all_good;
}

}  // namespace tarv
