// Faults to catch: the old object released before the new pointer is stored; self-assignment that
// frees; adopted references counted again; transfers that copy or leave the source filled.

#include "tarvcore/ref_count_ptr.h"

#include <gtest/gtest.h>

#include <functional>
#include <type_traits>
#include <utility>

namespace {

using namespace tarvcore;

int live = 0;

class Object : public RefCounted<AtomicRefCount> {
public:
    Object() { ++live; }
    ~Object() override {
        if (on_destroy) on_destroy();
        --live;
    }
    std::function<void()> on_destroy;
};

class Derived : public Object {};

using Ptr = RefCountPtr<Object>;

// Every test ends with no object alive.
class RefCountPtrTest : public testing::Test {
protected:
    void SetUp() override { live = 0; }
    void TearDown() override { EXPECT_EQ(live, 0); }
};

static_assert(sizeof(Ptr) == sizeof(void*));
static_assert(!std::is_convertible_v<Ptr, int>, "a truth value, not a number");
static_assert(!std::is_constructible_v<RefCountPtr<Derived>, Ptr>, "no way down");
static_assert(std::is_constructible_v<Ptr, RefCountPtr<Derived>>, "its twin");

TEST_F(RefCountPtrTest, ReplacingStoresTheNewPointerFirst) {
    Object* const replacement = new Object;
    const Ptr keeper(replacement);
    const std::pair<void (*)(Ptr&, Object*), Object*> ways[] = {
        {[](Ptr& p, Object* o) { p = o; }, replacement},
        {[](Ptr& p, Object* o) { p = Ptr(o); }, replacement},
        {[](Ptr& p, Object* o) { p.reset(o); }, replacement},
        {[](Ptr& p, Object* o) { p.attach(Ptr(o).detach()); }, replacement},
        {[](Ptr& p, Object*) { p.clear(); }, nullptr},
    };
    for (const auto& [replace, expected] : ways) {
        Ptr pointer(new Object);
        Object* seen = pointer.get();
        pointer->on_destroy = [&] { seen = pointer.get(); };
        replace(pointer, replacement);
        EXPECT_EQ(seen, expected);
    }
    EXPECT_TRUE(keeper->has_unique_ref());
}

TEST_F(RefCountPtrTest, SurvivesItself) {
    Ptr pointer(new Object);
    pointer.reset(pointer.get());
    pointer = pointer.get();
    Ptr& same = pointer;
    pointer = same;
    pointer = std::move(same);
    ASSERT_FALSE(pointer.is_null());
    EXPECT_EQ(live, 1);
    EXPECT_TRUE(pointer->has_unique_ref());
}

TEST_F(RefCountPtrTest, AdoptsAndHandsOutReferences) {
    Ptr pointer(new Object);
    Object* raw = pointer.detach();
    EXPECT_TRUE(pointer.is_null());
    EXPECT_EQ(pointer.detach(), nullptr);
    EXPECT_TRUE(raw->has_unique_ref());
    { EXPECT_FALSE(Ptr(raw, true)->has_unique_ref()); }
    { const Ptr adopted(raw, false); }
    EXPECT_EQ(live, 0);
    pointer.clear();
}

TEST_F(RefCountPtrTest, TransfersWithoutCounting) {
    Ptr source(new Object);
    Object* const object = source.get();
    (void)source.transfer();  // consumed by nobody
    EXPECT_EQ(source.get(), object);

    Ptr constructed(source.transfer());
    EXPECT_TRUE(source.is_null());
    Ptr assigned(new Object);
    assigned = constructed.transfer();
    EXPECT_TRUE(constructed.is_null());
    Ptr moved(std::move(assigned));
    EXPECT_TRUE(assigned.is_null());
    EXPECT_EQ(moved.get(), object);
    EXPECT_TRUE(object->has_unique_ref());
    EXPECT_EQ(live, 1);
}

TEST_F(RefCountPtrTest, ComparesAndTests) {
    const Ptr a(new Object);
    const Ptr b(new Object);
    const Ptr null;
    EXPECT_TRUE(a && !null && a == a.as_const_ptr() && null == nullptr);
    EXPECT_FALSE(a == b) << "two pointers that are not null";
    EXPECT_TRUE(a->has_unique_ref()) << "as_const_ptr counts nothing";

    const RefCountPtr<Derived> derived(new Derived);
    EXPECT_TRUE(Ptr(derived) == derived);
}

}  // namespace
