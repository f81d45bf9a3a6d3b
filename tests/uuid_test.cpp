// Faults to catch: a field in the other byte order; characters that are no digits, or separators at
// another place, taken for good; reading or writing beyond a text; one order taken for the other
// across bytes; an identifier changed by a text that is bad; legacy numbers that are not decimal.

#include "tarvcore/uuid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <random>
#include <sstream>
#include <string>
#include <unordered_set>
#include <vector>

#include "tarvcore/impl/uuid_calls.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/raised.h"
#include "tests/support/scoped_calls.h"
#include "tests/support/trials.h"
//
#include <windows.h>

namespace {

using namespace tarvcore;
using Data = Uuid::BinaryData;

Uuid uuid_of(const std::vector<unsigned>& bytes) {
    Data data = {};
    std::copy(bytes.begin(), bytes.end(), data.bytes);
    return Uuid(data);
}

Data data_of(const Uuid& uuid) {
    Data data;
    uuid.get_binary_data(data);
    return data;
}

template <class Random>
Uuid any_uuid(Random& random) {
    Data data;
    for (unsigned char& byte : data.bytes)
        byte = static_cast<unsigned char>(random());
    return Uuid(data);
}

const Uuid::NodeAddress node = {{0xA1, 0xB2, 0xC3, 0xD4, 0xE5, 0xF6}};

// The text by the C library's formatting, and its reading character by character.
std::string printed(const Uuid& uuid, Uuid::EFormat format) {
    const GUID g = uuid.as_windows_guid();
    const auto pair = [&](int i) { return g.Data4[i] << 8 | g.Data4[i + 1]; };
    char digits[33];
    std::snprintf(digits, sizeof digits, "%08lx%04x%04x%04x%04x%04x%04x", g.Data1, g.Data2, g.Data3,
                  pair(0), pair(2), pair(4), pair(6));
    std::string text = digits;
    if (format == Uuid::format_plain) return text;
    for (const unsigned at : {20, 16, 12, 8})
        text.insert(at, "-");
    return format == Uuid::format_braced ? '{' + text + '}' : text;
}

bool is_good(const std::string& text) {
    std::string pattern(32, 'x');
    if (text.size() == 36) pattern = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    if (text.size() == 38) pattern = "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";
    return std::equal(text.begin(), text.end(), pattern.begin(), pattern.end(), [](char c, char p) {
        const std::string digits = "0123456789abcdefABCDEF";
        return p == 'x' ? digits.find(c) != std::string::npos : c == p;
    });
}

constexpr Uuid::EFormat formats[] = {Uuid::format_hyphenated, Uuid::format_plain,
                                     Uuid::format_braced};

TEST(Uuid, TextGoesThereAndBackInItsBounds) {
    const tarv_test::GuardedMemory memory(64);
    std::mt19937 random(71);
    for (unsigned trial = 0; trial < tarv_test::trials(2000); ++trial) {
        const Uuid uuid = any_uuid(random);
        for (const auto format : formats) {
            const std::string text = printed(uuid, format);
            ASSERT_EQ(uuid.as_string(format), text);
            char* const buffer = memory.before_guard(text.size());
            buffer[-1] = '#';
            ASSERT_EQ(uuid.write_text(buffer, format), buffer + text.size());
            ASSERT_EQ(std::string(buffer - 1, text.size() + 1), '#' + text);
            for (char* c = buffer; trial % 2 == 1 && c != buffer + text.size(); ++c)
                *c = static_cast<char>(std::toupper(*c));
            ASSERT_EQ(Uuid::from_string(buffer, text.size()), uuid) << text;
            text.copy(memory.after_guard(), text.size());
            ASSERT_EQ(Uuid::from_string(memory.after_guard(), text.size()), uuid) << text;
        }
    }
    const Uuid uuid = Uuid::from_string("{7C9E6679-7425-40DE-944B-E07FC1F90AE7}");
    const std::string_view part =
        std::string_view("x7c9e6679742540de944be07fc1f90ae7x").substr(1, 32);
    Uuid of_part;
    EXPECT_TRUE(Uuid::from_string_nothrow(part, &of_part) && of_part == uuid);
    EXPECT_EQ(Uuid::from_string(part), uuid);
    EXPECT_FALSE(Uuid::from_string_nothrow(std::string_view(), &of_part));
    std::ostringstream os;
    os << uuid << ' ' << Uuid::Trace(uuid, Uuid::format_braced);
    EXPECT_EQ(os.str(),
              "7c9e6679-7425-40de-944b-e07fc1f90ae7 {7c9e6679-7425-40de-944b-e07fc1f90ae7}");
}

// Every value of every character, every length, and characters that other readers would pass over.
TEST(Uuid, TakesNoOtherText) {
    const Uuid before = Uuid::from_string("7c9e6679-7425-40de-944b-e07fc1f90ae7");
    const tarv_test::GuardedMemory memory(64);
    const auto check = [&](const std::string& text) {
        char* const input = memory.before_guard(text.size());
        text.copy(input, text.size());
        Uuid uuid = before;
        ASSERT_EQ(Uuid::from_string_nothrow(input, text.size(), &uuid), is_good(text)) << text;
        ASSERT_EQ(Uuid::from_string_nothrow(input, text.size(), nullptr), is_good(text)) << text;
        ASSERT_TRUE(is_good(text) || uuid == before) << text;
    };
    for (const auto format : formats) {
        const std::string good = before.as_string(format);
        for (std::size_t at = 0; at < good.size(); ++at) {
            for (int code = 0; code < 256; ++code) {
                std::string text = good;
                text[at] = static_cast<char>(code);
                check(text);
            }
            for (const std::string part : {"0x", "-1", "+1", " 1", "--"})
                check(good.substr(0, at) + part + good.substr(std::min(at + 2, good.size())));
            std::string moved = good;
            std::swap(moved[at], moved[(at + 1) % moved.size()]);
            check(moved);
        }
        for (unsigned length = 0; length <= 64; ++length) {
            check((good + good).substr(0, length));
            check(std::string(length, '0'));
        }
        // The forms without a length end at the terminator.
        EXPECT_TRUE(Uuid::from_string_nothrow(good.c_str(), nullptr));
        EXPECT_FALSE(Uuid::from_string_nothrow((good + '0').c_str(), nullptr));
        EXPECT_FALSE(
            Uuid::from_string_nothrow((good.substr(0, 20) + '\0' + good).c_str(), nullptr));
    }
    EXPECT_EQ(tarv_test::raised([] { Uuid::from_string("7c9e6679"); }),
              "error.tarvcore.uuid.parse Failed to parse UUID from string [] "
              "tarvcore::Uuid::from_string() //tarvcore/uuid.cpp");
}

TEST(Uuid, FieldsStandWhereTheyShould) {
    const struct {
        Uuid uuid;
        const char* fields;  // the text; version, flags, sequence, timestamp in hexadecimal
    } rows[] = {
        {Uuid(Uuid::version_time_based, 0xFEDC, node, 0x0123456789ABCDEF),
         "89abcdef-4567-1123-bedc-a1b2c3d4e5f6 1 12 3edc 123456789abcdef"},
        {Uuid(Uuid::version_time_based, 0, node, 0xF123456789ABCDEF),
         "89abcdef-4567-1123-8000-a1b2c3d4e5f6 1 12 0 123456789abcdef"},
        {Uuid(Uuid::version_time_based, 0x4001, node, 0xFFFFF123456789AB, 0x5A),
         "456789ab-f123-15af-8001-a1b2c3d4e5f6 1 5a 1 5aff123456789ab"},
        {Uuid(data_of(uuid_of({0, 1, 2, 3, 4, 5, 6, 7, 0xF8, 9})), Uuid::version_sequential),
         "03020100-0504-d706-b809-000000000000 d 70 3809 10203040506d7"},
        {Uuid(data_of(uuid_of({1, 2, 3, 4, 5, 6, 0x78, 0xFF, 0xFF, 0xFF})), Uuid::version_random),
         "04030201-0605-4f78-bfff-000000000000 4 f7 3fff f78060504030201"},
    };
    for (const auto& [uuid, fields] : rows) {
        std::ostringstream os;
        os << uuid << std::hex << ' ' << uuid.version() << ' ' << unsigned{uuid.custom_flags()}
           << ' ' << uuid.sequence() << ' ' << uuid.timestamp();
        EXPECT_EQ(os.str(), fields);
    }
    Uuid::NodeAddress read = {};
    rows[0].uuid.get_node_address(read);
    EXPECT_TRUE(std::equal(read.bytes, read.bytes + 6, node.bytes));

    const GUID guid = {
        0x89ABCDEF, 0x4567, 0x1123, {0xBE, 0xDC, 0xA1, 0xB2, 0xC3, 0xD4, 0xE5, 0xF6}};
    EXPECT_EQ(Uuid::from_windows_guid(guid), rows[0].uuid);
    unsigned char bytes[17] = {};
    EXPECT_EQ(rows[0].uuid.write_binary(nullptr), 16u);
    EXPECT_EQ(rows[0].uuid.write_binary(bytes + 1), 16u);
    EXPECT_EQ(std::memcmp(bytes + 1, &guid, 16), 0);
    Uuid uuid;
    EXPECT_EQ(Uuid::read_binary(nullptr, uuid), 16u);
    EXPECT_TRUE(uuid.is_null());
    EXPECT_EQ(Uuid::read_binary(bytes + 1, uuid), 16u);
    EXPECT_EQ(uuid, rows[0].uuid);
    EXPECT_EQ(uuid.hash(), 0x89ABCDEFu ^ 0x11234567 ^ 0xB2A1DCBE ^ 0xF6E5D4C3);
}

// Pairs that differ in one byte or two, which the two orders see in different places.
TEST(Uuid, OrdersAreThoseOfBytesAndTexts) {
    std::mt19937 random(72);
    for (unsigned trial = 0; trial < tarv_test::trials(20'000); ++trial) {
        const Uuid a = any_uuid(random);
        Data data = data_of(a);
        for (unsigned i = 0; i < trial % 4; ++i)
            data.bytes[random() % 16] =
                trial % 3 == 0 ? 0xFF : static_cast<unsigned char>(random());
        const Uuid b(data);
        const int order = std::memcmp(data_of(a).bytes, data.bytes, 16);
        ASSERT_EQ(a == b, order == 0) << a << b;
        ASSERT_EQ(a < b, order < 0) << a << b;
        ASSERT_EQ(a >= b, order >= 0) << a << b;
        ASSERT_EQ(Uuid::StringLess()(a, b), a.as_string() < b.as_string()) << a << b;
    }
}

TEST(Uuid, RandomOnesUseAllOtherBits) {
    std::unordered_set<Uuid> seen;
    Data all = {};
    Data common;
    std::fill(std::begin(common.bytes), std::end(common.bytes), 0xFF);
    for (unsigned flags = 0; flags < 256; ++flags) {
        const auto fixed = static_cast<unsigned char>(flags);
        EXPECT_EQ(Uuid::create_random(fixed).custom_flags(), flags);
        EXPECT_EQ(Uuid::create_random(fixed).version(), Uuid::version_random);
        const Uuid uuid = Uuid::create_random();
        EXPECT_TRUE(seen.insert(uuid).second);
        for (unsigned i = 0; i < 16; ++i) {
            all.bytes[i] |= data_of(uuid).bytes[i];
            common.bytes[i] &= data_of(uuid).bytes[i];
        }
    }
    EXPECT_EQ(Uuid(all).as_string(), "ffffffff-ffff-4fff-bfff-ffffffffffff");
    EXPECT_EQ(Uuid(common).as_string(), "00000000-0000-4000-8000-000000000000");
}

TEST(Uuid, LegacyNumbersAreDecimal) {
    for (const unsigned id : {0u, 1u, 9u, 10u, 12'345'678u, 4'294'967'295u}) {
        char digits[11];
        std::snprintf(digits, sizeof digits, "%010u", id);
        for (const bool resolved : {true, false}) {
            const Uuid uuid = resolved ? Uuid::create_legacy_interaction_id(id, 0xA5)
                                       : Uuid::create_unresolved_legacy_interaction_id(id, 0xA5);
            EXPECT_EQ(uuid.as_string(Uuid::format_plain).substr(20), "a5" + std::string(digits));
            EXPECT_EQ(uuid.version(), 12u);
            EXPECT_EQ(uuid.legacy_interaction_id(), id);
            EXPECT_EQ(uuid.legacy_interaction_id_flags(), 0xA5);
            EXPECT_EQ(uuid.is_unresolved_legacy_interaction_id(), !resolved);
        }
    }
    EXPECT_EQ(Uuid::create_unresolved_legacy_interaction_id(42).as_string(),
              "00000000-0000-c000-8000-000000000042");
    const Uuid random = Uuid::create_random();
    EXPECT_EQ(random.legacy_interaction_id(), 0u);
    EXPECT_EQ(random.legacy_interaction_id_flags(), 0u);
    // One bit more than an unresolved one has, wherever it is.
    for (unsigned bit = 0; bit < 80; ++bit) {
        Data data = data_of(Uuid::create_unresolved_legacy_interaction_id(0));
        data.bytes[bit / 8] |= static_cast<unsigned char>(1 << bit % 8);
        const bool in_variant = bit / 8 == 8 && bit % 8 >= 6;
        EXPECT_EQ(Uuid(data).is_unresolved_legacy_interaction_id(),
                  in_variant || Uuid(data) == uuid_of({0, 0, 0, 0, 0, 0, 0, 0xC0, 0x80}))
            << bit;
    }
}

// What begins with zeros is for unresolved ones.
TEST(Uuid, LegacyNumbersAreDrawnAgainWhileTheyBeginWithZeros) {
    static unsigned char draws;
    draws = 0;
    tarv_test::ScopedCalls calls(impl::uuid_calls);
    calls->random_fill = [](void* buffer, unsigned size) {
        std::memset(buffer, 0, size);
        // At first behind the eight bytes that count, at last in one of them.
        ++draws;
        static_cast<unsigned char*>(buffer)[10 - draws] = draws;
    };
    EXPECT_EQ(Uuid::create_legacy_interaction_id(7).as_string(),
              "00000000-0000-c300-8000-000000000007");
    EXPECT_EQ(draws, 3);
}

}  // namespace
