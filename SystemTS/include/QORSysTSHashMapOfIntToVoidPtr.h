/// @file
/// A hash table from integers to pointers, which are not owned.
#pragma once

#include "QORSysTSArrayListAbstractCtnr.h"
#include "QORSysTSLinkedAbstractCtnr.h"
#include "VELHashMapTable.h"

#include <cstdlib>
#include <new>

#define QORSYSTS_HASH_MAP QORSysTSHashMapOfIntToVoidPtr
#define QORSYSTS_MAP_KEY int
#define QORSYSTS_MAP_VALUE void*
#define QORSYSTS_HASH_MAP_OF_NUMBERS
#include "VELHashMapClass.inc"
