#include "tarvcore/source_location.h"

#include <string_view>

#include "tarvcore/impl/measured_length.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/source_location.cpp#1 $");

namespace tarvcore {
namespace {

std::string_view file_id_view(const char* id, unsigned length) {
    if (id == nullptr) return {};
    return {id, impl::measured_length(id, length)};
}

// From the first "/" (the beginning where there is none) to `end`.
std::string path_up_to(std::string_view id, std::size_t end) {
    const std::size_t slash = id.find('/');
    const std::size_t start = slash == std::string_view::npos ? 0 : slash;
    return std::string(end <= start ? id : id.substr(start, end - start));
}

}  // namespace

void SourceLocation::swap(SourceLocation& other) noexcept {
    function_.swap(other.function_);
    file_id_.swap(other.file_id_);
    std::swap(line_, other.line_);
}

std::string SourceLocation::file_path() const {
    return file_path_from_file_id(file_id_.text(), file_id_.size());
}

std::string SourceLocation::file_depot_path() const {
    return depot_path_from_file_id(file_id_.text(), file_id_.size());
}

int SourceLocation::compare(const SourceLocation& other) const {
    if (line_ != other.line_) return line_ < other.line_ ? -1 : 1;
    const int order = function_.compare(other.function_);
    return order != 0 ? order : file_id_.compare(other.file_id_);
}

std::string SourceLocation::depot_path_from_file_id(const char* id, unsigned length) {
    const std::string_view text = file_id_view(id, length);
    const std::size_t last = text.find_last_not_of(" $");
    return path_up_to(text, last == std::string_view::npos ? text.size() : last + 1);
}

std::string SourceLocation::file_path_from_file_id(const char* id, unsigned length) {
    const std::string_view text = file_id_view(id, length);
    const std::size_t hash = text.rfind('#');
    return path_up_to(text, hash == std::string_view::npos ? text.size() : hash);
}

}  // namespace tarvcore
