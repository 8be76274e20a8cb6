/// @file
/// A set of integers.
#pragma once

#include "VELElementNodes.h"

#define QORSYSTS_SET QORSysTSSetOfInt
#define QORSYSTS_SET_ELEMENT int
#include "VELSetClass.inc"
