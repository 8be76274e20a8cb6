/// @file
/// A hash table from strings to strings.
#pragma once

#include "QORSysTSArrayListAbstractCtnr.h"
#include "QORSysTSLinkedAbstractCtnr.h"
#include "QORSysTSUnicodeString.h"
#include "VELHashMapTable.h"

#include <cstdlib>
#include <new>

#define QORSYSTS_HASH_MAP QORSysTSMapOfUnicodeStringUnicodeString
#define QORSYSTS_MAP_KEY QORSysTSUnicodeString
#define QORSYSTS_MAP_VALUE QORSysTSUnicodeString
#include "VELHashMapClass.inc"
