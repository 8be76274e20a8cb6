/// @file
/// A list of arrays of bytes.
#pragma once

#include "QORSysTSVectorOfBYTE.h"
#include "VELElementNodes.h"

#define QORSYSTS_LIST QORSysTSListOfVectorOfBYTE
#define QORSYSTS_LIST_ELEMENT QORSysTSVectorOfBYTE
#include "VELListClass.inc"
