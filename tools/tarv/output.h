// A standard stream to write to.
#pragma once

#include <string>
#include <string_view>

namespace tarv {

// Bytes for standard output or standard error, as they are: nothing turns line feeds into anything
// else.  They are held back until there are many, or until `flush`.
class Output {
public:
    static Output standard_output();
    static Output standard_error();

    // Raise "error.tarv.output" where the stream is closed or takes no more.
    void write(std::string_view bytes) {
        buffer_ += bytes;
        if (buffer_.size() >= enough) flush();
    }
    void flush();

private:
    explicit Output(void* handle) : handle_(handle) {}

    static constexpr unsigned enough = 1 << 16;

    void* handle_;
    std::string buffer_;
};

}  // namespace tarv
