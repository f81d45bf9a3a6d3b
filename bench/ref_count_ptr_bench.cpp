#include "tarvcore/ref_count_ptr.h"

#include <boost/make_shared.hpp>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>

#include <memory>
#include <utility>

#include "bench/support/row.h"
#include "bench/topics.h"

namespace tarv_bench {
namespace {

using namespace tarvcore;

// Three words of payload: as large as a small record.
struct Payload {
    int values[3] = {};
};
struct OurObject : RefCounted<AtomicRefCount>, Payload {};
struct BoostObject : boost::intrusive_ref_counter<BoostObject>, Payload {
    virtual ~BoostObject() = default;
};

template <class Pointer>
Pointer make() {
    return Pointer(new typename Pointer::element_type);
}
template <>
std::shared_ptr<Payload> make() {
    return std::make_shared<Payload>();
}
template <>
boost::shared_ptr<Payload> make() {
    return boost::make_shared<Payload>();
}

template <class Pointer>
void copy(benchmark::State& state) {
    const Pointer pointer = make<Pointer>();
    measure(state, [&] {
        Pointer other(pointer);
        keep(other);
    });
}

template <class Pointer>
void move_there_and_back(benchmark::State& state) {
    Pointer pointer = make<Pointer>();
    measure(state, [&] {
        Pointer other(std::move(pointer));
        keep(other);
        pointer = std::move(other);
        keep(pointer);
    });
}

template <class Pointer>
void make_and_destroy(benchmark::State& state) {
    measure(state, [] {
        Pointer pointer = make<Pointer>();
        keep(pointer);
    });
}

using Ours = RefCountPtr<OurObject>;
using BoostIntrusive = boost::intrusive_ptr<BoostObject>;
using BoostShared = boost::shared_ptr<Payload>;
using StdShared = std::shared_ptr<Payload>;

}  // namespace

void add_ref_count_ptr_rows() {
    add_row("pointer: copy, destroy", "1.05 x",
            {{"RefCountPtr", copy<Ours>},
             {"boost::intrusive_ptr", copy<BoostIntrusive>},
             {"boost::shared_ptr", copy<BoostShared>},
             {"std::shared_ptr", copy<StdShared>}});

    add_row("pointer: move there and back", "1.05 x",
            {{"RefCountPtr", move_there_and_back<Ours>},
             {"boost::intrusive_ptr", move_there_and_back<BoostIntrusive>},
             {"std::shared_ptr", move_there_and_back<StdShared>}});

    add_row("object: make, destroy", "1.05 x",
            {{"RefCountPtr", make_and_destroy<Ours>},
             {"boost::intrusive_ptr", make_and_destroy<BoostIntrusive>},
             {"std::shared_ptr", make_and_destroy<StdShared>}});
}

}  // namespace tarv_bench
