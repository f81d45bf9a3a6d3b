#include "tarvmoduleregistry/module_registry.h"

#include <utility>

#include "tarvcore/config.h"
#include "tarvcore/impl/process_end.h"
//
#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tarvmoduleregistry/module_registry.cpp#1 $");

namespace tarvmoduleregistry {
namespace {

struct Record {
    const std::string name;
    const std::string text;
    Record* next;
};

// Modules come and go while the loader runs initialisers and destructors in an order of its own: so
// these have neither.
constinit Record* records = nullptr;
constinit SRWLOCK records_lock = SRWLOCK_INIT;

// A process that ends has stopped its other threads wherever they were, perhaps with this lock, and
// unloads its modules then.  Nobody is left to be kept out; each change of the list is one pointer.
class Guard {
public:
    Guard() {
        if (locks_) AcquireSRWLockExclusive(&records_lock);
    }
    ~Guard() {
        if (locks_) ReleaseSRWLockExclusive(&records_lock);
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    const bool locks_ = !tarvcore::impl::process_is_ending();
};

// What points to the record: null at the end of the list.
Record*& find(const char* module_name) {
    Record** link = &records;
    while (*link != nullptr && (*link)->name != module_name)
        link = &(*link)->next;
    return *link;
}

}  // namespace

bool add_module_info(const char* module_name, const char* info_text) {
    const Guard guard;
    Record*& place = find(module_name);
    if (place != nullptr) return false;
    place = new Record{module_name, info_text, nullptr};
    return true;
}

bool query_module_info(const char* module_name, ModuleInfo* out) {
    const Guard guard;
    const Record* record = find(module_name);
    if (record == nullptr) return false;
    out->text = record->text;
    return true;
}

void remove_module_info(const char* module_name) {
    const Guard guard;
    Record*& place = find(module_name);
    if (place != nullptr) delete std::exchange(place, place->next);
}

}  // namespace tarvmoduleregistry
