// Verbs on bytes: arguments and lines, or a file of any size.
#pragma once

#include <string>

#include "tools/tarv/byte_source.h"
#include "tools/tarv/verb.h"

namespace tarv {

// A line verb that also takes a file, or standard input, whose bytes are one input.
class FileVerb : public LineVerb {
public:
    using LineVerb::LineVerb;

    void add_options(CLI::App& app) override;
    bool run(const Request& request, Output& output, Output& errors) override;

protected:
    // How much of a file is in memory at once, more or less.
    static constexpr unsigned piece_size = 1 << 16;

    // Writes what the verb makes of all the bytes of a file.  Raises errors.
    virtual void convert_file(ByteSource& source, Output& output) = 0;

    // The bytes that an argument or line stands for, and how bytes are answered there.
    tarvcore::ErrorInfo::Ptr read_bytes(std::string_view field, std::string* bytes) const;
    std::string shown(std::string bytes) const;

private:
    std::string file_;
    bool hex_ = false;
};

}  // namespace tarv
