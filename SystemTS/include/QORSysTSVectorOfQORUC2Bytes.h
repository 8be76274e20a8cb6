/// @file
/// A growing array of UTF-16 code units.
#pragma once

#include "QORSysTSArrayListAbstractCtnr.h"

#include <cstdlib>
#include <new>

#define QORSYSTS_VECTOR QORSysTSVectorOfQORUC2Bytes
#define QORSYSTS_VECTOR_ELEMENT unsigned short
#define QORSYSTS_VECTOR_OF_NUMBERS
#include "VELVectorClass.inc"
