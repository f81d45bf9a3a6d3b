// ACE's configuration, for the build of its DLL and for everybody who includes its headers.
//
// Without inline functions: they would refer to data that is imported from the DLL, and the compiler
// warns at every one of them in a user's translation unit.  Without the definition of main, too:
// the headers would rename every user's.
#pragma once

#define __ACE_INLINE__ 0
#ifndef ACE_DOESNT_DEFINE_MAIN
#define ACE_DOESNT_DEFINE_MAIN
#endif
#include "ace/config-win32.h"
