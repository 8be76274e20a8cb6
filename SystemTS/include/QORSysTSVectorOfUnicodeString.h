/// @file
/// A growing array of the strings of the thread-safe interfaces.
#pragma once

#include "QORSysTSArrayListAbstractCtnr.h"
#include "QORSysTSUnicodeString.h"

#include <cstdlib>
#include <new>

#define QORSYSTS_VECTOR QORSysTSVectorOfUnicodeString
#define QORSYSTS_VECTOR_ELEMENT QORSysTSUnicodeString
#define QORSYSTS_VECTOR_OF_STRINGS
#include "VELVectorClass.inc"
