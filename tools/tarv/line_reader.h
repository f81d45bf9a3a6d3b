// Standard input, line by line.
#pragma once

#include <string_view>
#include <vector>

#include "tools/tarv/byte_source.h"

namespace tarv {

// Lines end at line feeds, which are not part of them; nothing else is taken away.  What follows
// the last line feed is a line too, unless it is empty.
class LineReader {
public:
    // False at the end.  The line stays where it is until the next call.  Raises "error.tarv.input"
    // where standard input is closed or cannot be read.
    bool next(std::string_view& line);

private:
    // Reads more behind `end_`; at the end of the stream, nothing.
    void fill();

    ByteSource source_{"-"};
    std::vector<char> buffer_ = std::vector<char>(1 << 18);
    unsigned begin_ = 0;  // of what has been read and not yet given out
    unsigned end_ = 0;
    bool at_end_ = false;
};

}  // namespace tarv
