/* A library with the interface's functions that does nothing: a check that it passes checks nothing. */
#include "rt305_4/rt305_4.h"

const char* getVersion(void) {
    return "0";
}

void getSupportedInputTypes(const int32_t** out) {
    (void)out;
}

int32_t dataProccess(DataProcessRequest request) {
    (void)request;
    return 1;
}
