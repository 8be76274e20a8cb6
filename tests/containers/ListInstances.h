/// @file
/// The lists as the tests see them: what to put in, and what is expected of it.
#pragma once

#include "QORSysTSLinkedListOfInt.h"
#include "QORSysTSListOfInt.h"
#include "QORSysTSListOfUnicodeString.h"
#include "QORSysTSListOfVectorOfBYTE.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <vector>

namespace ListInstances {

constexpr int Ok = 0;
constexpr int Failure = static_cast<int>(0x80004005u);

using Numbers = testing::Types<QORSysTSLinkedListOfInt, QORSysTSListOfInt>;
using All =
    testing::Types<QORSysTSLinkedListOfInt, QORSysTSListOfInt, QORSysTSListOfUnicodeString, QORSysTSListOfVectorOfBYTE>;

/// The element that stands for a number from 0 to 255.
template <class List>
typename List::Element Make(int number) {
    using Element = typename List::Element;
    if constexpr (std::is_same_v<Element, QORSysTSVectorOfBYTE>) {
        Element element;
        element.PutBack(static_cast<unsigned char>(number));
        return element;
    } else if constexpr (std::is_class_v<Element>) {
        return Element(std::to_string(number).c_str());
    } else {
        return number;
    }
}

// The number that an element stands for.

inline int NumberOf(int element) {
    return element;
}
inline int NumberOf(const QORSysTSUnicodeString& element) {
    return std::atoi(element.ConvertToChar());
}
inline int NumberOf(const QORSysTSVectorOfBYTE& element) {
    return element.IsEmpty() ? -1 : *element.pT(0);
}

template <class List>
List ListOf(const std::vector<int>& numbers) {
    List list;
    for (const int number : numbers) {
        list.PutBack(Make<List>(number));
    }
    return list;
}

template <class List>
List Filled(std::initializer_list<int> numbers) {
    return ListOf<List>(std::vector<int>(numbers));
}

/// The content as a walk forward finds it; empty with a failure when a walk backward or the length say otherwise.
template <class List>
std::vector<int> Content(const List& list) {
    std::vector<int> forward;
    std::vector<int> backward;
    for (auto it = list.cBegin(); !it.IsEnd(); it.Next()) {
        forward.push_back(NumberOf(*it.GetAsConstPtr()));
    }
    for (auto it = list.cLast(); !it.IsEnd(); it.Prev()) {
        backward.push_back(NumberOf(*it.GetAsConstPtr()));
    }
    std::ranges::reverse(backward);
    EXPECT_EQ(forward, backward);
    EXPECT_EQ(static_cast<int>(forward.size()), list.GetLength());
    return forward;
}

template <class List>
typename List::Node* NodeAt(const List& list, int i) {
    struct Fields {
        const void* table;
        int count;
        QORSysTSLinkedAbstractCtnr::Node* first;
        QORSysTSLinkedAbstractCtnr::Node* last;
    };
    auto* node = reinterpret_cast<const Fields*>(&list)->first;
    for (; node != nullptr && i > 0; --i) {
        node = node->next;
    }
    return static_cast<typename List::Node*>(node);
}

} // namespace ListInstances
