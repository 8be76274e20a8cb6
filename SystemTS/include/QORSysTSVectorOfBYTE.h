/// @file
/// A growing array of bytes.
#pragma once

#include "QORSysTSArrayListAbstractCtnr.h"

#include <cstdlib>
#include <new>

#define QORSYSTS_VECTOR QORSysTSVectorOfBYTE
#define QORSYSTS_VECTOR_ELEMENT unsigned char
#define QORSYSTS_VECTOR_OF_NUMBERS
#include "VELVectorClass.inc"
