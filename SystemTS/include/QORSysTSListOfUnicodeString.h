/// @file
/// A list of the strings of the thread-safe interfaces.
#pragma once

#include "QORSysTSUnicodeString.h"
#include "VELElementNodes.h"

#define QORSYSTS_LIST QORSysTSListOfUnicodeString
#define QORSYSTS_LIST_ELEMENT QORSysTSUnicodeString
#include "VELListClass.inc"
