/// @file
/// Conversion between a named multi-byte code page and UTF-16.
#pragma once

#include "QORSysTSExport.h"
#include "VELSysIConvTSWrap.h"

#include <atomic>

struct VELSysNLSEnv;

/// A converter between one code page and UTF-16 in host byte order.
///
/// Its way of working is settled when it is made: the UTF-8 way, which needs no C library, the `iconv` way through the
/// descriptors of VELSysIConvTSWrap, or the identity way, which maps bytes to code units one to one and is what remains
/// when a code page cannot be set up. No conversion fails: what cannot be converted becomes "?". Where `iconv` doesn't
/// know the code page, and after the end of the session, conversions of the `iconv` way are those of identity, without
/// a word. All conversions are `const` and may run on any thread at once.
///
/// Input that is damaged otherwise than by a byte that has no meaning is told on standard error:
/// "iconv EINVAL error: input buffer was truncated." for a character that the end of the text cuts,
/// "iconv E2BIG error: buffer overflow. InBytesLeft: <n>" for a target that is too small for all of the text, and
/// "iconv errno is: <n>" for anything else that `iconv` says. A code page that VELSysIConvTSWrap::Open() refuses is
/// told by "ERROR: SUPPLANG_R9 does not contain a valid code set for code page: <name>.".
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
    /// @param length   None are converted when it is negative, or `src` null.
    /// @param dst      Target of at least `length` + 1 units. Only the UTF-8 way terminates it.
    /// @param written  Receives the number of units, unless null.
    /// @return The number of units written, without a terminator.
    int ConvertMBCSToUTF16(const char* src, int length, unsigned short* dst, int* written) const;

    /// Resumable form: stops when `room` units are used. `src` and `length` advance past what was consumed, and `src`
    /// becomes null when nothing is left. A state that the code page's text is in, such as one set by an escape
    /// sequence, isn't carried over to the next call.
    /// @param dst   Target of at least `room` + 1 units; for a `room` of 0 see there.
    /// @param room  0 stands for one unit for each byte, as much as all of the text takes, and `dst` must have that;
    /// the
    ///              UTF-8 way does nothing then.
    /// @return The number of units written, or -1 when `src` is null.
    int ConvertMBCSToUTF16(const char*& src, unsigned long& length, unsigned short* dst, unsigned long room) const;

    /// Converts all of `length` units. One that has no place in the code page becomes "?", and each half of a surrogate
    /// pair does so for itself.
    /// @param length   None are converted when it is negative, or `src` null.
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
    /// are passed over one by one, so that a caller's loop ends; the `iconv` way gives "?" for them. Text that is
    /// nothing but a state, such as an escape sequence at the end, is not passed over: the result is a zero character
    /// then. Nothing is read behind the `left` bytes; their end counts as a zero byte there.
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
    /// replaced by a change of language stays usable for the rest of the process. Ends the process by an assertion when
    /// the language decision names no code page. Without memory for it the answer is a converter in the identity way,
    /// and the next request tries again.
    static const VELSysCodePage& GetEnvConverter();

    /// Follows a change of language: makes a converter for the record's code page that of the environment. The one
    /// that it replaces is kept until the process ends, since other threads may be inside it. Without memory nothing
    /// changes.
    static void OnChangeNLSCore(const VELSysNLSEnv& env);

    /// Name of the code page; "Identity" in the identity way, and null without memory for it. Stays the object's.
    const char* GetName() const { return _name; }
    /// Longest character of the code page in bytes, as the maker of the converter says it. The environment's may say 1
    /// whatever its code page is: no bound for what a conversion takes or gives.
    int GetMaxCharSize() const { return _maxCharSize; }
    /// Bytes among which the first character of a text certainly ends, whatever GetMaxCharSize() says.
    int GetLongestCharacter() const;
    /// True when the code page is exactly "UTF-8".
    bool IsUTF8() const { return _isUTF8; }

private:
    struct Layout;
    using ToUTF16 = int (VELSysCodePage::*)(const char*& src, int& srcLength, unsigned short* dst,
                                            int& dstLength) const;
    using FromUTF16 = int (VELSysCodePage::*)(const unsigned short* src, int length, char* dst, int* written) const;

    QORSYSTS_PRIVATE void _Reinitialize(const char* codePage, int maxCharSize, const char* langString);
    QORSYSTS_PRIVATE int _InitConvDesc(const char* codePage);
    QORSYSTS_PRIVATE void _UseIdentity();
    QORSYSTS_PRIVATE void _StoreName(const char* name);
    QORSYSTS_PRIVATE void _StoreLocale(const char* langString);
    QORSYSTS_PRIVATE const char* _GetAssociatedCLocale() const;

    QORSYSTS_PRIVATE int _CPtoUC2(const char*& src, int& srcLength, unsigned short* dst, int& dstLength) const;
    QORSYSTS_PRIVATE int _UC2toCP(const unsigned short* src, int length, char* dst, int* written) const;
    QORSYSTS_PRIVATE bool _IsLatin1() const;
    QORSYSTS_PRIVATE int _CPtoUC2InSight(const char*& src, int srcLength, unsigned short* dst) const;

    QORSYSTS_PRIVATE int _CPtoUC2ByIdentity(const char*& src, int& srcLength, unsigned short* dst,
                                            int& dstLength) const;
    QORSYSTS_PRIVATE int _UC2toCPByIdentity(const unsigned short* src, int length, char* dst, int* written) const;
    QORSYSTS_PRIVATE int _UTF8toUTF16(const char*& src, int& srcLength, unsigned short* dst, int& dstLength) const;
    QORSYSTS_PRIVATE int _UTF16toUTF8(const unsigned short* src, int length, char* dst, int* written) const;

    QORSYSTS_PRIVATE static const VELSysCodePage& _TellDebugger();
    QORSYSTS_PRIVATE static std::atomic<const VELSysCodePage*> _sCPConverter;

    char* _name = nullptr;
    ToUTF16 _toUTF16 = nullptr;
    FromUTF16 _fromUTF16 = nullptr;
    /// The C locale that goes with the code page, found when it is first needed.
    mutable std::atomic<char*> _locale{nullptr};
    IConvDesc_t _toUTF16Descriptor = -1;
    IConvDesc_t _fromUTF16Descriptor = -1;
    int _maxCharSize = 0;
    bool _isUTF8 = false;
};
