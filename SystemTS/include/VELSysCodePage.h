/// @file
/// Conversion between a named multi-byte code page and UTF-16.
#pragma once

#include "QORSysTSExport.h"
#include "VELSysIConvTSWrap.h"

#include <atomic>

struct VELSysNLSEnv;

/// A converter between one code page and UTF-16 in host byte order.
///
/// Its way of working is settled when it is made: the UTF-8 way, which needs no C library, or the identity way, which
/// maps bytes to code units one to one and is what remains when a code page cannot be set up. No conversion fails:
/// what cannot be converted becomes "?". All conversions are `const` and may run on any thread at once.
class QORSYSTS_EXPORT VELSysCodePage {
public:
    /// A converter for `codePage` with 16 as the longest character.
    /// @param codePage  Name of the code set, compared exactly; null gives the identity way.
    explicit VELSysCodePage(const char* codePage);

    /// A converter for `codePage`.
    /// @param maxCharSize  Longest character of the code page in bytes; UTF-8 always reports 4.
    /// @param langString   Locale string that goes with the code page, or null.
    VELSysCodePage(const char* codePage, int maxCharSize, const char* langString);

    VELSysCodePage(const VELSysCodePage&) = delete;
    VELSysCodePage& operator=(const VELSysCodePage&) = delete;
    virtual ~VELSysCodePage();

    /// False when the object stands in the identity way.
    bool IsValid() const;

    /// Converts all of `length` bytes.
    /// @param dst      Target of at least `length` + 1 units.
    /// @param written  Receives the number of units, unless null.
    /// @return The number of units written, without a terminator.
    int ConvertMBCSToUTF16(const char* src, int length, unsigned short* dst, int* written) const;

    /// Resumable form: stops when `room` units are used. `src` and `length` advance past what was consumed, and `src`
    /// becomes null when nothing is left.
    /// @param dst  Target of at least `room` + 1 units.
    /// @return The number of units written, or -1 when `src` is null.
    int ConvertMBCSToUTF16(const char*& src, unsigned long& length, unsigned short* dst, unsigned long room) const;

    /// Converts all of `length` units.
    /// @param dst      Target of at least 4 bytes for each unit, plus one. It is terminated with a zero byte, except
    ///                 on the UTF-8 way with a null `written`.
    /// @param written  Receives the number of bytes, unless null.
    /// @return The number of bytes written, without the terminator.
    int ConvertUTF16ToMBCS(const unsigned short* src, int length, char* dst, int* written) const;

    /// Tells whether each character of `length` units survives the way to the code page and back.
    /// @return 0 when all do, also for a null `src`; -1 when one doesn't.
    int CanConvertUTF16ToMBCS(const unsigned short* src, int length) const;
    /// Tells whether each character of `length` bytes survives the way to UTF-16 and back.
    /// @return 0 when all do, also for a null `src`; -1 when one doesn't.
    int CanConvertMBCSToUTF16(const char* src, unsigned long length) const;

    /// Takes one character of a text of `left` bytes and moves `src` and `left` past it. Bytes that can't be decoded
    /// are passed over one by one, so that a caller's loop ends. Nothing is read behind the `left` bytes; their end
    /// counts as a zero byte there.
    /// @param out  Receives the character; target of 2 units.
    /// @return The units written, 1 or 2; 0 for a byte that can't be decoded, which the UTF-8 way gives as code 0
    /// instead.
    int GetNextMultiByteCharAsUTF16(unsigned short* out, const char*& src, unsigned long& left) const;
    /// GetNextMultiByteCharAsUTF16() with a code point as the result.
    /// @param out  Receives the code point, unless the result is 0.
    /// @return The number of UTF-16 units, 1 or 2, or 0; always 1 on the UTF-8 way.
    int GetNextMultiByteCharAsUTF32(unsigned int& out, const char*& src, unsigned long& left) const;
    /// GetNextMultiByteCharAsUTF16() with UTF-8 as the result. The UTF-8 way copies what it consumes, unchecked.
    /// @param out  Receives the bytes, without a terminator; target of 4 bytes.
    /// @return The number of bytes, 1 to 4, or 0.
    int GetNextMultiByteCharAsUTF8(char* out, const char*& src, unsigned long& left) const;

    /// The process-wide converter of the environment's code page. Lock-free once it is published; a converter that is
    /// replaced by a change of language stays usable for the rest of the process.
    static const VELSysCodePage& GetEnvConverter();

    /// Follows a change of language: makes a converter for the record's code page that of the environment. The one
    /// that it replaces is kept until the process ends, since other threads may be inside it.
    static void OnChangeNLSCore(const VELSysNLSEnv& env);

    /// Name of the code page; "Identity" in the identity way. Stays the object's.
    const char* GetName() const { return _name; }
    /// Longest character of the code page in bytes.
    int GetMaxCharSize() const { return _maxCharSize; }
    /// True when the code page is exactly "UTF-8".
    bool IsUTF8() const { return _isUTF8; }

private:
    using ToUTF16 = int (VELSysCodePage::*)(const char*& src, int& srcLength, unsigned short* dst,
                                            int& dstLength) const;
    using FromUTF16 = int (VELSysCodePage::*)(const unsigned short* src, int length, char* dst, int* written) const;

    QORSYSTS_PRIVATE int _Reinitialize(const char* codePage, int maxCharSize, const char* langString);
    QORSYSTS_PRIVATE void _StoreName(const char* name);

    QORSYSTS_PRIVATE int _CPtoUC2ByIdentity(const char*& src, int& srcLength, unsigned short* dst,
                                            int& dstLength) const;
    QORSYSTS_PRIVATE int _UC2toCPByIdentity(const unsigned short* src, int length, char* dst, int* written) const;
    QORSYSTS_PRIVATE int _UTF8toUTF16(const char*& src, int& srcLength, unsigned short* dst, int& dstLength) const;
    QORSYSTS_PRIVATE int _UTF16toUTF8(const unsigned short* src, int length, char* dst, int* written) const;

    QORSYSTS_PRIVATE static std::atomic<const VELSysCodePage*> _sCPConverter;

    char* _name = nullptr;
    ToUTF16 _toUTF16 = nullptr;
    FromUTF16 _fromUTF16 = nullptr;
    char* _locale = nullptr;
    [[maybe_unused]] IConvDesc_t _toUTF16Descriptor = -1;
    [[maybe_unused]] IConvDesc_t _fromUTF16Descriptor = -1;
    int _maxCharSize = 0;
    bool _isUTF8 = false;
};
