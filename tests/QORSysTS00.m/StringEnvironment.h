/// @file
/// The environment that the tests of strings choose: its code page and what its longest character is said to be.
#pragma once

#include <gtest/gtest.h>
#include <string>

namespace StringEnvironment {

inline constexpr const char* UTF8 = "UTF-8";
/// A code page without a converter: bytes and code units map one to one, units are cut to their low bytes.
inline constexpr const char* OneToOne = "N/A";

/// Makes `codePage` the environment's; a process starts with UTF-8.
/// @param maxCharSize  What the language core answers for the longest character.
void UseCodePage(const char* codePage, long maxCharSize = 1);

/// How often the language data has been asked for.
int Queries();

/// A test that runs in a UTF-8 environment and in another.
class InBoth : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override { UseCodePage(GetParam()); }
    bool IsUTF8() const { return std::string(GetParam()) == UTF8; }
};

inline std::string NameOf(const testing::TestParamInfo<const char*>& info) {
    return std::string(info.param) == UTF8 ? "UTF8" : "OneToOne";
}

} // namespace StringEnvironment
