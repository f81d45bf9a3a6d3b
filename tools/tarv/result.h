// What a verb answers to one input.
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

#include "tarvcore/error_info.h"
#include "tools/tarv/output.h"

namespace tarv {

// A text with its line breaks turned into blanks: CR LF into one, CR and LF alone into one each.
std::string on_one_line(std::string_view text);

// A record as text of several lines; it begins and ends with a line feed.
std::string trace_text(const tarvcore::ErrorInfo& record);

// Collects the fields of one answer and then writes them: on a line with blanks between them, or,
// for programs, as an object with their names.
class Result {
public:
    enum class Form {
        line,   // one line, whatever the answer is
        block,  // one line, or as many as the verb thinks good for a reader
        json,   // one line that is an object
    };

    Result(Output& output, Form form) : output_(output), form_(form) {}

    Form form() const { return form_; }

    void text(const char* name, std::string_view value);
    void number(const char* name, long long value);
    void truth(const char* name, bool value);
    // Every part of a record, for Form::json.
    void record(const tarvcore::ErrorInfo& record);
    // Lines as they are, the last one ended too, in place of fields; for Form::block.
    void block(std::string_view lines);

    // Writes the answer, and begins the next one.
    void finish();
    // Writes "error CODE MESSAGE", or the object {"error": ...}, in place of the answer.
    void fail(const tarvcore::ErrorInfo& record);
    // Forgets the answer.
    void clear();

private:
    void separate();

    Output& output_;
    Form form_;
    std::string line_;
    bool has_fields_ = false;
    nlohmann::ordered_json object_;
};

}  // namespace tarv
