#include "compat/win_types.h"

#include <cstdlib>

LPVOID CoTaskMemAlloc(SIZE_T cb) {
    return std::malloc(cb == 0 ? 1 : cb);
}

void CoTaskMemFree(LPVOID pv) {
    std::free(pv);
}
