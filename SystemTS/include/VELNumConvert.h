/// @file
/// Reading a number from text, whatever the C locale of the thread is.
///
/// @code
/// VEL::NumConvertCtx comma;
/// comma.SetDecimalSeparator(',');
/// double value = 0;
/// if (VEL::ConvertToNumEx(value, "1,5", &comma) == VEL::StatusOk) {
///     Use(value); // 1.5
/// }
/// @endcode
#pragma once

#include "QORSysTSExport.h"

class QORUnicodeString;

namespace VEL {

class NumConvertCtx;

/// What a NumConvertCtx may own; it has no data.
class QORSYSTS_EXPORT _NumConvertCtx {
public:
    virtual ~_NumConvertCtx();
};

/// Reads a number from the whole of `s`: as `strtod` reads one, with the decimal separator of `ctx` and no other. White
/// space may stand in front and behind, nothing else. A text without any character is 0.0.
///
/// Any thread may call this; its locale stays as it is.
/// @param value  Receives the number; it may have been written when the call fails. A number that is too large or too
///               small is what `strtod` makes of it, and no failure.
/// @param ctx    Null: the separator is a point.
/// @return 0; VEL::StatusBadArgument for text that is no number, that has the separator twice, or that has the decimal
///         point of the locale and not the separator, and without memory for the text; VEL::StatusNotImplemented for NumConvertCtx::Reserved, ahead of
///         all else.
QORSYSTS_EXPORT int ConvertToNumEx(double& value, const QORUnicodeString& s, NumConvertCtx* ctx);

/// How ConvertToNumEx() reads. Any number of threads may use one object as long as none changes it.
class QORSYSTS_EXPORT NumConvertCtx {
public:
    /// Values of SetFlags().
    enum Flag : int {
        /// The locale is the environment's, see VELSysCLocaleEnvironGet(), and the separator can't be set.
        LocaleOfEnvironment = 1,
        /// Not implemented.
        Reserved = 16,
    };

    /// As Reset() leaves it.
    NumConvertCtx();
    NumConvertCtx(const NumConvertCtx&) = delete;
    NumConvertCtx& operator=(const NumConvertCtx&) = delete;
    ~NumConvertCtx();

    /// Sets the decimal separator to a Unicode character; 0 stands for the point.
    /// @return 1; 0, with nothing changed, while the locale is the environment's.
    int SetDecimalSeparator(int c);
    /// The decimal separator.
    int GetDecimalSeparator();
    /// Sets the flags, values of ::Flag joined. The separator deliberately stays as it is, also when the locale is the
    /// environment's.
    void SetFlags(int flags);
    /// No flags, and a point.
    void Reset();

private:
    friend QORSYSTS_EXPORT int ConvertToNumEx(double& value, const QORUnicodeString& s, NumConvertCtx* ctx);
    struct Layout;

    _NumConvertCtx* _impl = nullptr; ///< Owned.
    int _flags;
    int _separator;
};

} // namespace VEL
