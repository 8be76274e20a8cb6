/// @file
/// The linked engine with a lock.
#pragma once

#include "QORMutex.h"
#include "QORSysTSExport.h"
#include "VELNodeChain.h"

/// The engine of QORSysTSLinkedAbstractCtnr with a recursive mutex that guards its fields and the links of its nodes
/// while an operation runs: a node is not protected once the call that gave it has returned.
class QORSYSTS_EXPORT QORSysTSLinkedAbstractCtnrFTS {
public:
    /// What each node begins with; the payload stands right behind.
    struct Node {
        Node* next;
        Node* previous;
    };

    /// Empty. There is no exported destructor: the mutex ends with the object that holds the engine.
    QORSysTSLinkedAbstractCtnrFTS();
    QORSysTSLinkedAbstractCtnrFTS(const QORSysTSLinkedAbstractCtnrFTS&) = delete;
    QORSysTSLinkedAbstractCtnrFTS& operator=(const QORSysTSLinkedAbstractCtnrFTS&) = delete;

    // These hold the mutex while they run.

    /// Empties the head record; nodes are not touched.
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

    // These are made of the ones above, each of which takes the mutex for itself. Of the two steps that find a node and
    // take it out, another thread may get in between: threads that pop from one engine exclude each other by
    // themselves.

    /// Unlinks and returns the node at position `i`; null when there is none.
    Node* PopNode(int i);
    /// Unlinks and returns the first node; null when there is none.
    Node* PopFirstNode();
    /// Unlinks and returns the last node; null when there is none.
    Node* PopLastNode();
    /// As QORSysTSLinkedAbstractCtnr::GetNodeRange().
    int GetNodeRange(int first, int end, Node*& firstNode, Node*& endNode) const;

    // For the container that is built on the engine. The mutex stands last.

    VEL::internal::NodeChain<Node> _chain;
    mutable QORMutex _mutex;
};

static_assert(sizeof(QORSysTSLinkedAbstractCtnrFTS::Node) == 16);
static_assert(sizeof(QORSysTSLinkedAbstractCtnrFTS) == 24 + sizeof(QORMutex));
