#include "tarvcore/static_instance.h"

#include "bench/support/row.h"
#include "bench/topics.h"

namespace tarv_bench {
namespace {

struct Thing {
    int value = 42;
};

Thing& function_static() {
    static Thing& thing = *new Thing;
    return thing;
}

}  // namespace

void add_static_instance_rows() {
    add_row("static instance: second use", "2 ns",
            {{"StaticInstance",
              [](benchmark::State& state) {
                  static constinit tarvcore::StaticInstance<Thing> instance;
                  measure(state, [] { keep(instance->value); });
              }},
             {"static in a function", [](benchmark::State& state) {
                  measure(state, [] { keep(function_static().value); });
              }}});
}

}  // namespace tarv_bench
