// Makes static instances and ends in the way that its argument names.

#include "tarvcore/static_instance.h"

#include <bit>
#include <cstdio>
#include <future>
#include <string>
#include <thread>

#include "ace/Init_ACE.h"
#include "tarvcore/error_exception.h"
#include "tarvmoduleregistry/module_registry.h"
//
#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace {

using namespace tarvcore;

void say(const std::string& text) {
    std::fputs((text + '\n').c_str(), stdout);
    std::fflush(stdout);
}

template <int number>
struct Speaker {
    static constexpr const char* names[] = {"", "first", "second", "third", "fourth"};

    ~Speaker() { say(std::string("~") + name); }
    const char* const name = names[number];
};

constinit StaticInstance<Speaker<1>> first;
constinit StaticInstance<Speaker<2>> second;
constinit StaticInstance<Speaker<3>> third;
constinit StaticInstance<Speaker<4>> fourth;

template <class Use>
void expect_error(const char* name, Use use) {
    try {
        use();
        say("no error");
    } catch (const ErrorException& e) {
        const ErrorInfo& error = *e.error();
        say(std::string(name) + ": " + std::string(error.code().as_string_view()) + ' ' +
            std::to_string(error.location().line()));
    }
}

// Ends ACE when the program's static objects are destroyed.
struct Fini {
    ~Fini() { managed_fini(); }
};

// Registers a function with another copy of the library, which is unloaded then.
void register_with_a_copy() {
    wchar_t original[MAX_PATH];
    GetModuleFileNameW(GetModuleHandleW(L"tarvcore-w32r-2-1.dll"), original, MAX_PATH);
    const std::wstring path = std::wstring(original) + L".static_instance.dll";
    tarvmoduleregistry::remove_module_info("tarvcore");  // two copies are meant here
    CopyFileW(original, path.c_str(), false);
    const HMODULE copy = LoadLibraryW(path.c_str());
    using Register = void (*)(void (*)(void*), void*);
    const auto register_cleanup = std::bit_cast<Register>(GetProcAddress(
        copy, "_ZN8tarvcore4impl18StaticInstanceBase20register_cleanup_auxEPFvPvES2_"));
    register_cleanup([](void*) { say("called"); }, nullptr);
    FreeLibrary(copy);
    say(GetModuleHandleW(path.c_str()) == nullptr ? "registered" : "still loaded");
    DeleteFileW(path.c_str());
}

// Asks for an object until the process ends.
[[noreturn]] void use_without_end(std::promise<void>& started) {
    first.get();
    started.set_value();
    for (;;)
        first.get();
}

}  // namespace

int main(int, char** arguments) {
    _setmode(_fileno(stdout), _O_BINARY);
    const std::string ending = arguments[1];
    if (ending == "unload") register_with_a_copy();
    first.get();
    second.get();
    third.get();
    second.get();
    say("main");
    if (ending == "fini") {
        ACE::init();  // nobody ends it
        managed_init();
        managed_init();
        managed_fini();
        say(std::string("still ") + second->name);
        managed_fini();
        expect_error("used", [] { second.get(); });
        expect_error("made", [] { fourth.get(); });
    } else if (ending == "static" || ending == "unload") {
        managed_init();
        static const Fini fini;
    } else if (ending == "busy") {
        static std::promise<void> started;
        std::thread(use_without_end, std::ref(started)).detach();
        started.get_future().wait();
    }
    return 0;
}
