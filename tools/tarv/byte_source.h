// Bytes of a file or of standard input, as they are.
#pragma once

#include <span>
#include <string>

namespace tarv {

class ByteSource {
public:
    // A path in UTF-8; "-" is standard input.  Raises "error.tarv.input", as reading does.
    explicit ByteSource(const std::string& path);
    ~ByteSource();
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    // Puts what there is into the buffer, waiting for it, and answers how many bytes that were; 0
    // at the end.
    unsigned read_some(std::span<char> buffer);
    // The same until the buffer is full.
    unsigned read(std::span<char> buffer);

private:
    std::string path_;
    void* handle_;
};

}  // namespace tarv
