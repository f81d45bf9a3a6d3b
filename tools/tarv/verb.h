// What the tool's verbs have in common.
#pragma once

#include <climits>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tarvcore/error_info.h"
#include "tools/tarv/output.h"
#include "tools/tarv/result.h"

namespace CLI {
class App;
}

namespace tarv {

// The command line makes no sense; the text says why.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What a command line says besides the verb and the verb's own options.
struct Request {
    std::vector<std::string> inputs;
    bool has_dash = false;  // one of them is "-", and was not declared to be a text
    bool json = false;
    bool crlf = false;  // the lines of standard input end in CR LF
};

// How a verb shows in the help.
struct Description {
    const char* name;     // "parse"; empty where the family's name is the verb
    const char* inputs;   // "TEXT..."; empty where there is no input
    const char* summary;  // one line
    const char* details;  // lines that say what the inputs and the answer are
    // Commands after "$ " and what they answer, for the help and for the tests; "\u2026" is what
    // differs from run to run: on a line of its own any number of lines.
    const char* examples;
};

// One operation of the command line.
class Verb {
public:
    explicit Verb(const Description& description) : description_(description) {}
    virtual ~Verb();
    Verb(const Verb&) = delete;
    Verb& operator=(const Verb&) = delete;

    const Description& description() const { return description_; }
    virtual bool reads_lines() const { return false; }
    virtual bool has_json() const { return true; }

    // Declares options of its own.
    virtual void add_options(CLI::App&) {}

    // Whether all inputs were good.  Raises UsageError.
    virtual bool run(const Request& request, Output& output, Output& errors) = 0;

private:
    Description description_;
};

using Verbs = std::vector<std::unique_ptr<Verb>>;

// The fields of one input.
using Fields = std::span<const std::string_view>;

// What one input consists of.
struct Layout {
    unsigned least = 1;
    unsigned most = 1;
    char separator = '\0';  // between fields on a line, exactly one

    static constexpr unsigned any_number = UINT_MAX;
    constexpr bool is_one_field() const { return most == 1; }
};

// A verb that answers inputs one by one.  Where an input is one field, every argument is an input;
// else all arguments are the fields of one input.  The argument "-" alone stands for the lines of
// standard input.
class LineVerb : public Verb {
public:
    LineVerb(const Description& description, const Layout& layout = {})
        : Verb(description), layout_(layout) {}

    const Layout& layout() const { return layout_; }
    bool reads_lines() const override { return true; }
    bool run(const Request& request, Output& output, Output& errors) override;

protected:
    // Puts the answer into `result`, or answers or raises an error.  An error of the family
    // "error.tarv.usage" tells that the fields are not what the verb takes.
    virtual tarvcore::ErrorInfo::Ptr convert(Fields fields, Result& result) = 0;

private:
    tarvcore::ErrorInfo::Ptr checked_convert(Fields fields, Result& result);
    bool run_arguments(const Request& request, Output& output, Output& errors);
    bool run_lines(const Request& request, Output& output, Output& errors);

    Layout layout_;
};

}  // namespace tarv
