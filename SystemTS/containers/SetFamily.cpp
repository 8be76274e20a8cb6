// The sets: one row an instance. A new one is a header of its own and a row here.
#define QORSYSTS_EMIT_CONTAINER_MEMBERS

#include "QORSysTSHashSetOfInt.h"
#include "QORSysTSLinkedSetOfInt.h"
#include "QORSysTSSetOfInt.h"

#include <utility>

#define QORSYSTS_SET QORSysTSHashSetOfInt
#include "SetMembers.inc"

#define QORSYSTS_SET QORSysTSLinkedSetOfInt
#include "SetMembers.inc"

#define QORSYSTS_SET QORSysTSSetOfInt
#include "SetMembers.inc"
