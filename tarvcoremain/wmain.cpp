// The entry point of programs that have a `tarvcore_main`.

#include "tarvcore/main_intercept.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcoremain/wmain.cpp#1 $");

int tarvcore_main(int argc, char** argv);

int wmain(int argc, wchar_t** argv) {
    return tarvcore::intercept_main(tarvcore_main, argc, argv);
}
