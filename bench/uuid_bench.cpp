#include "tarvcore/uuid.h"

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/string_generator.hpp>
#include <boost/uuid/uuid.hpp>
#include <boost/uuid/uuid_hash.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench/support/row.h"
#include "bench/topics.h"
#include "tarvcore/abs_rel_time.h"
//
#include <rpc.h>

namespace tarv_bench {
namespace {

using namespace tarvcore;

// The same bytes as theirs.
boost::uuids::uuid boost_of(const Uuid& uuid) {
    boost::uuids::uuid result;
    uuid.write_binary(result.data);
    return result;
}

constexpr unsigned input_count = 64;

std::vector<Uuid> identifiers() {
    std::mt19937 random(71);
    std::vector<Uuid> result;
    for (unsigned i = 0; i < input_count; ++i) {
        Uuid::BinaryData data;
        for (unsigned char& byte : data.bytes)
            byte = static_cast<unsigned char>(random());
        result.push_back(Uuid(data, Uuid::version_random));
    }
    return result;
}

template <class Make>
void measure_call(benchmark::State& state, Make make) {
    measure(state, [&] { keep(make()); });
}

// What the parsers get: lower-case digits with hyphens.
std::vector<std::string> texts() {
    std::vector<std::string> result;
    for (const Uuid& uuid : identifiers())
        result.push_back(uuid.as_string());
    return result;
}

// `operation` takes two values that differ in a random place.
template <class Value, class Convert, class Operation>
void on_pairs(benchmark::State& state, Convert convert, Operation operation) {
    std::vector<std::pair<Value, Value>> pairs;
    std::mt19937 random(72);
    for (const Uuid& uuid : identifiers()) {
        Uuid::BinaryData data;
        uuid.get_binary_data(data);
        data.bytes[random() % 16] ^= 0x11;
        pairs.emplace_back(convert(uuid), convert(Uuid(data)));
    }
    measure_each(state, pairs, [&](const auto& pair) { keep(operation(pair.first, pair.second)); });
}

Uuid same(const Uuid& uuid) {
    return uuid;
}

template <class Operation>
void ours_on_pairs(benchmark::State& state, Operation operation) {
    on_pairs<Uuid>(state, same, operation);
}
template <class Operation>
void boost_on_pairs(benchmark::State& state, Operation operation) {
    on_pairs<boost::uuids::uuid>(state, boost_of, operation);
}

}  // namespace

void add_uuid_rows() {
    add_row("identifier: random", "30 ns",
            {{"create_random",
              [](benchmark::State& state) {
                  measure_call(state, [] { return Uuid::create_random(); });
              }},
             {"boost, mt19937, unlocked",
              [](benchmark::State& state) {
                  boost::uuids::random_generator_mt19937 generator;
                  measure_call(state, [&] { return generator(); });
              }},
             {"UuidCreate", [](benchmark::State& state) {
                  measure(state, [] {
                      UUID uuid;
                      UuidCreate(&uuid);
                      keep(uuid);
                  });
              }}});
    add_row(
        "identifier: sequential", "110 ns",
        {{"create_sequential",
          [](benchmark::State& state) {
              measure_call(state, [] { return Uuid::create_sequential(); });
          }},
         {"the clock alone",
          [](benchmark::State& state) { measure_call(state, [] { return AbsoluteTime::now(); }); }},
         {"UuidCreateSequential", [](benchmark::State& state) {
              measure(state, [] {
                  UUID uuid;
                  UuidCreateSequential(&uuid);
                  keep(uuid);
              });
          }}});
    add_row("identifier: parse", "7.5 ns",
            {{"from_string_nothrow",
              [](benchmark::State& state) {
                  measure_each(state, texts(), [](const std::string& text) {
                      Uuid uuid;
                      keep(Uuid::from_string_nothrow(text.data(), text.size(), &uuid));
                      keep(uuid);
                  });
              }},
             {"boost",
              [](benchmark::State& state) {
                  measure_each(state, texts(), [](const std::string& text) {
                      keep(boost::uuids::string_generator()(text));
                  });
              }},
             {"UuidFromString", [](benchmark::State& state) {
                  measure_each(state, texts(), [](const std::string& text) {
                      UUID uuid;
                      const auto* characters = reinterpret_cast<const unsigned char*>(text.c_str());
                      UuidFromStringA(const_cast<unsigned char*>(characters), &uuid);
                      keep(uuid);
                  });
              }}});
    add_row("identifier: print into a string", "1 x",
            {{"as_string",
              [](benchmark::State& state) {
                  measure_each(state, identifiers(),
                               [](const Uuid& uuid) { keep(uuid.as_string()); });
              }},
             {"boost", [](benchmark::State& state) {
                  std::vector<boost::uuids::uuid> inputs;
                  for (const Uuid& uuid : identifiers())
                      inputs.push_back(boost_of(uuid));
                  measure_each(state, inputs,
                               [](const auto& uuid) { keep(boost::uuids::to_string(uuid)); });
              }}});
    add_row("identifier: print into a buffer", "4.8 ns",
            {{"write_text", [](benchmark::State& state) {
                  measure_each(state, identifiers(), [](const Uuid& uuid) {
                      char text[Uuid::max_text_length];
                      keep(uuid.write_text(text));
                      keep(text);
                  });
              }}});
    const auto less = [](const auto& a, const auto& b) { return a < b; };
    const auto equal = [](const auto& a, const auto& b) { return a == b; };
    add_row("identifier: less", "1.05 x",
            {{"Uuid", [](benchmark::State& state) { ours_on_pairs(state, decltype(less)()); }},
             {"boost", [](benchmark::State& state) { boost_on_pairs(state, decltype(less)()); }}});
    add_row("identifier: equal", "1.05 x",
            {{"Uuid", [](benchmark::State& state) { ours_on_pairs(state, decltype(equal)()); }},
             {"boost", [](benchmark::State& state) { boost_on_pairs(state, decltype(equal)()); }}});
    add_row("identifier: hash", "1.05 x",
            {{"Uuid",
              [](benchmark::State& state) {
                  measure_each(state, identifiers(), [](const Uuid& uuid) { keep(uuid.hash()); });
              }},
             {"boost", [](benchmark::State& state) {
                  std::vector<boost::uuids::uuid> inputs;
                  for (const Uuid& uuid : identifiers())
                      inputs.push_back(boost_of(uuid));
                  measure_each(state, inputs, [](const auto& uuid) { keep(hash_value(uuid)); });
              }}});
}

}  // namespace tarv_bench
