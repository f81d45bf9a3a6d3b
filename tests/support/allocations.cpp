#include "tests/support/allocations.h"

#include <cstdlib>
#include <cstring>

#include <windows.h>

namespace tarv_test {
namespace {

struct State {
    unsigned long thread;
    int allocations;
    int live;
    int failing_from;
};

constexpr int never = -1;

State state = {0, 0, 0, never};

#if defined(TARVCORE_STATIC)
// The checkers' heap, which the linker puts in the C runtime's place.
constexpr auto real_malloc = &std::malloc;
constexpr auto real_free = &std::free;
#else
decltype(&std::malloc) real_malloc;
decltype(&std::free) real_free;
#endif

bool watched() {
    return state.thread != 0 && state.thread == GetCurrentThreadId();
}

void* watching_malloc(std::size_t size) {
    if (!watched()) return real_malloc(size);
    const int number = state.allocations++;
    if (state.failing_from != never && number >= state.failing_from) return nullptr;
    void* block = real_malloc(size);
    if (block != nullptr) ++state.live;
    return block;
}

void watching_free(void* block) {
    if (watched() && block != nullptr) --state.live;
    real_free(block);
}

#if defined(TARVCORE_STATIC)

// The operators below are the program's only ones.
void install_once() {}

#else

// operator new and delete of all modules are those of the C++ runtime, which calls the C runtime's
// malloc and free through its import table.  The watch puts its own functions there.

// The place in a module's import table that holds the address of a C runtime function.
void** import_slot(HMODULE module, const char* function) {
    auto* base = reinterpret_cast<char*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    const auto* import =
        reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
    for (; import->Name != 0; ++import) {
        if (_stricmp(base + import->Name, "msvcrt.dll") != 0) continue;
        const auto* names =
            reinterpret_cast<const IMAGE_THUNK_DATA*>(base + import->OriginalFirstThunk);
        auto* slots = reinterpret_cast<void**>(base + import->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++slots) {
            const auto* name =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(name->Name), function) == 0) return slots;
        }
    }
    return nullptr;
}

// Puts a replacement into the import table and answers what was there.
template <class Function>
Function replace_import(HMODULE module, const char* name, Function replacement) {
    void** slot = import_slot(module, name);
    if (slot == nullptr) std::abort();
    auto real = reinterpret_cast<Function>(*slot);
    DWORD protection = 0;
    VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
    *slot = reinterpret_cast<void*>(replacement);
    VirtualProtect(slot, sizeof *slot, protection, &protection);
    return real;
}

void install_once() {
    if (real_malloc != nullptr) return;
    const HMODULE runtime = GetModuleHandleW(L"libstdc++-6.dll");
    real_free = replace_import(runtime, "free", &watching_free);
    real_malloc = replace_import(runtime, "malloc", &watching_malloc);
}

#endif

}  // namespace

AllocationWatch::AllocationWatch() {
    install_once();
    state = {GetCurrentThreadId(), 0, 0, never};
}

AllocationWatch::~AllocationWatch() {
    state.thread = 0;
}

int AllocationWatch::allocations() const {
    return state.allocations;
}

int AllocationWatch::live() const {
    return state.live;
}

void AllocationWatch::fail_from(int n) {
    state.failing_from = state.allocations + n;
}

void AllocationWatch::fail_none() {
    state.failing_from = never;
}

}  // namespace tarv_test

#if defined(TARVCORE_STATIC)
void* operator new(std::size_t size) {
    void* block = tarv_test::watching_malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void operator delete(void* block) noexcept {
    tarv_test::watching_free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    tarv_test::watching_free(block);
}
#endif
