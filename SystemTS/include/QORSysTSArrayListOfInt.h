/// @file
/// A growing array of integers, under its older name.
#pragma once

#include "QORSysTSArrayListAbstractCtnr.h"

#include <cstdlib>
#include <new>

#define QORSYSTS_VECTOR QORSysTSArrayListOfInt
#define QORSYSTS_VECTOR_ELEMENT int
#define QORSYSTS_VECTOR_OF_NUMBERS
#include "VELVectorClass.inc"
