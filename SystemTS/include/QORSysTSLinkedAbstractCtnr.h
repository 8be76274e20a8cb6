/// @file
/// The linked storage engine of the generated lists, sets and maps.
#pragma once

#include "QORSysTSExport.h"
#include "VELContainerMember.h"
#include "VELNodeChain.h"
#include "VELSysStatus.h"

#include <cstddef>

/// A doubly linked chain of nodes that knows nothing of what they hold. The container that is built on it allocates
/// larger blocks that begin with a Node; the engine never allocates or frees one, and gives back each node that it
/// takes out.
///
/// A node is in one chain at most, and what an operation is given as a neighbour or to take out is in this one. There
/// is no lock.
class QORSYSTS_EXPORT QORSysTSLinkedAbstractCtnr {
public:
    /// What each node begins with; the payload stands right behind.
    struct Node {
        Node* next;
        Node* previous;
    };

    /// Empty.
    QORSYSTS_CONTAINER_INLINE QORSysTSLinkedAbstractCtnr() noexcept { Init(); }
    QORSysTSLinkedAbstractCtnr(const QORSysTSLinkedAbstractCtnr&) = delete;
    QORSysTSLinkedAbstractCtnr& operator=(const QORSysTSLinkedAbstractCtnr&) = delete;

    /// Empties the head record; nodes are not touched.
    QORSYSTS_CONTAINER_INLINE void Init() noexcept { _chain = {0, nullptr, nullptr}; }
    /// Links `node` between two neighbours. A null `prev` makes it the first, a null `next` the last.
    QORSYSTS_CONTAINER_INLINE void InsertNodeBetween(Node* prev, Node& node, Node* next) {
        _chain.InsertBetween(prev, node, next);
    }
    /// Unlinks `node`, whose own links stay as they were. @return `node`.
    QORSYSTS_CONTAINER_INLINE Node* RemoveNode(Node& node) { return _chain.Remove(node); }
    /// Unlinks `node`. @return The node that followed, or null.
    QORSYSTS_CONTAINER_INLINE Node* RemoveNodeGetNext(Node& node) {
        Node* const next = node.next;
        RemoveNode(node);
        return next;
    }
    /// Unlinks `node`. @return The node that preceded, or null.
    QORSYSTS_CONTAINER_INLINE Node* RemoveNodeGetPrev(Node& node) {
        Node* const previous = node.previous;
        RemoveNode(node);
        return previous;
    }
    /// The node at position `i`, at a cost that grows with `i`; null outside 0 to the count - 1.
    Node* GetNode(int i) const;
    /// Unlinks and returns the node at position `i`; null when there is none.
    Node* PopNode(int i);
    /// Unlinks and returns the first node; null when there is none.
    QORSYSTS_CONTAINER_INLINE Node* PopFirstNode() {
        return _chain.first != nullptr ? RemoveNode(*_chain.first) : nullptr;
    }
    /// Unlinks and returns the last node; null when there is none.
    QORSYSTS_CONTAINER_INLINE Node* PopLastNode() {
        return _chain.last != nullptr ? RemoveNode(*_chain.last) : nullptr;
    }
    /// The nodes from position `first` up to but not including `end`, as a first node and the one behind the last,
    /// which is null at the end of the chain. @return A failure when that is no range, or an empty one: `endNode` is
    /// then left, and `firstNode` as well when `first` is not below `end`.
    int GetNodeRange(int first, int end, Node*& firstNode, Node*& endNode) const;

    /// For the container that is built on the engine.
    VEL::internal::NodeChain<Node> _chain;
};

static_assert(sizeof(QORSysTSLinkedAbstractCtnr::Node) == 16);
static_assert(offsetof(QORSysTSLinkedAbstractCtnr::Node, next) == 0);
static_assert(sizeof(QORSysTSLinkedAbstractCtnr) == 24);
static_assert(offsetof(QORSysTSLinkedAbstractCtnr, _chain.count) == 0);
static_assert(offsetof(QORSysTSLinkedAbstractCtnr, _chain.first) == 8);
static_assert(offsetof(QORSysTSLinkedAbstractCtnr, _chain.last) == 16);
