#define QORSYSTS_EMIT_CONTAINER_MEMBERS
#include "QORSysTSLinkedAbstractCtnr.h"

#include "MutexHolder.h"
#include "QORSysTSLinkedAbstractCtnrFC.h"
#include "QORSysTSLinkedAbstractCtnrFTS.h"

#include <atomic>

using VEL::StatusBadArgument;
using VEL::internal::FindNodeRange;

// Without a guard.

QORSysTSLinkedAbstractCtnr::Node* QORSysTSLinkedAbstractCtnr::GetNode(int i) const {
    return _chain.At(i);
}

QORSysTSLinkedAbstractCtnr::Node* QORSysTSLinkedAbstractCtnr::PopNode(int i) {
    Node* const node = GetNode(i);
    return node != nullptr ? RemoveNode(*node) : nullptr;
}

int QORSysTSLinkedAbstractCtnr::GetNodeRange(int first, int end, Node*& firstNode, Node*& endNode) const {
    return FindNodeRange(*this, first, end, firstNode, endNode);
}

// With a flag that refuses all operations.

QORSysTSLinkedAbstractCtnrFC::QORSysTSLinkedAbstractCtnrFC() {
    Init();
}

void QORSysTSLinkedAbstractCtnrFC::FreezeContent() {
    _frozen = 1;
}

void QORSysTSLinkedAbstractCtnrFC::UnFreezeContent() {
    _frozen = 0;
}

void QORSysTSLinkedAbstractCtnrFC::Init() {
    _chain = {0, nullptr, nullptr};
    _frozen = 0;
}

void QORSysTSLinkedAbstractCtnrFC::InsertNodeBetween(Node* prev, Node& node, Node* next) {
    if (_frozen == 0) {
        _chain.InsertBetween(prev, node, next);
    }
}

QORSysTSLinkedAbstractCtnrFC::Node* QORSysTSLinkedAbstractCtnrFC::RemoveNode(Node& node) {
    return _frozen == 0 ? _chain.Remove(node) : nullptr;
}

QORSysTSLinkedAbstractCtnrFC::Node* QORSysTSLinkedAbstractCtnrFC::RemoveNodeGetNext(Node& node) {
    Node* const next = node.next;
    return RemoveNode(node) != nullptr ? next : nullptr;
}

QORSysTSLinkedAbstractCtnrFC::Node* QORSysTSLinkedAbstractCtnrFC::RemoveNodeGetPrev(Node& node) {
    Node* const previous = node.previous;
    return RemoveNode(node) != nullptr ? previous : nullptr;
}

QORSysTSLinkedAbstractCtnrFC::Node* QORSysTSLinkedAbstractCtnrFC::GetNode(int i) const {
    return _frozen == 0 ? _chain.At(i) : nullptr;
}

QORSysTSLinkedAbstractCtnrFC::Node* QORSysTSLinkedAbstractCtnrFC::PopNode(int i) {
    Node* const node = GetNode(i);
    return node != nullptr ? RemoveNode(*node) : nullptr;
}

QORSysTSLinkedAbstractCtnrFC::Node* QORSysTSLinkedAbstractCtnrFC::PopFirstNode() {
    return _chain.first != nullptr ? RemoveNode(*_chain.first) : nullptr;
}

QORSysTSLinkedAbstractCtnrFC::Node* QORSysTSLinkedAbstractCtnrFC::PopLastNode() {
    return _chain.last != nullptr ? RemoveNode(*_chain.last) : nullptr;
}

int QORSysTSLinkedAbstractCtnrFC::GetNodeRange(int first, int end, Node*& firstNode, Node*& endNode) const {
    return _frozen == 0 ? FindNodeRange(*this, first, end, firstNode, endNode) : static_cast<int>(StatusBadArgument);
}

// With a mutex. Operations that are made of others take it again for each of them.

namespace {

using LockedNode = QORSysTSLinkedAbstractCtnrFTS::Node;
using LockedChain = VEL::internal::NodeChain<LockedNode>;

/// Writes the head record, under the mutex, for readers that may not hold it. Relaxed: they take no more than the
/// values themselves from it, and look at no node without the mutex.
void Publish(LockedChain& chain, const LockedChain& changed) {
    std::atomic_ref(chain.count).store(changed.count, std::memory_order_relaxed);
    std::atomic_ref(chain.first).store(changed.first, std::memory_order_relaxed);
    std::atomic_ref(chain.last).store(changed.last, std::memory_order_relaxed);
}

/// An end of the chain, read without the mutex. Relaxed, as above.
LockedNode* ReadEnd(LockedNode*& end) {
    return std::atomic_ref(end).load(std::memory_order_relaxed);
}

} // namespace

QORSysTSLinkedAbstractCtnrFTS::QORSysTSLinkedAbstractCtnrFTS() : _mutex(0, 1, 0) {
    Init();
}

void QORSysTSLinkedAbstractCtnrFTS::Init() {
    const MutexHolder own(_mutex);
    Publish(_chain, {0, nullptr, nullptr});
}

void QORSysTSLinkedAbstractCtnrFTS::InsertNodeBetween(Node* prev, Node& node, Node* next) {
    const MutexHolder own(_mutex);
    LockedChain changed = _chain;
    changed.InsertBetween(prev, node, next);
    Publish(_chain, changed);
}

QORSysTSLinkedAbstractCtnrFTS::Node* QORSysTSLinkedAbstractCtnrFTS::RemoveNode(Node& node) {
    const MutexHolder own(_mutex);
    LockedChain changed = _chain;
    changed.Remove(node);
    Publish(_chain, changed);
    return &node;
}

QORSysTSLinkedAbstractCtnrFTS::Node* QORSysTSLinkedAbstractCtnrFTS::RemoveNodeGetNext(Node& node) {
    const MutexHolder own(_mutex);
    Node* const next = node.next;
    RemoveNode(node);
    return next;
}

QORSysTSLinkedAbstractCtnrFTS::Node* QORSysTSLinkedAbstractCtnrFTS::RemoveNodeGetPrev(Node& node) {
    const MutexHolder own(_mutex);
    Node* const previous = node.previous;
    RemoveNode(node);
    return previous;
}

QORSysTSLinkedAbstractCtnrFTS::Node* QORSysTSLinkedAbstractCtnrFTS::GetNode(int i) const {
    const MutexHolder own(_mutex);
    return _chain.At(i);
}

QORSysTSLinkedAbstractCtnrFTS::Node* QORSysTSLinkedAbstractCtnrFTS::PopNode(int i) {
    Node* const node = GetNode(i);
    return node != nullptr ? RemoveNode(*node) : nullptr;
}

QORSysTSLinkedAbstractCtnrFTS::Node* QORSysTSLinkedAbstractCtnrFTS::PopFirstNode() {
    Node* const node = ReadEnd(_chain.first);
    return node != nullptr ? RemoveNode(*node) : nullptr;
}

QORSysTSLinkedAbstractCtnrFTS::Node* QORSysTSLinkedAbstractCtnrFTS::PopLastNode() {
    Node* const node = ReadEnd(_chain.last);
    return node != nullptr ? RemoveNode(*node) : nullptr;
}

int QORSysTSLinkedAbstractCtnrFTS::GetNodeRange(int first, int end, Node*& firstNode, Node*& endNode) const {
    return FindNodeRange(*this, first, end, firstNode, endNode);
}
