// The text form of error records.

#include <ostream>
#include <string_view>
#include <typeinfo>

#include "tarvcore/error_info.h"
#include "tarvcore/impl/unicode_codec.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/error_info_trace.cpp#1 $");

namespace tarvcore {
namespace {

constexpr unsigned message_value_limit = 16384;
constexpr unsigned parameter_value_limit = 512;

// Unformatted: a field width set on the stream is not for parts of a record.
void write(std::ostream& os, std::string_view text) {
    os.write(text.data(), static_cast<std::streamsize>(text.size()));
}

void write_number(std::ostream& os, unsigned long number) {
    char digits[10];
    char* const end = digits + sizeof digits;
    char* begin = end;
    do {
        *--begin = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number != 0);
    os.write(begin, end - begin);
}

// Begins lines: a line feed, the record's indentation, and then blanks of the line's own.
class LineWriter {
public:
    LineWriter(std::ostream& os, unsigned indent_level) : os_(os), indent_level_(indent_level) {}

    void begin(std::string_view label) const {
        constexpr std::string_view blanks = "                                                ";
        os_.put('\n');
        // Chains of causes are indented as deep as they are long.
        unsigned long long missing = 2ULL * indent_level_;
        for (; missing > blanks.size(); missing -= blanks.size())
            write(os_, blanks);
        write(os_, blanks.substr(0, static_cast<std::size_t>(missing)));
        write(os_, label);
    }

private:
    std::ostream& os_;
    unsigned indent_level_;
};

void write_description(std::ostream& os, const LineWriter& line, std::string_view text) {
    line.begin("Description: ");
    if (text.find('\n') == std::string_view::npos) {
        write(os, text);
        return;
    }
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        line.begin("    ");
        write(os, text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

void write_name(std::ostream& os, const SourceString& name) {
    os.put('\'');
    write(os, name.as_string_view());
    write(os, "' => ");
}

void write_quoted(std::ostream& os, std::string_view text) {
    os.put('"');
    write(os, text);
    os.put('"');
}

void write_value(std::ostream& os, const LineWriter& line, std::string_view value) {
    const std::size_t shown =
        impl::utf8_prefix_length(value.data(), value.size(), parameter_value_limit);
    std::string_view rest = value.substr(0, shown);
    if (rest.find('\n') == std::string_view::npos) {
        // The whole value, even beyond what counts as shown: readers search for it.  The count of
        // what was omitted follows all the same; programs know it.
        write_quoted(os, value);
    } else {
        for (std::size_t end; (end = rest.find('\n')) != std::string_view::npos;
             rest.remove_prefix(end + 1)) {
            line.begin("        ");
            write_quoted(os, rest.substr(0, end));
        }
        if (!rest.empty()) {
            line.begin("        \"");
            write(os, rest);  // an open quote shows that the value does not end with the line
        }
    }
    if (value.size() > shown) {
        write(os, "[...](");
        write_number(os, value.size() - shown);
        write(os, " omitted)");
    }
}

void write_parameters(std::ostream& os, const LineWriter& line, const ErrorParams& params) {
    line.begin("Parameters:  ");
    const bool on_one_line =
        params.size() == 1 && params.begin()->value.find('\n') == std::string::npos;
    for (const auto& [name, value] : params) {
        if (on_one_line) {
            write_name(os, name);
            write_quoted(os, value);
        } else {
            line.begin("    ");
            write_name(os, name);
            write_value(os, line, value);
        }
    }
}

}  // namespace

void ErrorInfo::write_own_trace(std::ostream& os, unsigned indent_level) const {
    const LineWriter line(os, indent_level);
    line.begin("ErrorCode:   ");
    write(os, code_.as_string_view());
    write_description(os, line, expanded_message(message_value_limit).as_string_view());
    line.begin("Hostname:    ");
    write(os, hostname_.as_string_view());
    line.begin("Function:    ");
    write(os, location_.function().as_string_view());
    line.begin("File(Line):  ");
    write(os, location_.file_depot_path());
    os.put('(');
    write_number(os, location_.line());
    os.put(')');
    write_parameters(os, line, params_);
    if (nested_) line.begin("Nested: ");
}

void ErrorInfo::write_trace(std::ostream& os, unsigned indent_level) const {
    const ErrorInfo* record = this;
    record->write_own_trace(os, indent_level);
    while ((record = record->nested_.get()) != nullptr) {
        ++indent_level;
        // A derived class writes itself and what is below it in its own way.
        if (typeid(*record) != typeid(ErrorInfo)) return record->write_trace(os, indent_level);
        record->write_own_trace(os, indent_level);
    }
}

std::ostream& operator<<(std::ostream& os, const ErrorInfo::Ptr& record) {
    return os << ErrorInfo::Trace{record, 0};
}

std::ostream& operator<<(std::ostream& os, const ErrorInfo::Trace& trace) {
    if (trace.record) {
        trace.record->write_trace(os, trace.indent_level);
    } else {
        write(os, "##NULL##");
    }
    return os;
}

}  // namespace tarvcore
