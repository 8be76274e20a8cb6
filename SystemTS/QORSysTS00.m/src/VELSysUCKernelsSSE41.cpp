#include "VELSysUCKernels.h"

#include "VELSysUCKernelTables.h"
#include "VELSysUCVectorSSE41.h"

#include "VELSysUCKernelEnd.inc"

#include "VELSysUCKernelUTF8.inc"

#include "VELSysUCKernelUTF16.inc"

#include "VELSysUCKernelHash.inc"

namespace VEL::UCS::internal {

constinit const Kernels SSE41Kernels = {
    .level = KernelLevel::SSE41,
    .utf8ToUTF16 = ConvertUTF8<unsigned short>,
    .utf8ToUTF32 = ConvertUTF8<unsigned int>,
    .utf16ToUTF8 = UTF16ToUTF8,
    .utf16ToUTF32 = UTF16ToUTF32,
    .utf32ToUTF16 = UTF32ToUTF16,
    .utf32ToUTF8 = UTF32ToUTF8,
    .utf16Length = MeasureUTF8,
    .utf8Length = MeasureUTF16,
    .isUTF8 = IsWellFormed,
    .hashUnits = HashUnits,
    .hashASCII = HashASCII,
};

} // namespace VEL::UCS::internal
