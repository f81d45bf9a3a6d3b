// The modules of this process and what they say of their builds.
#pragma once

#include <string>

// Marks what the library exports.
#if defined(TARVCORE_STATIC)
#define TARVMODULEREGISTRY_API
#elif defined(TARVMODULEREGISTRY_BUILD)
#define TARVMODULEREGISTRY_API __declspec(dllexport)
#else
#define TARVMODULEREGISTRY_API __declspec(dllimport)
#endif

// A registry by name, one for the process.  Modules register while they are loaded and remove
// themselves while they are unloaded.  Several threads may call at once, at any time from the load
// of this library to its unload, also under the loader's lock.
//
//     if (!add_module_info("billing", "<ModuleInfo>...")) warn_of_a_second_copy();
namespace tarvmoduleregistry {

// What a module has registered, copied.
struct ModuleInfo {
    std::string text;  // as it was given
};

// Registers a module; keeps copies of both texts.  False where the name is taken: the module that
// has it stays as it is.
TARVMODULEREGISTRY_API bool add_module_info(const char* module_name, const char* info_text);

// False where there is no module of that name; `*out` is untouched then.
TARVMODULEREGISTRY_API bool query_module_info(const char* module_name, ModuleInfo* out);

// Does nothing where there is no module of that name.
TARVMODULEREGISTRY_API void remove_module_info(const char* module_name);

}  // namespace tarvmoduleregistry
