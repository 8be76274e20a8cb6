/// @file
/// The shared registry of code set conversions.
///
/// An `iconv_t` belongs to one thread and is expensive to open. So a conversion has a process-wide handle, and each
/// thread gets its own descriptors for it, opened when it first asks and closed when the session ends, not when the
/// thread does.
///
/// @code
/// IConvDesc_t toUTF16 = 0;
/// if (VELSysIConvTSWrap::Open("UTF-16LE", "SHIFT_JIS", toUTF16) == VEL::StatusOk) {
///     const iconv_t descriptor = VELSysIConvTSWrap::GetIConvDesc(toUTF16); // of this thread, never closed by it
/// }
/// @endcode
#pragma once

#include "QORSysTSExport.h"

#include <iconv.h>

/// Handle of one direction of a registered conversion: even for the direction that was registered first, the even
/// value plus 1 for the opposite one. 0 is a valid handle.
using IConvDesc_t = int;

/// The registry. All operations may be called by any thread at once, but for the end: a descriptor that another thread
/// got just before is closed under it, so nobody converts while the session ends.
///
/// The messages named here appear only when the environment variable "KVT_RTX_IN" is set.
class QORSYSTS_EXPORT VELSysIConvTSWrap {
public:
    VELSysIConvTSWrap() = delete;

    /// Makes what the registry needs, as far as it is missing. The other operations call it themselves.
    /// @param reserved  Not read.
    static void sInitIConvTS(void* reserved);

    /// Registers a conversion, unless it or its opposite is registered. Nothing is opened here, so names that the C
    /// library doesn't know are taken, too.
    /// @param to      Code set converted to, and `from` the one converted from, as `iconv_open` takes them. Both are
    ///                copied and compared exactly.
    /// @param handle  Receives the handle; left alone on failure.
    /// @return VEL::StatusOk; VEL::StatusFailure after the end of the session, when a name is null and when there is
    ///         no memory.
    static int Open(const char* to, const char* from, IConvDesc_t& handle);

    /// The calling thread's descriptor for a conversion. The first request for either direction opens both; when one
    /// of them can't be opened, that is said on standard error, and the thread doesn't try again.
    /// @return The descriptor, which stays the registry's, or `(iconv_t)-1`: for a handle that Open() didn't give, for
    ///         a conversion that can't be opened, when there is no memory, and after the end of the session, which the
    ///         first such request tells on standard output.
    static iconv_t GetIConvDesc(IConvDesc_t handle);

    /// Ends all conversions for the rest of the process, with a word on standard output: closes the descriptors of all
    /// threads and forgets what is registered. QORSysEndSessionTS() calls it.
    /// @param code  Not read.
    static void sDeinitIConvTS(int code);
};
