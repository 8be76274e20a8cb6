/// @file
/// A hash table from strings to strings that uses the strings' own hash.
#pragma once

#include "QORSysTSArrayListAbstractCtnr.h"
#include "QORSysTSLinkedAbstractCtnr.h"
#include "QORSysTSUnicodeString.h"
#include "VELHashMapTable.h"

#include <cstdlib>
#include <new>

#define QORSYSTS_HASH_MAP QORSysTSHashMapOfQORSysTSUnicodeStringToQORSysTSUnicodeString
#define QORSYSTS_MAP_KEY QORSysTSUnicodeString
#define QORSYSTS_MAP_VALUE QORSysTSUnicodeString
#include "VELHashMapClass.inc"
