// Faults to catch: any byte of the text form; cuts inside a character; wrong indentation of causes.

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tarvcore/error_info.h"

namespace {

using namespace tarvcore;
using Ptr = ErrorInfo::Ptr;

Ptr record_of(const char* message, ErrorParams params = {}, Ptr nested = {}) {
    return ErrorInfo::create(ErrorCode("error.x.y"), SourceString(message), std::move(params),
                             SourceLocation("ns::f()", "$Id: //lib/f.cpp#3 $", 4294967295u),
                             std::move(nested), SourceString("host"));
}

std::string text_of(const Ptr& record, unsigned level = 0) {
    std::ostringstream os;
    os << ErrorInfo::Trace{record, level};
    return os.str();
}

// The lines about parameters and what follows.
std::string parameters_of(ErrorParams params) {
    const std::string text = text_of(record_of("m", std::move(params)));
    return text.substr(text.find("\nParameters:"));
}

TEST(ErrorInfoTrace, WritesEveryLine) {
    const Ptr inner = record_of("inner {@a}", ErrorParams().add("a", "1").add("b", "2"));
    const Ptr middle = record_of("middle", {}, inner);
    const Ptr outer = record_of("two\nlines", ErrorParams().add("p", "v"), middle);
    EXPECT_EQ(text_of(outer),
              "\nErrorCode:   error.x.y"
              "\nDescription: "
              "\n    two"
              "\n    lines"
              "\nHostname:    host"
              "\nFunction:    ns::f()"
              "\nFile(Line):  //lib/f.cpp#3(4294967295)"
              "\nParameters:  'p' => \"v\""
              "\nNested: "
              "\n  ErrorCode:   error.x.y"
              "\n  Description: middle"
              "\n  Hostname:    host"
              "\n  Function:    ns::f()"
              "\n  File(Line):  //lib/f.cpp#3(4294967295)"
              "\n  Parameters:  "
              "\n  Nested: "
              "\n    ErrorCode:   error.x.y"
              "\n    Description: inner 1"
              "\n    Hostname:    host"
              "\n    Function:    ns::f()"
              "\n    File(Line):  //lib/f.cpp#3(4294967295)"
              "\n    Parameters:  "
              "\n        'a' => \"1\""
              "\n        'b' => \"2\"");

    std::ostringstream os;
    os << Ptr() << ErrorInfo::Trace{Ptr(), 3} << record_of("m");
    EXPECT_EQ(os.str(), "##NULL####NULL##" + text_of(record_of("m")));
    const std::string deep = text_of(record_of("m"), 30);
    EXPECT_EQ(deep.substr(0, 70), "\n" + std::string(60, ' ') + "ErrorCode");
}

TEST(ErrorInfoTrace, BreaksDescriptionsAtLineFeeds) {
    const struct {
        const char* message;
        const char* written;
    } rows[] = {
        {"", "\nDescription: \nHostname"},
        {"a\n", "\nDescription: \n    a\nHostname"},
        {"\n\na", "\nDescription: \n    \n    \n    a\nHostname"},
        {"a\r\nb", "\nDescription: \n    a\r\n    b\nHostname"},
    };
    for (const auto& row : rows) {
        const std::string text = text_of(record_of(row.message));
        EXPECT_NE(text.find(row.written), std::string::npos) << text;
    }
    // Values put into the description are cut at 16,384 bytes.
    const std::string text =
        text_of(record_of("{@v}", ErrorParams().add("v", std::string(16385, 'x'))));
    EXPECT_NE(text.find("Description: " + std::string(16384, 'x') + "...\n"), std::string::npos);
}

TEST(ErrorInfoTrace, ShowsLongAndMultilineValues) {
    const std::string x512(512, 'x');
    const struct {
        std::string value;
        std::string with_another;
        const char* reason;
    } rows[] = {
        {x512, "\"" + x512 + "\"", "the limit itself"},
        {std::string(600, 'x'), "\"" + std::string(600, 'x') + "\"[...](88 omitted)",
         "without line feed: whole, and still the note"},
        {std::string(511, 'x') + "\xC3\xA9",
         "\"" + std::string(511, 'x') + "\xC3\xA9\"[...](2 omitted)",
         "the limit falls into a character"},
        {"a\nb", "\n        \"a\"\n        \"b", "no closing quote at the end"},
        {"a\n", "\n        \"a\"", "nothing remains"},
        {"\n\n", "\n        \"\"\n        \"\"", "empty lines"},
        {"a\n" + x512, "\n        \"a\"\n        \"" + std::string(510, 'x') + "[...](2 omitted)",
         "cut after the line feed"},
        {x512 + "\nb", "\"" + x512 + "\nb\"[...](2 omitted)", "the line feed is beyond the limit"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(parameters_of(ErrorParams().add("z", row.value).add("a", "")),
                  "\nParameters:  \n    'a' => \"\"\n    'z' => " + row.with_another)
            << row.reason;
    }
    EXPECT_EQ(parameters_of(ErrorParams().add("z", std::string(600, 'x'))),
              "\nParameters:  'z' => \"" + std::string(600, 'x') + "\"")
        << "alone and on one line: never cut";
    EXPECT_EQ(parameters_of(ErrorParams().add("z", "a\nb")),
              "\nParameters:  \n    'z' => \n        \"a\"\n        \"b");
}

// A derived class in a chain writes itself, and what is below it.
class Derived : public ErrorInfo {
public:
    explicit Derived(Ptr nested)
        : ErrorInfo(ErrorCode("error.derived"), SourceString().transfer(), ErrorParams().transfer(),
                    SourceLocation(), nested.transfer()) {}
    void write_trace(std::ostream& os, unsigned indent_level) const override {
        os << "<derived " << indent_level << ">";
    }
};

TEST(ErrorInfoTrace, AsksDerivedRecords) {
    const std::string text = text_of(record_of("m", {}, new Derived(record_of("below"))));
    EXPECT_TRUE(text.ends_with("\nNested: <derived 1>")) << text;
}

}  // namespace
