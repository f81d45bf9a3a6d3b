#include "tarvcore/object_key.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/object_key.cpp#1 $");

namespace tarvcore {

ObjectKey ObjectKey::create_unique() {
    return ObjectKey(new impl::UniqueObjectKeyToken);
}

ObjectKey ObjectKey::create_unique_with_label(const char* label, unsigned length) {
    return ObjectKey(new impl::UniqueLabeledObjectKeyToken({label, length}));
}

}  // namespace tarvcore
