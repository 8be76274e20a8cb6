/// @file
/// A growing array of integers.
#pragma once

#include "QORSysTSArrayListAbstractCtnr.h"

#include <cstdlib>
#include <new>

#define QORSYSTS_VECTOR QORSysTSVectorOfInt
#define QORSYSTS_VECTOR_ELEMENT int
#define QORSYSTS_VECTOR_OF_NUMBERS
#include "VELVectorClass.inc"
