/// @file
/// A set of integers, under another of its names.
#pragma once

#include "VELElementNodes.h"

#define QORSYSTS_SET QORSysTSLinkedSetOfInt
#define QORSYSTS_SET_ELEMENT int
#include "VELSetClass.inc"
