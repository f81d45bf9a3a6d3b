// Where in the source something happened.
#pragma once

#include <compare>
#include <string>
#include <utility>

#include "tarvcore/config.h"
#include "tarvcore/source_string.h"
#include "tarvcore/transfer.h"

// The place where this stands, in a function of the given readable name.  TARVCORE_SOURCE_FILE must
// stand above it in the file: it defines `source_file_id`.
#define TARVCORE_LOCATION(function)        \
    ::tarvcore::LiteralLocation {          \
        function, source_file_id, __LINE__ \
    }

namespace tarvcore {

// A place given by literals, from which a SourceLocation is made where one is kept.  It has nothing
// to destroy: a frame that raises with it does not have to be stopped at while the stack is
// unwound.
struct LiteralLocation {
    const char* function;  // as readers know it, "my::parse()"
    const char* file_id;   // the identification line of the source file
    unsigned line;         // from 1
};

// Names the place that raised an error: function, identification line of the source file, and line.
// The identification line is "$Id: " with a path that begins with "/", "#" with the file's
// revision, and " $" (see TARVCORE_SOURCE_FILE).  Locations are made of literals at no cost.
//
//     throw_error(error::tarvcore_uuid_parse, "Bad UUID", TARVCORE_LOCATION("my::parse()"));
class TARVCORE_API SourceLocation {
public:
    constexpr SourceLocation() = default;
    // Literals: neither copied nor measured.
    constexpr SourceLocation(const char* function, const char* file_id, unsigned line)
        : function_(function, true), file_id_(file_id, true), line_(line) {}
    constexpr SourceLocation(const LiteralLocation& location)
        : SourceLocation(location.function, location.file_id, location.line) {}
    SourceLocation(SourceString function, SourceString file_id, unsigned line)
        : function_(std::move(function)), file_id_(std::move(file_id)), line_(line) {}
    SourceLocation(TransferSource<SourceString> function, TransferSource<SourceString> file_id,
                   unsigned line)
        : function_(function), file_id_(file_id), line_(line) {}

    SourceLocation(const SourceLocation&) = default;
    SourceLocation(SourceLocation&& other) noexcept
        : function_(std::move(other.function_)),
          file_id_(std::move(other.file_id_)),
          line_(std::exchange(other.line_, 0)) {}
    SourceLocation(TransferSource<SourceLocation> source) noexcept
        : SourceLocation(std::move(source.source())) {}

    SourceLocation& operator=(SourceLocation other) noexcept {
        swap(other);
        return *this;
    }
    void swap(SourceLocation& other) noexcept;
    void clear() { *this = SourceLocation(); }
    TransferSource<SourceLocation> transfer() { return TransferSource<SourceLocation>(*this); }

    const SourceString& function() const { return function_; }
    const SourceString& file_id() const { return file_id_; }
    unsigned line() const { return line_; }

    // Whether both texts are known to be empty; literals yet unmeasured are not.
    bool empty() const { return function_.empty() && file_id_.empty(); }

    // See depot_path_from_file_id, of which file_path has no revision.
    std::string file_path() const;
    std::string file_depot_path() const;

    // Negative, zero or positive: by line, then function, then file.
    int compare(const SourceLocation& other) const;
    friend bool operator==(const SourceLocation& a, const SourceLocation& b) {
        return a.compare(b) == 0;
    }
    friend std::strong_ordering operator<=>(const SourceLocation& a, const SourceLocation& b) {
        return a.compare(b) <=> 0;
    }

    // The path within an identification line, with its revision ("//dir/file.ext#3") and without.
    // The text as it is where it has no such part; a null text is empty; length 0xFFFFFFFF: up to
    // the terminator.
    static std::string depot_path_from_file_id(const char* id, unsigned length = 0xFFFFFFFF);
    static std::string file_path_from_file_id(const char* id, unsigned length = 0xFFFFFFFF);

private:
    SourceString function_;
    SourceString file_id_;
    unsigned line_ = 0;
};

static_assert(sizeof(SourceLocation) == 20);

}  // namespace tarvcore
