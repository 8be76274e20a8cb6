/// @file
/// A growing array of the system's strings.
#pragma once

#include "QORSysTSArrayListAbstractCtnr.h"
#include "QORUnicodeString.h"

#include <cstdlib>
#include <new>

#define QORSYSTS_VECTOR VELVectorOfUnicodeString
#define QORSYSTS_VECTOR_ELEMENT QORUnicodeString
#define QORSYSTS_VECTOR_OF_STRINGS
#include "VELVectorClass.inc"
