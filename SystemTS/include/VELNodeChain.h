/// @file
/// What the three linked engines have in common: the head record of a chain, and how nodes get in and out.
#pragma once

#include "VELSysStatus.h"

namespace VEL::internal {

/// A doubly linked chain of nodes, each of which begins with its links `next` and `previous`. The first node has no
/// previous link, the last no next one. Nodes belong to the owner of the engine.
template <class Node>
struct NodeChain {
    int count; ///< Nodes that are linked.
    Node* first;
    Node* last;

    /// Links `node` between two neighbours; without one of them it becomes the first or the last.
    void InsertBetween(Node* previous, Node& node, Node* next) noexcept {
        node.next = next;
        node.previous = previous;
        (previous != nullptr ? previous->next : first) = &node;
        (next != nullptr ? next->previous : last) = &node;
        ++count;
    }
    /// Unlinks `node`, whose own links stay as they were.
    Node* Remove(Node& node) noexcept {
        (node.previous != nullptr ? node.previous->next : first) = node.next;
        (node.next != nullptr ? node.next->previous : last) = node.previous;
        --count;
        return &node;
    }
    /// The node `i` steps behind `node`; null past the last one.
    static Node* Behind(Node* node, int i) noexcept {
        for (; i > 0 && node != nullptr; --i) {
            node = node->next;
        }
        return node;
    }
    /// The node at position `i`, null outside 0 to the count - 1.
    Node* At(int i) const noexcept { return i >= 0 && i < count ? Behind(first, i) : nullptr; }
};

/// The nodes from position `first` up to but not including `end`. Writes `firstNode` as soon as the two are in order,
/// `endNode` on success only. @return 0 or StatusFailure.
template <class Engine, class Node>
int FindNodeRange(const Engine& engine, int first, int end, Node*& firstNode, Node*& endNode) {
    if (first >= end) {
        return StatusFailure;
    }
    firstNode = engine.GetNode(first);
    Node* const lastNode = engine.GetNode(end - 1);
    if (firstNode == nullptr || lastNode == nullptr) {
        return StatusFailure;
    }
    endNode = lastNode->next;
    return StatusOk;
}

} // namespace VEL::internal
