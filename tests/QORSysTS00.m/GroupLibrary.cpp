// The tests' own form of the library that knows web addresses and logical names.

#include "GroupLibrary.h"

#include <algorithm>
#include <sys/stat.h>

static GroupLibraryState s_state;

extern "C" {

GroupLibraryState* GroupLibraryStateOfTests() {
    return &s_state;
}

int HttpInfo(const char* address, struct stat64* out) {
    ++s_state.httpCalls;
    s_state.address = address;
    if (s_state.httpResult >= 0) {
        *out = {};
        out->st_mode = s_state.mode;
        out->st_mtime = 77;
        out->st_atime = 78;
    }
    return s_state.httpResult;
}

int VELGetRealPath(const unsigned short* name, unsigned short** result, int a, int b, int c) {
    ++s_state.realPathCalls;
    s_state.name.clear();
    for (; *name != 0; ++name) {
        s_state.name += static_cast<char16_t>(*name);
    }
    s_state.numbers[0] = a;
    s_state.numbers[1] = b;
    s_state.numbers[2] = c;
    if (!s_state.realPath.empty()) {
        *result = new unsigned short[s_state.realPath.size() + 1]();
        std::copy(s_state.realPath.begin(), s_state.realPath.end(), *result);
    }
    return s_state.realPathResult;
}
}
