#include "tarvcore/atomic_op.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/atomic_op.cpp#1 $");

namespace tarvcore {

template class AtomicOp<unsigned int>;
template class AtomicOp<long>;
template class AtomicOp<unsigned long>;
template class AtomicOp<unsigned long long>;

}  // namespace tarvcore
