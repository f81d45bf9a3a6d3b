// Commits the fault that its argument names.  What the checkers are to say about each stands in
// planted_faults.sh.
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/threads.h"

namespace {

// Volatile, so that the compiler cannot see the faults coming.
volatile int ten = 10;
volatile int sink;
int table[10];

void* hide(void* pointer) {
    asm volatile("" : "+r"(pointer));
    return pointer;
}

[[gnu::noinline]] void write(volatile char* to, int count) {
    for (int i = 0; i < count; ++i)
        to[i] = 1;
}

[[gnu::noinline]] void fail_deep(int depth) {
    volatile char local[100];
    local[depth] = 1;
    if (depth == 0) throw std::runtime_error("deep");
    fail_deep(depth - 1);
    sink = local[depth];
}

[[gnu::noinline]] int fill_stack() {
    volatile char local[2000];
    for (volatile char& byte : local)
        byte = 1;
    return local[ten];
}

void commit(const std::string& fault) {
    // At first what must go through.
    if (fault == "none") {
        std::string text(100, 'x');
        text += std::to_string(ten);
        std::free(_strdup(text.c_str()));
        std::free(std::realloc(std::malloc(10), 2000));
    } else if (fault == "exceptions") {
        try {
            fail_deep(20);
        } catch (const std::exception&) {
        }
        sink = fill_stack();
    } else if (fault == "threads") {
        tarv_test::run_threads(4, [](unsigned) {
            for (int n = 0; n < 2000; ++n)
                sink = std::string(100, 'y')[50];
        });
    } else if (fault == "heap_write") {
        auto* p = new char[static_cast<unsigned>(ten)];
        p[ten] = 1;
        sink = p[0];
        delete[] p;
    } else if (fault == "heap_read") {
        auto* p = static_cast<char*>(std::malloc(10));
        std::memset(p, 1, 10);
        sink = static_cast<char*>(hide(p))[ten + 6];
        std::free(p);
    } else if (fault == "heap_before") {
        auto* p = static_cast<char*>(std::calloc(10, 1));
        sink = p[5 - ten];
        std::free(p);
    } else if (fault == "heap_copy") {
        const std::vector<char> from(10);
        std::vector<char> to(static_cast<unsigned>(ten) - 1);
        std::memcpy(to.data(), from.data(), static_cast<unsigned>(ten));
        sink = to[0];
    } else if (fault == "heap_text") {
        auto* p = static_cast<char*>(std::malloc(10));
        std::memset(p, 'x', 10);
        sink = static_cast<int>(std::strlen(static_cast<char*>(hide(p))));
        std::free(p);
    } else if (fault == "freed") {
        auto* p = new int[10];
        p[0] = 1;
        delete[] p;
        sink = static_cast<int*>(hide(p))[0];
    } else if (fault == "stale_iterator") {
        std::vector<int> v(10);
        const auto it = v.begin();
        v.reserve(1000);
        sink = *it;
    } else if (fault == "second_free") {
        void* const p = std::malloc(10);
        std::free(hide(p));
        std::free(hide(p));
    } else if (fault == "inner_free") {
        std::free(hide(static_cast<char*>(std::malloc(100)) + 16));
    } else if (fault == "stack") {
        volatile char local[8];
        write(local, ten);
        sink = local[0];
    } else if (fault == "scope") {
        volatile int* escaped;
        {
            volatile int local = ten;
            escaped = &local;
        }
        sink = *escaped;
    } else if (fault == "global") {
        const int* p = static_cast<int*>(hide(table));
        sink = p[ten];
    } else if (fault == "signed") {
        const int most = INT_MAX;
        sink = most + ten;
    } else if (fault == "shift") {
        sink = 1 << (ten + 22);
    } else if (fault == "index") {
        sink = table[ten];
    } else if (fault == "cast") {
        volatile double large = 1e20;
        sink = static_cast<int>(large);
    } else if (fault == "misaligned") {
        alignas(8) char bytes[16] = {};
        sink = static_cast<int>(*reinterpret_cast<volatile std::uint32_t*>(bytes + (ten - 9)));
    } else if (fault == "null") {
        const auto* p = static_cast<const std::string*>(hide(nullptr));
        sink = static_cast<int>(p->size());
    } else if (fault == "vector_index") {
        std::vector<int> v(10);
        sink = v[static_cast<unsigned>(ten)];
    } else {
        std::exit(2);
    }
}

}  // namespace

int main(int, char** arguments) {
    commit(arguments[1]);
    std::puts("survived");
    return 0;
}
