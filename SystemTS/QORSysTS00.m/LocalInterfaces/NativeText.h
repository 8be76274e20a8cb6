/// @file
/// Text as the file system knows it: in the native code page, which is the environment's. All calls of the system that
/// take a name get it from here, so that this is the only place that knows what native means.
#pragma once

#include "QORUnicodeString.h"

namespace VEL::internal {

/// The native form of one text, for the life of the object.
class NativeText {
public:
    /// From UTF-8, which is borrowed: it must stay as it is while this object is used. Null counts as empty.
    explicit NativeText(const char* utf8);
    /// From 16-bit text up to its zero unit; null counts as empty.
    explicit NativeText(const unsigned short* text);
    explicit NativeText(const QORUnicodeString& text);
    NativeText(const NativeText&) = delete;
    NativeText& operator=(const NativeText&) = delete;

    /// The bytes, with a terminator; never null. Where memory is out they are empty, which names no file.
    const char* Get() const { return _bytes; }
    /// False where the text has a character that the native code page lacks, so that the bytes name something else.
    bool IsExact() const;

private:
    QORUnicodeString _text;
    const char* _bytes;
};

} // namespace VEL::internal
