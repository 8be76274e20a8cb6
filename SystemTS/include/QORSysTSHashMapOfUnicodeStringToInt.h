/// @file
/// A hash table from strings to integers.
#pragma once

#include "QORSysTSArrayListAbstractCtnr.h"
#include "QORSysTSLinkedAbstractCtnr.h"
#include "QORSysTSUnicodeString.h"
#include "VELHashMapTable.h"

#include <cstdlib>
#include <new>

#define QORSYSTS_HASH_MAP QORSysTSHashMapOfUnicodeStringToInt
#define QORSYSTS_MAP_KEY QORSysTSUnicodeString
#define QORSYSTS_MAP_VALUE int
#include "VELHashMapClass.inc"
