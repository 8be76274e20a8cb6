/// @file
/// A list of integers.
#pragma once

#include "VELElementNodes.h"

#define QORSYSTS_LIST QORSysTSListOfInt
#define QORSYSTS_LIST_ELEMENT int
#define QORSYSTS_LIST_OF_NUMBERS
#include "VELListClass.inc"
