#include "tarvcore/nil.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/nil.cpp#1 $");

namespace tarvcore::impl {

constinit const Nil Nil::instance;

}  // namespace tarvcore::impl
