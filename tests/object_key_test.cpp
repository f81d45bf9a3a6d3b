// Faults to catch: texts or identifiers that are the same and keys that are not, or the other way
// round; an interned value that goes before its last key, or stays; a default key that is looked
// up; a transfer that counts; memory or trace texts taken more often than once.

#include "tarvcore/object_key.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <any>
#include <atomic>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "tarvcore/source_string.h"
#include "tarvcore/string_key.h"
#include "tarvcore/uuid_key.h"
#include "tests/support/allocations.h"
#include "tests/support/threads.h"

namespace {

using namespace tarvcore;
using impl::string_key_count;
using impl::uuid_key_count;

template <class Key>
std::string traced(const Key& key) {
    std::ostringstream os;
    os << key;
    std::ostringstream again;
    key.write_trace(again);
    EXPECT_EQ(os.str(), again.str());
    return os.str();
}

const Uuid some_uuid = Uuid::from_string("7c9e6679-7425-40de-944b-e07fc1f90ae7");

TEST(ObjectKey, UniqueOnesAreThemselves) {
    const ObjectKey null;
    EXPECT_TRUE(null.is_null());
    EXPECT_EQ(null.hash(), 0u);
    EXPECT_EQ(traced(null), "<null>");
    EXPECT_EQ(null, ObjectKey(ObjectKeyToken::default_token()));

    ObjectKey first = ObjectKey::create_unique();
    const ObjectKey second = ObjectKey::create_unique();
    const ObjectKey copy = first;
    EXPECT_FALSE(first.is_null());
    EXPECT_EQ(first, copy);
    EXPECT_NE(first, second);
    EXPECT_NE(first < second, second < first);
    char address[16];
    std::snprintf(address, sizeof address, "0x%08x", static_cast<unsigned>(first.hash()));
    EXPECT_EQ(traced(copy), address);
    const tarv_test::AllocationWatch watch;
    EXPECT_EQ(traced(ObjectKey::create_unique()).size(), 10u);
    EXPECT_EQ(watch.live(), 0);
    first.clear();
    EXPECT_EQ(first, null);

    std::string label = "label\0of any bytes";
    const ObjectKey labeled = ObjectKey::create_unique_with_label(label.data(), 5);
    const ObjectKey other = ObjectKey::create_unique_with_label(label.substr(0, 5));
    label.clear();
    EXPECT_NE(labeled, other);
    EXPECT_EQ(traced(labeled), "label");
    EXPECT_EQ(labeled.query_trace_data()->query_trace_text(), "label");
}

TEST(ObjectKey, HasOneTraceTextForAllThreads) {
    std::vector<ObjectKey> keys;
    for (int i = 0; i < 20'000; ++i)
        keys.push_back(ObjectKey::create_unique());
    std::vector<const char*> texts[2];
    tarv_test::run_threads(2, [&](unsigned i) {
        for (const ObjectKey& key : keys)
            texts[i].push_back(key.query_trace_data()->query_trace_text().data());
    });
    EXPECT_TRUE(texts[0] == texts[1]);
}

TEST(StringKey, OneForEveryText) {
    const unsigned before = string_key_count();
    std::string text = "abc";
    {
        const StringKey first(text.c_str());
        const StringKey second = StringKey::from_string("abcd", 3);
        EXPECT_EQ(StringKey::from_string(std::string_view("abcd", 3)), first);
        EXPECT_EQ(StringKey(std::string_view()), StringKey());
        const StringKey longer("abcd");
        const StringKey with_nul("abc\0", 4);
        text = "xyz";
        EXPECT_EQ(string_key_count(), before + 3);
        EXPECT_EQ(first, second);
        EXPECT_EQ(first.hash(), second.hash());
        EXPECT_NE(first, longer);
        EXPECT_NE(first, with_nul);
        EXPECT_STREQ(first.text(), "abc");
        EXPECT_EQ(first.text(), second.text());
        EXPECT_EQ(with_nul.as_string(), std::string("abc\0", 4));
        EXPECT_EQ(traced(longer), "abcd");
        // A tracing facility sees one text, whichever key it comes from.
        EXPECT_EQ(first.query_trace_data().get(), second.query_trace_data().get());

        const std::unordered_set<StringKey> set = {first, second, longer, StringKey()};
        EXPECT_EQ(set.size(), 3u);
        const std::map<StringKey, int> map = {{first, 1}, {longer, 2}};
        EXPECT_EQ(map.at(second), 1);
    }
    EXPECT_EQ(string_key_count(), before);
}

TEST(UuidKey, OneForEveryIdentifier) {
    const unsigned before = uuid_key_count();
    {
        const UuidKey first(some_uuid);
        const UuidKey second = UuidKey::from_uuid(some_uuid);
        Uuid::BinaryData data;
        some_uuid.get_binary_data(data);
        std::swap(data.bytes[0], data.bytes[4]);  // the hash stays
        const UuidKey other{Uuid(data)};
        EXPECT_EQ(uuid_key_count(), before + 2);
        EXPECT_EQ(first, second);
        EXPECT_NE(first, other);
        EXPECT_EQ(&first.uuid(), &second.uuid());
        EXPECT_EQ(first.token()->uuid(), some_uuid);
        EXPECT_EQ(first.as_object_key(), second.as_object_key());
        EXPECT_NE(first.as_object_key(), other.as_object_key());
        EXPECT_EQ(traced(first.as_object_key()), some_uuid.as_string());
    }
    EXPECT_EQ(uuid_key_count(), before);
}

TEST(StringKey, DefaultsAreNotLookedUp) {
    const unsigned texts = string_key_count();
    const unsigned uuids = uuid_key_count();
    const tarv_test::AllocationWatch watch;
    const StringKey empty("");
    const UuidKey null{Uuid()};
    EXPECT_EQ(empty, StringKey());
    EXPECT_EQ(empty, StringKey("abc", 0));
    EXPECT_EQ(empty.as_string_view(), "");
    EXPECT_STREQ(empty.text(), "");
    EXPECT_EQ(null, UuidKey());
    EXPECT_TRUE(null.uuid().is_null());
    EXPECT_EQ(watch.allocations(), 0);
    EXPECT_EQ(string_key_count(), texts);
    EXPECT_EQ(uuid_key_count(), uuids);
    EXPECT_FALSE(null.as_object_key().is_null());
    EXPECT_EQ(null.as_object_key(), UuidKey().as_object_key());
    EXPECT_EQ(traced(empty), "");
    EXPECT_EQ(traced(null), Uuid().as_string());
}

TEST(StringKey, MovesAndTransfersLeaveTheEmptyText) {
    StringKey key("a text");
    StringKey taken(key.transfer());
    EXPECT_EQ(taken.as_string(), "a text");
    EXPECT_EQ(key, StringKey());
    EXPECT_TRUE(taken.token()->has_unique_ref());
    key = std::move(taken);
    EXPECT_EQ(taken, StringKey());
    EXPECT_EQ(key.as_string(), "a text");
    key.clear();
    EXPECT_TRUE(key.empty());
}

// Keys, source strings and object keys of one value, gone in every order.
TEST(StringKey, ValuesOutliveAllButTheLast) {
    const unsigned texts = string_key_count();
    const unsigned uuids = uuid_key_count();
    constexpr char text[] = "some text that is longer than a string's own place";
    std::vector<unsigned> order = {0, 1, 2, 3};
    do {
        StringKey key(text);
        UuidKey uuid_key(some_uuid);
        std::any values[] = {std::pair(key, uuid_key), std::pair(StringKey(text), uuid_key),
                             std::pair(key, uuid_key.as_object_key()),
                             std::pair(SourceString(key), uuid_key.as_object_key())};
        const char* const interned = key.text();
        const Uuid& interned_uuid = uuid_key.uuid();
        key.clear();
        uuid_key.clear();
        for (const unsigned next : order) {
            EXPECT_EQ(string_key_count(), texts + 1);
            EXPECT_EQ(uuid_key_count(), uuids + 1);
            EXPECT_STREQ(interned, text);
            EXPECT_EQ(interned_uuid, some_uuid);
            values[next].reset();
        }
        EXPECT_EQ(string_key_count(), texts);
        EXPECT_EQ(uuid_key_count(), uuids);
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST(StringKey, SourceStringsKnowTheirKey) {
    SourceString string;
    {
        const StringKey key("a key");
        string = key;
        EXPECT_EQ(string.query_trace_data().get(), key.query_trace_data().get());
    }
    EXPECT_EQ(string, "a key");
    EXPECT_FALSE(string.is_reference());
    EXPECT_EQ(string.query_trace_data()->query_trace_text(), "a key");
    EXPECT_EQ(string.query_trace_data().get(), StringKey("a key").query_trace_data().get());
    EXPECT_TRUE(SourceString(StringKey()).is_reference());
}

TEST(StringKey, TakesMemoryForNewTextsOnly) {
    const std::string text = "some text that is longer than a string's own place";
    StringKey(text.c_str()).clear();  // leaves the token's memory for the next one
    const tarv_test::AllocationWatch watch;
    {
        const StringKey key(text.c_str());
        EXPECT_EQ(watch.allocations(), 1);
        const StringKey copy(key);
        EXPECT_EQ(watch.allocations(), 1);
    }
    EXPECT_EQ(watch.live(), 0);
}

// A million of both kinds: some texts are everybody's, some only this thread's.
TEST(StringKey, ThreadsMakeAndDropAMillion) {
    const unsigned texts = string_key_count();
    const unsigned uuids = uuid_key_count();
    std::atomic<unsigned> failures = 0;
    tarv_test::run_threads(8, [&](unsigned number) {
        std::mt19937 random(number);
        std::vector<StringKey> keys(100);
        std::vector<UuidKey> uuid_keys(100);
        for (unsigned i = 0; i < 62'500; ++i) {
            std::string text = std::to_string(random() % 50);
            if (i % 3 == 0) text += '@' + std::to_string(number) + '/' + std::to_string(i);
            StringKey& key = keys[random() % keys.size()];
            key = StringKey(text.data(), text.size());
            failures += key.as_string_view() != text;

            Uuid::BinaryData data = {{static_cast<unsigned char>(random() % 50 + 1)}};
            if (i % 3 == 0) data.bytes[8] = static_cast<unsigned char>(number);
            UuidKey& uuid_key = uuid_keys[random() % uuid_keys.size()];
            uuid_key = UuidKey(Uuid(data));
            failures += uuid_key.uuid() != Uuid(data);
        }
    });
    EXPECT_EQ(failures, 0u);
    EXPECT_EQ(string_key_count(), texts);
    EXPECT_EQ(uuid_key_count(), uuids);
}

}  // namespace
