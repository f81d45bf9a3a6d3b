#include "tools/tarv/line_reader.h"

#include <cstring>
#include <span>

#include "tarvcore/config.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/line_reader.cpp#1 $");

namespace tarv {

bool LineReader::next(std::string_view& line) {
    // What has been looked through already: a long line costs no more per byte than a short one.
    unsigned searched = 0;
    for (;;) {
        const char* begin = buffer_.data() + begin_;
        const unsigned length = end_ - begin_;
        const void* found = std::memchr(begin + searched, '\n', length - searched);
        if (found != nullptr) {
            line = std::string_view(begin, static_cast<const char*>(found));
            begin_ += line.size() + 1;
            return true;
        }
        if (at_end_) {
            line = std::string_view(begin, length);
            begin_ = end_;
            return length != 0;
        }
        searched = length;
        fill();
    }
}

void LineReader::fill() {
    if (begin_ != 0) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    if (end_ == buffer_.size()) buffer_.resize(2 * buffer_.size());

    const unsigned count = source_.read_some(std::span(buffer_).subspan(end_));
    end_ += count;
    at_end_ = count == 0;
}

}  // namespace tarv
