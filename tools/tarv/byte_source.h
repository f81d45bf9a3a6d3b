// Bytes of a file or of standard input, as they are.
#pragma once

#include <span>
#include <string>

namespace tarv {

class ByteSource {
public:
    // A path in UTF-8; "-" is standard input.  Raises "error.tarv.input", as `read` does.
    explicit ByteSource(const std::string& path);
    ~ByteSource();
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    // Fills the buffer as far as there are bytes, and answers how many came; 0 at the end.
    unsigned read(std::span<char> buffer);

private:
    std::string path_;
    void* handle_;
};

}  // namespace tarv
