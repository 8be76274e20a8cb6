/// @file
/// The linked engine whose content can be frozen.
#pragma once

#include "QORSysTSExport.h"
#include "VELNodeChain.h"

#include <cstddef>

/// The engine of QORSysTSLinkedAbstractCtnr with a flag that closes it: while it is set every operation but Init() is
/// refused, reads included. InsertNodeBetween() then does nothing, GetNodeRange() answers VEL::StatusBadArgument before
/// it looks at anything else, and all others answer null. There is no lock.
class QORSYSTS_EXPORT QORSysTSLinkedAbstractCtnrFC {
public:
    /// What each node begins with; the payload stands right behind.
    struct Node {
        Node* next;
        Node* previous;
    };

    /// Empty and not frozen.
    QORSysTSLinkedAbstractCtnrFC();
    QORSysTSLinkedAbstractCtnrFC(const QORSysTSLinkedAbstractCtnrFC&) = delete;
    QORSysTSLinkedAbstractCtnrFC& operator=(const QORSysTSLinkedAbstractCtnrFC&) = delete;

    /// Sets the flag. Setting it twice needs one UnFreezeContent() only.
    void FreezeContent();
    /// Clears the flag.
    void UnFreezeContent();
    /// Empties the head record and clears the flag; nodes are not touched.
    void Init();
    /// Links `node` between two neighbours. A null `prev` makes it the first, a null `next` the last.
    void InsertNodeBetween(Node* prev, Node& node, Node* next);
    /// Unlinks `node`, whose own links stay as they were. @return `node`.
    Node* RemoveNode(Node& node);
    /// Unlinks `node`. @return The node that followed, or null.
    Node* RemoveNodeGetNext(Node& node);
    /// Unlinks `node`. @return The node that preceded, or null.
    Node* RemoveNodeGetPrev(Node& node);
    /// The node at position `i`, at a cost that grows with `i`; null outside 0 to the count - 1.
    Node* GetNode(int i) const;
    /// Unlinks and returns the node at position `i`; null when there is none.
    Node* PopNode(int i);
    /// Unlinks and returns the first node; null when there is none.
    Node* PopFirstNode();
    /// Unlinks and returns the last node; null when there is none.
    Node* PopLastNode();
    /// As QORSysTSLinkedAbstractCtnr::GetNodeRange().
    int GetNodeRange(int first, int end, Node*& firstNode, Node*& endNode) const;

    // For the container that is built on the engine.

    VEL::internal::NodeChain<Node> _chain;
    int _frozen;
};

static_assert(sizeof(QORSysTSLinkedAbstractCtnrFC::Node) == 16);
static_assert(sizeof(QORSysTSLinkedAbstractCtnrFC) == 32);
static_assert(offsetof(QORSysTSLinkedAbstractCtnrFC, _chain) == 0);
static_assert(offsetof(QORSysTSLinkedAbstractCtnrFC, _frozen) == 24);
