#include "tarvcore/impl/async_op.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/async_op.cpp#1 $");

namespace tarvcore::impl {

AsyncOp::AsyncOp() = default;
AsyncOp::~AsyncOp() = default;

}  // namespace tarvcore::impl
