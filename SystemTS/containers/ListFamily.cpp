// The lists: one row an instance. A new one is a header of its own and a row here.
#define QORSYSTS_EMIT_CONTAINER_MEMBERS

#include "QORSysTSLinkedListOfInt.h"
#include "QORSysTSListOfInt.h"
#include "QORSysTSListOfUnicodeString.h"
#include "QORSysTSListOfVectorOfBYTE.h"

#include <utility>

#define QORSYSTS_LIST QORSysTSLinkedListOfInt
#include "ListMembers.inc"

#define QORSYSTS_LIST QORSysTSListOfInt
#include "ListMembers.inc"

#define QORSYSTS_LIST QORSysTSListOfUnicodeString
#include "ListMembers.inc"

#define QORSYSTS_LIST QORSysTSListOfVectorOfBYTE
#include "ListMembers.inc"
