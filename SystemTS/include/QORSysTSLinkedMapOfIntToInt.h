/// @file
/// A linked table from integers to integers.
#pragma once

#include "QORSysTSLinkedAbstractCtnr.h"

#define QORSYSTS_LINKED_MAP QORSysTSLinkedMapOfIntToInt
#define QORSYSTS_MAP_KEY int
#define QORSYSTS_MAP_VALUE int
#include "VELLinkedMapClass.inc"
#undef QORSYSTS_MAP_KEY
#undef QORSYSTS_MAP_VALUE
