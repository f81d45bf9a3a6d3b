// Faults to catch: two texts of one hash taken for one; an entry lost, or left behind, in the
// middle of a chain or while the table grows; an entry freed that has a use, or never; one text
// with two entries after a race; tokens that touch a cache which has gone.

#include "tarvcore/impl/object_key_cache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tarvcore/object_key_token.h"
#include "tests/support/allocations.h"
#include "tests/support/threads.h"
#include "tests/support/trials.h"

namespace {

using namespace tarvcore;

// Counts its lives.
struct Text {
    explicit Text(const std::string& source) : text(source) {
        ++live;
        if (const auto hook = std::exchange(while_made, nullptr)) hook();
    }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() { --live; }

    std::string text;

    static inline std::atomic<int> live = 0;
    static inline std::function<void()> while_made;  // for once
};

struct TextToken : ObjectKeyToken {
    explicit TextToken(const Text* text) : ObjectKeyToken(text) {}
    const std::string& text() const { return static_cast<const Text*>(key_value())->text; }
};

// As many hashes as `number`.
template <unsigned number>
struct WeakHash {
    using Source = std::string;

    std::uint32_t operator()(const std::string& text) const {
        std::uint32_t hash = 0;
        for (const char c : text)
            hash = hash * 31 + static_cast<unsigned char>(c);
        return hash % number;
    }
};

struct TextEqual {
    bool operator()(const Text& a, const std::string& b) const { return a.text == b; }
};

struct TextTrace {
    explicit TextTrace(const std::string&) {}
    std::string_view operator()(const Text& text) const { return text.text; }
};

template <unsigned hashes>
class Cache : public impl::ObjectKeyCache<TextToken, Text, WeakHash<hashes>, TextEqual, TextTrace> {
public:
    Cache(unsigned shard_count, unsigned bucket_count) { this->open(shard_count, bucket_count); }
    ~Cache() { this->close(); }

    unsigned entries() { return this->counts().entries; }
};

using TokenPtr = RefCountPtr<const TextToken>;

// Against a model that knows which texts are in use.  With one hash all are in one chain.
template <unsigned hashes>
void make_and_drop() {
    Cache<hashes> cache(3, 2);
    std::map<std::string, std::vector<TokenPtr>> model;
    std::mt19937 random(hashes);
    for (unsigned trial = 0; trial < tarv_test::trials(3000); ++trial) {
        const std::string text = std::to_string(random() % 40);
        if (random() % 2 == 0) {
            const TokenPtr token = cache.token_for(text);
            ASSERT_EQ(token->text(), text);
            ASSERT_EQ(token->query_trace_data()->query_trace_text(), text);
            std::vector<TokenPtr>& others = model[text];
            for (const TokenPtr& other : others)
                ASSERT_EQ(other->key_value(), token->key_value());
            others.push_back(token);
        } else if (const auto it = model.find(text); it != model.end()) {
            std::vector<TokenPtr>& tokens = it->second;
            tokens.erase(tokens.begin() + static_cast<int>(random() % tokens.size()));
            if (tokens.empty()) model.erase(it);
        }
        ASSERT_EQ(cache.entries(), model.size());
        ASSERT_EQ(Text::live, static_cast<int>(model.size()));
    }
    for (const auto& [text, tokens] : model)
        ASSERT_EQ(tokens.front()->text(), text);
    model.clear();
    EXPECT_EQ(cache.entries(), 0u);
}

TEST(ObjectKeyCache, HoldsWhatIsInUse) {
    make_and_drop<1>();
    make_and_drop<7>();
    make_and_drop<1'000'003>();
}

TEST(ObjectKeyCache, GrowsByTheLadder) {
    const unsigned ladder[][2] = {{62, 251},      {63, 1021},      {255, 1021},     {256, 4093},
                                  {1023, 4093},   {1024, 16381},   {4095, 16381},   {4096, 65537},
                                  {16384, 65537}, {16385, 262151}, {262151, 262151}};
    for (const auto& [from, to] : ladder)
        EXPECT_EQ(impl::grown_bucket_count(from), to) << from;

    Cache<1'000'000'007> cache(1, 1);
    std::vector<TokenPtr> tokens;
    unsigned buckets = 1;
    while (buckets < 65537) {
        // Full with four in each bucket; one more makes it grow, and all are found again.
        const unsigned full = buckets * 4;
        while (tokens.size() < full)
            tokens.push_back(cache.token_for(std::to_string(tokens.size())));
        ASSERT_EQ(cache.counts().buckets, buckets);
        tokens.push_back(cache.token_for(std::to_string(full)));
        buckets = impl::grown_bucket_count(buckets);
        ASSERT_EQ(cache.counts().buckets, buckets);
        ASSERT_EQ(cache.entries(), full + 1);
        for (unsigned i = 0; i <= full; ++i)
            ASSERT_EQ(cache.token_for(std::to_string(i))->key_value(), tokens[i]->key_value());
    }
    tokens.clear();
    EXPECT_EQ(cache.entries(), 0u);
    EXPECT_EQ(cache.counts().buckets, buckets);
}

// While an entry is made nobody holds the lock: it, or another one, may come from elsewhere.
TEST(ObjectKeyCache, LooksAgainWhenSomethingCameMeanwhile) {
    for (const std::string meanwhile : {"text", "other"}) {
        Cache<1> cache(1, 1);
        TokenPtr other;
        Text::while_made = [&] { other = cache.token_for(meanwhile); };
        const TokenPtr token = cache.token_for("text");
        EXPECT_EQ(other->text(), meanwhile);
        EXPECT_EQ(token->text(), "text");
        EXPECT_EQ(token->key_value() == other->key_value(), meanwhile == "text");
        EXPECT_EQ(cache.entries(), meanwhile == "text" ? 1u : 2u);
        EXPECT_EQ(Text::live, static_cast<int>(cache.entries()));
    }
}

// Few texts and many threads: the same ones come and go all the time, at once.
TEST(ObjectKeyCache, ThreadsShareEntries) {
    Cache<5> cache(1, 2);
    std::atomic<unsigned> failures = 0;
    tarv_test::run_threads(8, [&](unsigned number) {
        std::mt19937 random(number);
        std::vector<TokenPtr> tokens(6);
        for (unsigned i = 0; i < tarv_test::trials(20'000); ++i) {
            const std::string text = std::to_string(random() % 12);
            TokenPtr& token = tokens[random() % tokens.size()];
            token = cache.token_for(text);
            failures += token->text() != text;
            failures += cache.token_for(text)->key_value() != token->key_value();
        }
    });
    EXPECT_EQ(failures, 0u);
    EXPECT_EQ(cache.entries(), 0u);
    EXPECT_EQ(Text::live, 0);
}

TEST(ObjectKeyCache, RaisesWithoutShardsAndLeavesTokensAlone) {
    const auto expect_error = [](auto& cache) {
        try {
            cache.token_for("text");
            ADD_FAILURE() << "found";
        } catch (const std::runtime_error& e) {
            EXPECT_STREQ(e.what(),
                         "tarvcore::impl::ObjectKeyCache not constructed or already destroyed");
        }
    };
    impl::ObjectKeyCache<TextToken, Text, WeakHash<7>, TextEqual, TextTrace> cache;
    expect_error(cache);
    cache.open(2, 3);
    {
        const TokenPtr first = cache.token_for("first");
        const TokenPtr second = cache.token_for("first");
        cache.close();
        expect_error(cache);
        EXPECT_EQ(cache.counts().entries, 0u);
        EXPECT_EQ(first->text(), "first");
        EXPECT_EQ(second->query_trace_data()->query_trace_text(), "first");
        cache.open(1, 1);
        EXPECT_NE(cache.token_for("first")->key_value(), first->key_value());
    }
    EXPECT_EQ(cache.counts().entries, 0u);
    EXPECT_EQ(Text::live, 1);  // that nobody may free: there is no lock for its uses
    Text::live = 0;
    cache.abandon();
    expect_error(cache);
}

TEST(ObjectKeyCache, GivesEverythingBackWithoutMemory) {
    tarv_test::fail_each_allocation(
        [] {
            Cache<1> cache(1, 1);
            const TokenPtr first = cache.token_for("first");
            try {
                std::vector<TokenPtr> tokens;
                for (unsigned i = 0; i < 5; ++i)  // grows the table
                    tokens.push_back(cache.token_for(std::string(20, static_cast<char>('a' + i))));
                tokens.push_back(cache.token_for("first"));
            } catch (const std::bad_alloc&) {
                if (cache.entries() != 1) throw std::logic_error("an entry without a use");
                throw;
            }
        },
        [] { ASSERT_EQ(Text::live, 0); });
}

}  // namespace
