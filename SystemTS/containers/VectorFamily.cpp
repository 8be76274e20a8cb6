// The array containers: one row an instance. A new one is a header of its own and a row here.
#define QORSYSTS_EMIT_CONTAINER_MEMBERS

#include "QORSysTSArrayListOfInt.h"
#include "QORSysTSVectorOfBoolean.h"
#include "QORSysTSVectorOfBYTE.h"
#include "QORSysTSVectorOfInt.h"
#include "QORSysTSVectorOfQORUC2Bytes.h"
#include "QORSysTSVectorOfUnicodeString.h"
#include "VELVectorOfUnicodeString.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <type_traits>

#define QORSYSTS_VECTOR QORSysTSArrayListOfInt
#include "VectorMembers.inc"

#define QORSYSTS_VECTOR QORSysTSVectorOfInt
#include "VectorMembers.inc"

#define QORSYSTS_VECTOR QORSysTSVectorOfBYTE
#include "VectorMembers.inc"

#define QORSYSTS_VECTOR QORSysTSVectorOfBoolean
#include "VectorMembers.inc"

#define QORSYSTS_VECTOR QORSysTSVectorOfQORUC2Bytes
#include "VectorMembers.inc"

#define QORSYSTS_VECTOR QORSysTSVectorOfUnicodeString
#include "VectorMembers.inc"

#define QORSYSTS_VECTOR VELVectorOfUnicodeString
#include "VectorMembers.inc"
