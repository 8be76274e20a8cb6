/// @file
/// What the tests' own form of the optional library answers, and what it was asked.
#pragma once

#include <string>

struct GroupLibraryState {
    int httpResult = 0;
    unsigned int mode = 0100644;
    std::string address = {};
    int httpCalls = 0;

    int realPathResult = 0;
    std::u16string realPath = {}; ///< Nothing is handed out while it is empty.
    std::u16string name = {};
    int numbers[3] = {-1, -1, -1};
    int realPathCalls = 0;
};
