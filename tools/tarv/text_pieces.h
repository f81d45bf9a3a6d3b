// A text of any size, piece by piece.
#pragma once

#include <string_view>
#include <vector>

#include "tools/tarv/byte_source.h"
#include "tools/tarv/text_conversion.h"

namespace tarv {

// Cuts a text so that converting its pieces one by one comes to what converting the whole would
// come to, bad characters and what is wrong with them included.
class TextPieces {
public:
    // `replaced`: bad characters are replaced, and the text goes on behind them; otherwise it ends
    // with a piece that has the first one.
    TextPieces(ByteSource& source, Encoding encoding, bool replaced);

    // Empty at the end.  The piece stays where it is until the next call.
    std::string_view next();

private:
    void fill();
    // How much of what has been read makes a piece; 0: more must be read.
    unsigned cut();
    unsigned cut_utf8();
    // More continuation bytes than a sequence has make one bad character with those before them,
    // however many they are.  Leaves one too many.
    void shorten_first();

    ByteSource& source_;
    Encoding encoding_;
    bool replaced_;
    bool at_end_ = false;
    std::vector<char> buffer_;
    unsigned begin_ = 0;  // of what has not been given out
    unsigned end_ = 0;    // of what has been read
};

}  // namespace tarv
