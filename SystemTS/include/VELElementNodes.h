/// @file
/// Runs of nodes with an element in each, as lists and sets have them. A run goes from a first node up to but not
/// including an end, and to the end of the chain when that is null or not met.
#pragma once

#include "QORSysTSLinkedAbstractCtnr.h"

namespace VEL::internal {

template <class Node>
Node* NodeBehind(const Node* node) noexcept {
    return static_cast<Node*>(node->next);
}

/// The first node from `node` on whose element equals `x`, or null.
template <class Node, class Element>
Node* FindElement(Node* node, const Element& x) {
    while (node != nullptr && !(node->element == x)) {
        node = NodeBehind(node);
    }
    return node;
}

/// Links new nodes with copies of the elements of a run behind the last node. When a copy throws, those made are there.
template <class Node>
void AppendCopies(QORSysTSLinkedAbstractCtnr& engine, const Node* first, const Node* end) {
    for (const Node* node = first; node != nullptr && node != end; node = NodeBehind(node)) {
        engine.InsertNodeBetween(engine._chain.last, *new Node(node->element), nullptr);
    }
}

/// Destroys and frees the nodes of a run, whatever else is linked to them.
template <class Node>
void FreeNodes(Node* first, const Node* end) {
    for (Node* node = first; node != nullptr && node != end;) {
        Node* const next = NodeBehind(node);
        delete node;
        node = next;
    }
}

} // namespace VEL::internal
