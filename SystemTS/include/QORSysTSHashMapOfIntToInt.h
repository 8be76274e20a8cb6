/// @file
/// A hash table from integers to integers.
#pragma once

#include "QORSysTSArrayListAbstractCtnr.h"
#include "QORSysTSLinkedAbstractCtnr.h"
#include "VELHashMapTable.h"

#include <cstdlib>
#include <new>

#define QORSYSTS_HASH_MAP QORSysTSHashMapOfIntToInt
#define QORSYSTS_MAP_KEY int
#define QORSYSTS_MAP_VALUE int
#define QORSYSTS_HASH_MAP_OF_NUMBERS
#include "VELHashMapClass.inc"
