/// @file
/// What the containers' benchmarks put in: numbers and strings, made of numbers.
#pragma once

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace ContainerElements {

/// The element of a number.
template <class Element>
Element Make(int number) {
    if constexpr (std::is_same_v<Element, int>) {
        return number;
    } else {
        return Element(("element number " + std::to_string(number)).c_str());
    }
}

/// A number that depends on the element and costs next to nothing: what a string's object begins with.
inline long Weight(int number) {
    return number;
}
template <class Text>
long Weight(const Text& text) {
    long word;
    std::memcpy(&word, static_cast<const void*>(&text), sizeof word);
    return word;
}

/// Elements to choose from: few, so that they stay in the cache, where only the container's own work counts.
template <class Element>
const std::vector<Element>& Choice() {
    static const std::vector<Element> choice = [] {
        std::vector<Element> all;
        for (int i = 0; i < 64; ++i) {
            all.push_back(Make<Element>(i));
        }
        return all;
    }();
    return choice;
}

} // namespace ContainerElements
