/// @file
/// The argument store as tests fill and ask it.
#pragma once

#include "QORUnicodeString.h"
#include "UTF8Bytes.h"
#include "VELSysStatus.h"
#include "VELSysTSArg.h"

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace ArgumentStore {

/// What a string holds before an option is asked for.
inline constexpr const char* Untouched = "untouched";

/// An option as it is found.
struct Found {
    int status = 0;
    int hasValue = 0;
    int isAdded = 0;
    std::string value;

    bool operator==(const Found&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Found& found) {
    return out << std::hex << found.status << std::dec << " hasValue=" << found.hasValue << " isAdded=" << found.isAdded
               << " value='" << found.value << "'";
}

inline Found Flag(int isAdded = 0) {
    return {VEL::StatusOk, 0, isAdded, Untouched};
}
inline Found Value(const std::string& value, int isAdded = 0) {
    return {VEL::StatusOk, 1, isAdded, value};
}
inline Found Failed(int status) {
    return {status, 77, 78, Untouched};
}
inline Found Missing() {
    return Failed(VEL::StatusNotFound);
}

inline Found Get(const char* key) {
    Found found{0, 77, 78, {}};
    QORUnicodeString value(Untouched);
    found.status = VELSysTSGetArg(key, found.hasValue, found.isAdded, value);
    found.value = UTF8Of(value);
    return found;
}

/// Fills the store from the arguments behind the program's name.
inline int Set(std::vector<std::string> arguments) {
    std::string program = "program";
    std::vector<char*> argv{program.data()};
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    return VELSysTSSetArg(static_cast<int>(argv.size()) - 1, argv.data());
}

} // namespace ArgumentStore
