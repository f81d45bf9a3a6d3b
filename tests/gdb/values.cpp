// Values to be looked at by a debugger that cannot run this program: values.exe CORE EXPECTED
// writes its memory as a core file of 32-bit Linux, and a line for each value, its name, a tab, and
// how it is to be shown, as far as the library says it itself.

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tarvcore/tarvcore.h"
//
#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tests/gdb/values.cpp#1 $");

using namespace tarvcore;

namespace {

constexpr char reference_text[] = "a literal";

}  // namespace

// Outside of any namespace, for short names.
SourceString empty_string;
SourceString reference(reference_text, true);
SourceString part(reference_text, 5, true);
SourceString copied("a copy");
ErrorCode code("error.mine.broken", true);
SourceLocation place = TARVCORE_LOCATION("f()");
ErrorParams params = ErrorParams().add("name", "Zo\xC3\xAB").add("count", 3);
ErrorInfo::Ptr no_record;
ErrorInfo::Ptr cause = ErrorInfo::create(error::tarvcore_uuid_parse, "Bad UUID", place);
ErrorInfo::Ptr record =
    ErrorInfo::create(code, "{@name} is {@count} times {@unknown}", params, place, cause);
ErrorException exception(cause);
RelativeTime durations[] = {RelativeTime::nanoseconds(0),
                            RelativeTime::nanoseconds(1000),
                            RelativeTime::nanoseconds(1'000'000),
                            RelativeTime::nanoseconds(-1500),
                            RelativeTime::nanoseconds(250'000'001),
                            RelativeTime::seconds(60),
                            RelativeTime::nanoseconds(90'000'000'001),
                            RelativeTime::seconds(3600),
                            RelativeTime::seconds(3601),
                            RelativeTime::seconds(86400),
                            RelativeTime::seconds(-90061),
                            RelativeTime::infinite};
AbsoluteTime instants[] = {AbsoluteTime(), AbsoluteTime::from_string("2014-07-16 13:23:00.25"),
                           AbsoluteTime::from_string("1677-09-22 00:00:00"),
                           AbsoluteTime::infinite};
SimpleDateTime date_time(instants[1], 120);
Uuid uuid = Uuid::from_string("00112233-4455-6677-8899-aabbccddeeff");
StringKey no_string_key;
StringKey string_key("a key");
UuidKey no_uuid_key;
UuidKey uuid_key(uuid);
ObjectKey no_object_key;
ObjectKey object_key = ObjectKey::create_unique();
ObjectKey labelled_key = ObjectKey::create_unique_with_label("a label", 7);
Future<int> pending = Future<int>::create();
Future<int> succeeded = Future<int>::create();
Future<int> failed = Future<int>::create();
Future<void> done = Future<void>::create();
Result<int> no_result;
Result<int> value_result(impl::create_value_result<int>(42));
Result<int> error_result(new impl::ErrorResultImpl<int>(cause));
Result<void> void_result(impl::create_value_result<void>());
Result<int> pending_result(new impl::FutureResultImpl<int>(pending));
Result<int> succeeded_result(new impl::FutureResultImpl<int>(succeeded));
std::uintptr_t garbage[] = {0x10, 5};

namespace {

// A core file's headers, as Linux has them.
struct FileHeader {
    unsigned char ident[16] = {0x7F, 'E', 'L', 'F', 1, 1, 1};
    std::uint16_t type = 4, machine = 3;  // a core, of a 386
    std::uint32_t version = 1, entry = 0, segment_offset = 52, section_offset = 0, flags = 0;
    std::uint16_t size = 52, segment_size = 32, segment_count = 0;
    std::uint16_t section_size = 0, section_count = 0, section_names = 0;
};
struct Segment {
    std::uint32_t type = 1, offset, address, physical = 0, file_size, memory_size, flags = 6,
                  align = 1;
};
static_assert(sizeof(FileHeader) == 52 && sizeof(Segment) == 32);

// All data.
void write_core(const char* path) {
    std::vector<Segment> segments;
    MEMORY_BASIC_INFORMATION region = {};
    for (std::uintptr_t at = 0;
         VirtualQuery(reinterpret_cast<const void*>(at), &region, sizeof region) != 0;
         at += region.RegionSize) {
        const bool is_wanted =
            region.State == MEM_COMMIT && region.Type != MEM_MAPPED &&
            (region.Protect == PAGE_READONLY || region.Protect == PAGE_READWRITE ||
             region.Protect == PAGE_WRITECOPY);
        if (is_wanted)
            segments.push_back({.offset = 0,
                                .address = at,
                                .file_size = region.RegionSize,
                                .memory_size = region.RegionSize});
        if (at + region.RegionSize < at) break;
    }
    FileHeader header;
    header.segment_count = static_cast<std::uint16_t>(segments.size());
    std::uint32_t offset = sizeof header + segments.size() * sizeof(Segment);
    for (Segment& segment : segments) {
        segment.offset = offset;
        offset += segment.file_size;
    }
    std::ofstream file(path, std::ios::binary);
    const auto write = [&](const void* bytes, std::size_t size) {
        file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    };
    write(&header, sizeof header);
    write(segments.data(), segments.size() * sizeof(Segment));
    for (const Segment& segment : segments)
        write(reinterpret_cast<const void*>(segment.address), segment.file_size);
}

}  // namespace

int main(int, char** argv) {
    succeeded.signal(7);
    failed.set(cause);
    done.signal();
    std::ofstream expected(argv[2], std::ios::binary);
    for (std::size_t i = 0; i < std::size(durations); ++i)
        expected << "durations[" << i << "]\t" << durations[i] << '\n';
    for (std::size_t i = 0; i < std::size(instants); ++i)
        expected << "instants[" << i << "]\t" << instants[i] << '\n';
    expected << "uuid\t" << uuid << "\nuuid_key\t" << uuid_key << "\nno_uuid_key\t" << no_uuid_key
             << '\n';
    write_core(argv[1]);
}
