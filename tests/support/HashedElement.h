/// @file
/// Elements of tables of pointers whose hashes are chosen, so that chains and slots are.
#pragma once

namespace HashedElement {

struct Element {
    unsigned int hash;
    int key;
};

inline unsigned int HashOf(void* element) {
    return static_cast<Element*>(element)->hash;
}

inline int AreEqual(void* a, void* b) {
    return static_cast<Element*>(a)->key == static_cast<Element*>(b)->key ? 1 : 0;
}

} // namespace HashedElement
