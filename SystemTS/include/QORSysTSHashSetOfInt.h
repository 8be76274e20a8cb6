/// @file
/// A set of integers. Nothing is hashed: each look-up walks from the first element on.
#pragma once

#include "VELElementNodes.h"

#define QORSYSTS_SET QORSysTSHashSetOfInt
#define QORSYSTS_SET_ELEMENT int
#include "VELSetClass.inc"
