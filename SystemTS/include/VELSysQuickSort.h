/// @file
/// A quick sort that neither reads nor writes what it sorts.
#pragma once

#include "QORSysTSExport.h"

/// Sorts elements of a fixed size in place, ascending. They are compared and exchanged by callbacks alone, so that what
/// stands in the array may be handles, and an exchange may keep other data in step. Equal elements may change their
/// order. The time grows with `count` times its logarithm, at worst with its square; the callbacks are called on the
/// calling thread, in an order that depends on nothing but the results of `compare`.
///
/// Memory is taken for unusually many ranges at once; without it, the order of the calls may differ.
///
/// @param base            The first element; it is handed on and not looked at.
/// @param count           Elements. Below 2 there is nothing to call.
/// @param elementSize     Bytes from one element to the next. Below 1 nothing is sorted, nor without both callbacks.
/// @param swapContext     Handed to `swap` as it is.
/// @param swap            Exchanges two elements, which are never the same.
/// @param compareContext  Handed to `compare` as it is.
/// @param compare         Below, equal to or above 0, as the first element stands to the second.
QORSYSTS_EXPORT void VELSysQuickSort(void* base, int count, int elementSize, void* swapContext,
                                     void (*swap)(void* context, void* a, void* b), void* compareContext,
                                     int (*compare)(void* context, const void* a, const void* b));

/// A `swap` for arrays of pointers: exchanges two 64-bit words. `context` is not read.
QORSYSTS_EXPORT void VELSysQuickSortSwapDefault(void* context, void* a, void* b);
