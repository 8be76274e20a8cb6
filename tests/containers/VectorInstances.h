/// @file
/// The array containers as the tests see them: what to put in, and what is expected of it.
#pragma once

#include "QORSysTSArrayListOfInt.h"
#include "QORSysTSVectorOfBoolean.h"
#include "QORSysTSVectorOfBYTE.h"
#include "QORSysTSVectorOfInt.h"
#include "QORSysTSVectorOfQORUC2Bytes.h"
#include "QORSysTSVectorOfUnicodeString.h"
#include "VELVectorOfUnicodeString.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <vector>

namespace VectorInstances {

constexpr int Ok = 0;
constexpr int Failure = static_cast<int>(0x80004005u);

using Numbers = testing::Types<QORSysTSArrayListOfInt, QORSysTSVectorOfInt, QORSysTSVectorOfBYTE,
                               QORSysTSVectorOfBoolean, QORSysTSVectorOfQORUC2Bytes>;
using Strings = testing::Types<QORSysTSVectorOfUnicodeString, VELVectorOfUnicodeString>;
using All = testing::Types<QORSysTSArrayListOfInt, QORSysTSVectorOfInt, QORSysTSVectorOfBYTE, QORSysTSVectorOfBoolean,
                           QORSysTSVectorOfQORUC2Bytes, QORSysTSVectorOfUnicodeString, VELVectorOfUnicodeString>;

template <class Vector>
constexpr bool HoldsStrings = std::is_class_v<typename Vector::Element>;

/// The element that stands for a number from 0 to 255.
template <class Vector>
typename Vector::Element Make(int number) {
    if constexpr (HoldsStrings<Vector>) {
        return typename Vector::Element(std::to_string(number).c_str());
    } else {
        return static_cast<typename Vector::Element>(number);
    }
}

/// The number that an element stands for.
template <class Element>
int NumberOf(const Element& element) {
    if constexpr (std::is_class_v<Element>) {
        return std::atoi(element.ConvertToChar());
    } else {
        return element;
    }
}

template <class Vector>
Vector Filled(std::initializer_list<int> numbers) {
    Vector vector;
    for (const int number : numbers) {
        vector.PutBack(Make<Vector>(number));
    }
    return vector;
}

template <class Vector>
std::vector<int> Content(const Vector& vector) {
    std::vector<int> numbers;
    for (int i = 0; i < vector.GetLength(); ++i) {
        numbers.push_back(NumberOf(*vector.pT(i)));
    }
    return numbers;
}

/// What stands behind the virtual table. A container has no operation that answers its capacity.
template <class Vector>
struct Fields {
    explicit Fields(const Vector& vector) {
        std::memcpy(this, reinterpret_cast<const char*>(&vector) + sizeof(void*), sizeof *this);
    }
    const typename Vector::Element* buffer;
    int size;
    int capacity;
    int elementSize;
};

template <class Vector>
int CapacityOf(const Vector& vector) {
    return Fields<Vector>(vector).capacity;
}

} // namespace VectorInstances
