/// @file
/// What narrow strings report on standard output, byte by byte; the calling stack is stood in for.
#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace NarrowReports {

/// What `action` prints on standard output.
inline std::string Printed(const std::function<void()>& action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

inline std::string NotPrintable(int position, const std::string& text) {
    return "*************************************************************************************\n"
           "* [QORString][Warning] The code '" +
           std::to_string(position) +
           "' does not map to a printable US ASCII character. *\n"
           "* String: \"" +
           text +
           "\".\n"
           "* STACK TRACE:                                                                      *\n"
           "*************************************************************************************\n"
           "the calling stack\n";
}

inline const std::string DataCorruption = "***************************************************************\n"
                                          "* [QORString] Risk of data corruption detected:               *\n"
                                          "* Non-ASCII Unicode data is being converted to MBCS (char *). *\n"
                                          "* STACK TRACE:                                                *\n"
                                          "***************************************************************\n"
                                          "the calling stack\n";

} // namespace NarrowReports
