/// @file
/// What the tests of paths share: the state behind a handle, and making paths.
#pragma once

#include "GroupLibrary.h"
#include "PathAccess.h"
#include "UTF8Bytes.h"

#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <ostream>
#include <string>

namespace PathSupport {

using VEL::internal::PathAccess;

constexpr unsigned int Invalid = VELSysPathTypeInvalid;
constexpr unsigned int Absolute = VELSysPathTypeAbsolute;
constexpr unsigned int Relative = VELSysPathTypeRelative;
constexpr unsigned int Http = VELSysPathTypeHttp;
constexpr unsigned int Https = VELSysPathTypeHttps;
constexpr unsigned int Logical = VELSysPathTypeLogical;
constexpr unsigned int Reserved = VELSysPathTypeReserved;

/// Everything that is known of a path, but for its caches.
struct State {
    std::string text;
    unsigned int mask;
    int rootLength;
    bool isStatValid = false;
    bool hasText = true;

    bool operator==(const State&) const = default;
};

inline void PrintTo(const State& state, std::ostream* out) {
    *out << (state.hasText ? testing::PrintToString(state.text) : "no text") << " mask " << state.mask << " root "
         << state.rootLength << (state.isStatValid ? " stat" : "");
}

inline State StateOf(const VELSysPathImpl& impl) {
    const char* const text = PathAccess::Text(impl);
    EXPECT_EQ(text != nullptr ? std::strlen(text) : 0, PathAccess::Length(impl));
    return {text != nullptr ? text : "", PathAccess::Mask(impl), static_cast<int>(PathAccess::RootLength(impl)),
            PathAccess::IsStatValid(impl), text != nullptr};
}

inline State StateOf(const VELSysPath& path) {
    return StateOf(*PathAccess::Of(path));
}

/// The state without a text.
inline State Nothing() {
    return {"", Invalid, 0, false, false};
}

inline VELSysPath PathOf(const std::string& text) {
    VELSysPath path;
    path.Set(text.c_str());
    return path;
}

/// A handle without implementation.
inline VELSysPath Empty() {
    VELSysPath path;
    PathAccess::Adopt(path, nullptr);
    return path;
}

inline QORUnicodeString Unicode(const std::string& utf8) {
    QORUnicodeString s;
    s.BuildFromUTF8(utf8.data(), utf8.size());
    return s;
}

inline QORSysTSUnicodeString ThreadSafe(const std::string& utf8) {
    QORSysTSUnicodeString s;
    s.BuildFromUTF8(utf8.data(), utf8.size());
    return s;
}

/// A string that is wide.
inline QORUnicodeString Wide(const std::u16string& text) {
    QORUnicodeString s;
    s.BuildFromUCChar(reinterpret_cast<const unsigned short*>(text.data()), static_cast<int>(text.size()));
    return s;
}

inline const unsigned short* Units(const char16_t* text) {
    return reinterpret_cast<const unsigned short*>(text);
}

/// Loads the optional library and gives what its answers are made of. Without this call there is no such library.
inline GroupLibraryState& GroupLibrary() {
    void* const library = dlopen(GROUP_LIBRARY, RTLD_NOW);
    if (library == nullptr) {
        throw std::runtime_error("the optional library isn't there");
    }
    const auto state = reinterpret_cast<GroupLibraryState* (*)()>(dlsym(library, "GroupLibraryStateOfTests"));
    return *state();
}

} // namespace PathSupport
