/// @file
/// A growing array of truth values, a byte each.
#pragma once

#include "QORSysTSArrayListAbstractCtnr.h"

#include <cstdlib>
#include <new>

#define QORSYSTS_VECTOR QORSysTSVectorOfBoolean
#define QORSYSTS_VECTOR_ELEMENT unsigned char
#define QORSYSTS_VECTOR_OF_NUMBERS
#include "VELVectorClass.inc"
