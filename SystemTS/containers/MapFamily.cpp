// The maps: one row an instance. A new one is a header of its own and a row here.
#define QORSYSTS_EMIT_CONTAINER_MEMBERS

#include "QORSysTSHashMapOfIntToInt.h"
#include "QORSysTSHashMapOfIntToVoidPtr.h"
#include "QORSysTSHashMapOfQORSysTSUnicodeStringToQORSysTSUnicodeString.h"
#include "QORSysTSHashMapOfUnicodeStringToInt.h"
#include "QORSysTSLinkedMapOfIntToInt.h"
#include "QORSysTSMapOfUnicodeStringInt.h"
#include "QORSysTSMapOfUnicodeStringUnicodeString.h"
#include "StringAccess.h"
#include "StringText.h"
#include "UnitHash.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>
#include <type_traits>
#include <utility>

namespace {

constexpr int DefaultEntries = 12;
constexpr float DefaultLoadFactor = 0.75F;
constexpr float SmallestLoadFactor = 0.1F;
constexpr float LargestLoadFactor = 100.0F;

float ReciprocalOf(float loadFactor) {
    // Also not a number becomes the default.
    const bool isGood = loadFactor >= SmallestLoadFactor && loadFactor <= LargestLoadFactor;
    return 1.0F / (isGood ? loadFactor : DefaultLoadFactor);
}

/// The hash of a string's UTF-16 text.
unsigned int HashOfDump(const QORSysTSUnicodeString& key) {
    // A null handle has no text, and so has one whose view can't be allocated.
    const VEL::internal::UTF16Range text = VEL::internal::UTF16Of(VEL::internal::StringAccess::BlockOf(key));
    return VEL::internal::HashOfUnits(text.text, static_cast<std::size_t>(text.length));
}

/// The hash that strings have themselves.
unsigned int HashOfString(const QORSysTSUnicodeString& key) {
    return key.HashFunc();
}

} // namespace

#define QORSYSTS_LINKED_MAP QORSysTSLinkedMapOfIntToInt
#include "LinkedMapMembers.inc"

#define QORSYSTS_HASH_MAP QORSysTSHashMapOfIntToInt
#include "HashMapMembers.inc"

#define QORSYSTS_HASH_MAP QORSysTSHashMapOfIntToVoidPtr
#include "HashMapMembers.inc"

#define QORSYSTS_HASH_MAP QORSysTSHashMapOfUnicodeStringToInt
#define QORSYSTS_HASH_MAP_SCHEME HashOfDump
#include "HashMapMembers.inc"

#define QORSYSTS_HASH_MAP QORSysTSMapOfUnicodeStringInt
#define QORSYSTS_HASH_MAP_SCHEME HashOfDump
#include "HashMapMembers.inc"

#define QORSYSTS_HASH_MAP QORSysTSMapOfUnicodeStringUnicodeString
#define QORSYSTS_HASH_MAP_SCHEME HashOfDump
#include "HashMapMembers.inc"

#define QORSYSTS_HASH_MAP QORSysTSHashMapOfQORSysTSUnicodeStringToQORSysTSUnicodeString
#define QORSYSTS_HASH_MAP_SCHEME HashOfString
#include "HashMapMembers.inc"
