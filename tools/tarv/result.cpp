#include "tools/tarv/result.h"

#include <charconv>
#include <sstream>
#include <vector>

#include "tarvcore/config.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/result.cpp#1 $");

namespace tarv {

using nlohmann::ordered_json;
using tarvcore::ErrorInfo;

namespace {

ordered_json own_parts(const ErrorInfo& record) {
    ordered_json parts;
    parts["code"] = record.code().as_string_view();
    parts["message"] = record.expanded_message().as_string_view();
    parts["parameters"] = ordered_json::object();
    for (const auto& [name, value] : record.params()) {
        parts["parameters"][name.as_string()] = value;
    }
    return parts;
}

// With the causes, from the outside in.
ordered_json to_json(const ErrorInfo& record) {
    ordered_json parts = own_parts(record);
    for (const ErrorInfo* cause = record.nested().get(); cause != nullptr;
         cause = cause->nested().get()) {
        parts["causes"].push_back(own_parts(*cause));
    }
    return parts;
}

// Input need not be UTF-8; JSON must.
std::string dump(const ordered_json& object) {
    return object.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

}  // namespace

std::string on_one_line(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    for (unsigned i = 0; i < text.size(); ++i) {
        const bool is_pair = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
        if (is_pair) ++i;
        line += text[i] == '\r' || text[i] == '\n' ? ' ' : text[i];
    }
    return line;
}

std::string trace_text(const ErrorInfo& record) {
    std::ostringstream os;
    record.write_trace(os, 0);
    return std::move(os).str() + '\n';
}

void Result::separate() {
    if (has_fields_) line_ += ' ';
    has_fields_ = true;
}

void Result::text(const char* name, std::string_view value) {
    if (form_ == Form::json) {
        object_[name] = value;
    } else {
        separate();
        line_ += value;
    }
}

void Result::number(const char* name, long long value) {
    if (form_ == Form::json) {
        object_[name] = value;
    } else {
        separate();
        char digits[20];
        line_.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    }
}

void Result::truth(const char* name, bool value) {
    if (form_ == Form::json) {
        object_[name] = value;
    } else {
        text(name, value ? "yes" : "no");
    }
}

void Result::record(const ErrorInfo& record) {
    object_ = to_json(record);
}

void Result::block(std::string_view lines) {
    line_ = lines.substr(0, lines.size() - 1);
}

void Result::finish() {
    if (form_ == Form::json) line_ = dump(object_);
    line_ += '\n';
    output_.write(line_);
    clear();
}

void Result::fail(const ErrorInfo& record) {
    clear();
    if (form_ == Form::json) {
        object_["error"] = to_json(record);
    } else {
        text("", "error");
        text("", record.code().as_string_view());
        text("", on_one_line(record.expanded_message().as_string_view()));
    }
    finish();
}

void Result::clear() {
    line_.clear();
    has_fields_ = false;
    object_ = nullptr;
}

}  // namespace tarv
