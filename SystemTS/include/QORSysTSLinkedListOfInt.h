/// @file
/// A list of integers, under its older name.
#pragma once

#include "VELElementNodes.h"

#define QORSYSTS_LIST QORSysTSLinkedListOfInt
#define QORSYSTS_LIST_ELEMENT int
#define QORSYSTS_LIST_OF_NUMBERS
#include "VELListClass.inc"
