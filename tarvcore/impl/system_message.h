// The operating system's own texts for its error numbers.
#pragma once

#include <string>

namespace tarvcore::impl {

// The text for a Windows message number in UTF-8, without trailing white space; empty where the
// system has none.
std::string system_message(unsigned long number);

}  // namespace tarvcore::impl
