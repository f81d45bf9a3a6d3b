// Identifiers that need no one to hand them out, and texts that are compared by address.
#include <iostream>
#include <map>
#include <unordered_map>

#include "tarvcore/tarvcore.h"

using namespace tarvcore;

int main() {
    const Uuid id = Uuid::from_string("{7C9E6679-7425-40DE-944B-E07FC1F90AE7}");
    std::cout << std::boolalpha << id << ", version " << id.version() << '\n'
              << Uuid::Trace(id, Uuid::format_plain) << '\n';

    Uuid other;
    std::cout << "a good text: " << Uuid::from_string_nothrow("7c9e6679", &other)
              << ", null as before: " << other.is_null() << '\n';

    // Sequential ones sort as they were made: new rows come at the end of an index.
    std::map<Uuid, int> rows;
    for (int i = 0; i < 1000; ++i)
        rows.emplace_hint(rows.end(), Uuid::create_sequential(), i);
    int expected = 0;
    bool sorted = true;
    for (const auto& [key, number] : rows)
        sorted &= number == expected++;
    std::cout << rows.size() << " rows, in order: " << sorted << '\n';

    // However long the text: to compare and to hash keys takes an address each.
    std::unordered_map<StringKey, int> calls;
    for (const char* operation : {"open", "read", "read", "close", "read"})
        ++calls[StringKey(operation)];
    std::cout << "read: " << calls[StringKey("read")] << " times\n";

    const ObjectKey mine = ObjectKey::create_unique_with_label("mine");
    std::cout << mine << " is like no other: " << (mine != ObjectKey::create_unique()) << '\n';

    MurmurHashContext hash(0);
    hash.update("hello ", 6).update("world", 5);
    std::cout << streamers::Hex(hash.calculate_digest(), true) << '\n';
}
