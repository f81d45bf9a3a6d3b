// The address checker: run-time support for code that the compiler instruments with
// -fsanitize=kernel-address.  That option is meant for kernels and therefore brings no library of
// its own, which is what makes it usable for this target.
//
// Each 8 bytes of the lower 2 GiB have a shadow byte: 0 when all of them may be touched, 1 to 7
// when only that many may, negative when none may.  The compiler puts red zones around variables
// and tests the shadow before every access; this file does the same for the heap and for the
// functions of the C library that copy and scan memory.  The first fault is reported on standard
// error, and the process ends.
//
// The program must contain everything it uses (-static), since calls are redirected by the linker
// (--wrap) and that ends at the borders of a DLL; it must not be large-address-aware.  This file
// itself must not be instrumented.
#include <windows.h>

#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "tests/checked/report.h"

extern "C" {
void* __real_malloc(std::size_t size);
void __real_free(void* memory);
void* __real_memcpy(void* to, const void* from, std::size_t size);
void* __real_memmove(void* to, const void* from, std::size_t size);
void* __real_memset(void* memory, int value, std::size_t size);
int __real_memcmp(const void* a, const void* b, std::size_t size);
std::size_t __real_strlen(const char* text);
int __real__Unwind_RaiseException(void* exception);
int __real__Unwind_Resume_or_Rethrow(void* exception);
}

namespace {

using Address = std::uintptr_t;

// The same offset stands in the compiler's options (cmake/Checkers.cmake).
constexpr Address kShadow = 0x20000000;
constexpr Address kShadowSize = 0x80000000 / 8;

enum Poison : std::uint8_t {
    kHeapRedZone = 0xfa,
    kHeapFreed = 0xfd,
    kGlobalRedZone = 0xf9,
    kOutOfScope = 0xf8,
};

bool ready = false;

std::int8_t* shadow(Address address) {
    return reinterpret_cast<std::int8_t*>((address >> 3) + kShadow);
}

void poison(Address begin, Address end, std::uint8_t value) {
    __real_memset(shadow(begin), value, (end - begin) >> 3);
}

// Makes `size` bytes from `begin` addressable, and nothing else of the last 8.
void unpoison(Address begin, std::size_t size) {
    poison(begin, begin + (size & ~7u), 0);
    if (size & 7) *shadow(begin + size) = static_cast<std::int8_t>(size & 7);
}

// Runs before any instrumented code: from a TLS callback, or from the first allocation if the C
// library allocates before that.
void prepare() {
    if (ready) return;
    void* const memory = VirtualAlloc(reinterpret_cast<void*>(kShadow), kShadowSize,
                                      MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (!memory) checked::report("address checker: no room for the shadow memory");
    ready = true;
}

const char* describe(std::uint8_t value) {
    switch (value) {
        case kHeapRedZone:
            return "outside a heap block";
        case kHeapFreed:
            return "in a freed heap block";
        case kGlobalRedZone:
            return "outside a global variable";
        case kOutOfScope:
            return "in a variable out of scope";
        default:
            return value < 8 ? "past the end of an object" : "outside a local variable";
    }
}

// The first byte of the range that must not be touched, or 0.
Address first_fault(Address begin, std::size_t size) {
    if (!ready || begin >= 0x80000000 || size == 0) return 0;
    const Address end = begin + size;
    for (Address at = begin; at < end; at = (at | 7) + 1) {
        const std::int8_t value = *shadow(at);
        const Address last = std::min(end - 1, at | 7);
        if (value != 0 && static_cast<std::int8_t>(last & 7) >= value) {
            return value < 0 ? at : std::max(at, (at & ~7u) + static_cast<Address>(value));
        }
    }
    return 0;
}

[[gnu::noinline]] void report_access(const char* what, Address address, std::size_t size,
                                     Address fault) {
    char text[200];
    std::snprintf(text, sizeof text, "address checker: %s of %u bytes at %08x touches %08x, %s",
                  what, static_cast<unsigned>(size), static_cast<unsigned>(address),
                  static_cast<unsigned>(fault),
                  describe(static_cast<std::uint8_t>(*shadow(fault))));
    checked::report(text);
}

void check(const char* what, Address address, std::size_t size) {
    if (const Address fault = first_fault(address, size)) report_access(what, address, size, fault);
}
void check(const char* what, const void* memory, std::size_t size) {
    check(what, reinterpret_cast<Address>(memory), size);
}

// Removes all poison from the calling thread's stack, from here up.  What leaves functions without
// running their epilogues (exceptions, longjmp, the end of a thread) leaves their poison behind.
void unpoison_stack() {
    void* const here = __builtin_frame_address(0);
    MEMORY_BASIC_INFORMATION region;
    VirtualQuery(here, &region, sizeof region);
    poison(reinterpret_cast<Address>(here) & ~7u,
           reinterpret_cast<Address>(region.BaseAddress) + region.RegionSize, 0);
}

void NTAPI on_thread_event(void*, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) prepare();
    if (reason == DLL_THREAD_ATTACH) unpoison_stack();
}

// --- The heap ---
//
// A block is laid out as header, 16 bytes of red zone, the caller's bytes, 32 bytes of red zone.
// Freed blocks stay poisoned in a queue until 8 MiB of younger ones are behind them.

constexpr std::size_t kFront = 32;
constexpr std::size_t kRedZone = 16;
constexpr std::size_t kBack = 32;
constexpr std::size_t kQuarantine = 8u << 20;

enum class State : unsigned { kLive = 0xA110C8ED, kFreed = 0xDEADF4EE };

struct Header {
    std::size_t size;
    State state;
    Header* next;

    Address block() const { return reinterpret_cast<Address>(this) + kFront; }
    std::size_t rounded() const { return (size + 7) & ~7u; }
    std::size_t whole() const { return kFront + rounded() + kBack; }
};
static_assert(sizeof(Header) <= kFront - kRedZone);

Header* header_of(void* memory) {
    return reinterpret_cast<Header*>(static_cast<char*>(memory) - kFront);
}

// Whether the block was made here.  The C library's DLL also makes some (strdup, getcwd) which its
// caller frees.
bool is_ours(void* memory) {
    const Address address = reinterpret_cast<Address>(memory);
    return address < 0x80000000 && static_cast<std::uint8_t>(*shadow(address - 8)) == kHeapRedZone;
}

SRWLOCK quarantine_lock = SRWLOCK_INIT;
Header* oldest;
Header* youngest;
std::size_t quarantined;

void* allocate(std::size_t size) {
    prepare();
    if (size > 0x7fffff00) return nullptr;
    auto* const header = static_cast<Header*>(__real_malloc(((size + 7) & ~7u) + kFront + kBack));
    if (!header) return nullptr;
    *header = {size, State::kLive, nullptr};
    const Address begin = header->block();
    poison(begin - kRedZone, begin, kHeapRedZone);
    poison(begin + header->rounded(), begin + header->rounded() + kBack, kHeapRedZone);
    unpoison(begin, size);
    return reinterpret_cast<void*>(begin);
}

// Takes the oldest blocks that are too many out of the quarantine; answers their chain.
Header* release_oldest() {
    Header* released = nullptr;
    while (quarantined > kQuarantine) {
        Header* const header = oldest;
        oldest = header->next;
        quarantined -= header->whole();
        header->next = released;
        released = header;
    }
    return released;
}

void deallocate(void* memory) {
    if (!memory) return;
    if (!is_ours(memory)) {
        if (!HeapValidate(reinterpret_cast<HANDLE>(_get_heap_handle()), 0, memory)) {
            checked::report("address checker: free of what is no heap block");
        }
        __real_free(memory);
        return;
    }
    Header* const header = header_of(memory);
    const State state = static_cast<State>(InterlockedExchange(
        reinterpret_cast<volatile long*>(&header->state), static_cast<long>(State::kFreed)));
    if (state == State::kFreed) checked::report("address checker: second free of a heap block");
    if (state != State::kLive) checked::report("address checker: free of what is no heap block");
    poison(header->block(), header->block() + header->rounded(), kHeapFreed);

    AcquireSRWLockExclusive(&quarantine_lock);
    header->next = nullptr;
    (oldest ? youngest->next : oldest) = header;
    youngest = header;
    quarantined += header->whole();
    Header* released = release_oldest();
    ReleaseSRWLockExclusive(&quarantine_lock);

    while (released) {
        Header* const next = released->next;
        poison(reinterpret_cast<Address>(released),
               reinterpret_cast<Address>(released) + released->whole(), 0);
        __real_free(released);
        released = next;
    }
}

std::size_t size_of_block(void* memory) {
    return is_ours(memory) ? header_of(memory)->size : _msize(memory);
}

}  // namespace

extern "C" {

[[gnu::section(".CRT$XLB"), gnu::used]] PIMAGE_TLS_CALLBACK address_checker_callback =
    on_thread_event;

// --- What the linker redirects to here ---

void* __wrap_malloc(std::size_t size) {
    return allocate(size);
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    if (size != 0 && count > SIZE_MAX / size) return nullptr;
    void* const memory = allocate(count * size);
    if (memory) __real_memset(memory, 0, count * size);
    return memory;
}

void* __wrap_realloc(void* memory, std::size_t size) {
    void* const moved = allocate(size);
    if (memory && moved) {
        __real_memcpy(moved, memory, std::min(size_of_block(memory), size));
        deallocate(memory);
    }
    return moved;
}

void __wrap_free(void* memory) {
    deallocate(memory);
}

void* __wrap_memcpy(void* to, const void* from, std::size_t size) {
    check("memcpy's read", from, size);
    check("memcpy's write", to, size);
    return __real_memcpy(to, from, size);
}

void* __wrap_memmove(void* to, const void* from, std::size_t size) {
    check("memmove's read", from, size);
    check("memmove's write", to, size);
    return __real_memmove(to, from, size);
}

void* __wrap_memset(void* memory, int value, std::size_t size) {
    check("memset's write", memory, size);
    return __real_memset(memory, value, size);
}

int __wrap_memcmp(const void* a, const void* b, std::size_t size) {
    check("memcmp's read", a, size);
    check("memcmp's read", b, size);
    return __real_memcmp(a, b, size);
}

std::size_t __wrap_strlen(const char* text) {
    const std::size_t length = __real_strlen(text);
    check("strlen's read", text, length + 1);
    return length;
}

// Exceptions that uninstrumented code throws pass through instrumented functions too.
int __wrap__Unwind_RaiseException(void* exception) {
    unpoison_stack();
    return __real__Unwind_RaiseException(exception);
}
int __wrap__Unwind_Resume_or_Rethrow(void* exception) {
    unpoison_stack();
    return __real__Unwind_Resume_or_Rethrow(exception);
}

// --- What the compiler calls ---
//
// The first form tests the shadow here; the second, that of functions small enough for tests in
// line, comes when such a test has failed.

#define ACCESS(what, kind, size)                                 \
    void __asan_##kind##size##_noabort(Address address) {        \
        check(what, address, size);                              \
    }                                                            \
    void __asan_report_##kind##size##_noabort(Address address) { \
        check(what, address, size);                              \
    }
#define ACCESS_ANY(what, kind)                                                 \
    void __asan_##kind##N_noabort(Address address, std::size_t size) {         \
        check(what, address, size);                                            \
    }                                                                          \
    void __asan_report_##kind##_n_noabort(Address address, std::size_t size) { \
        check(what, address, size);                                            \
    }
#define ACCESSES(what, kind) \
    ACCESS(what, kind, 1)    \
    ACCESS(what, kind, 2)    \
    ACCESS(what, kind, 4)    \
    ACCESS(what, kind, 8)    \
    ACCESS(what, kind, 16)   \
    ACCESS_ANY(what, kind)
ACCESSES("read", load)
ACCESSES("write", store)

// The compiler's record of a global variable and the red zone behind it.
struct Global {
    Address begin;
    std::size_t size;
    std::size_t size_with_red_zone;
    const char* name;
    const char* module;
    std::size_t has_dynamic_initialiser;
    void* location;
    std::size_t odr_indicator;
};

void __asan_register_globals(const Global* globals, std::size_t count) {
    prepare();
    for (const Global* global = globals; global != globals + count; ++global) {
        poison(global->begin, global->begin + global->size_with_red_zone, kGlobalRedZone);
        unpoison(global->begin, global->size);
    }
}
void __asan_unregister_globals(const Global* globals, std::size_t count) {
    for (const Global* global = globals; global != globals + count; ++global) {
        poison(global->begin, global->begin + global->size_with_red_zone, 0);
    }
}

void __asan_handle_no_return() {
    unpoison_stack();
}
void __asan_poison_stack_memory(Address begin, std::size_t size) {
    poison(begin, begin + ((size + 7) & ~7u), kOutOfScope);
}
void __asan_unpoison_stack_memory(Address begin, std::size_t size) {
    unpoison(begin, size);
}
void __asan_alloca_poison(Address, std::size_t) {}
void __asan_allocas_unpoison(Address top, Address bottom) {
    if (top != 0 && top < bottom) poison(top, bottom, 0);
}

void __asan_init() {
    prepare();
}
void __asan_version_mismatch_check_v8() {}
void __asan_before_dynamic_init(const char*) {}
void __asan_after_dynamic_init() {}
}
