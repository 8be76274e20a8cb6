#include "VELSysList.h"

#include <new>

struct VELSysList::Node {
    void* item;
    Node* next;
};

namespace {

constexpr int s_typeOfObjects = 2;
constexpr int s_typeOfAddresses = 3;

} // namespace

VELSysList::VELSysList(int listType, bool owns)
    : _first(nullptr), _end(&_first), _next(nullptr), _count(0),
      _listType(listType == s_typeOfAddresses ? s_typeOfAddresses : s_typeOfObjects), _owns(owns) {}

VELSysList::~VELSysList() {
    removeall();
}

void* VELSysList::ChildCopyItem(void* item) {
    return item;
}

void VELSysList::ChildDeleteItem(void*) {}

int VELSysList::ChildCompareItem(void* first, void* second) {
    return first == second ? 0 : -1;
}

void* VELSysList::Add(void* item) {
    if (!item) {
        return nullptr;
    }
    // The node comes first: when it fails there is no clone yet, which some derived classes could not release alone.
    Node* const node = new (std::nothrow) Node{nullptr, nullptr};
    if (!node) {
        return nullptr;
    }
    node->item = _owns ? ChildCopyItem(item) : item;
    if (!node->item) {
        delete node;
        return nullptr;
    }
    *_end = node;
    _end = &node->next;
    ++_count;
    return node->item;
}

void* VELSysList::GetFirst() {
    _next = &_first;
    return GetNext();
}

void* VELSysList::GetNext() {
    if (!_next || !*_next) {
        return nullptr;
    }
    Node* const node = *_next;
    _next = &node->next;
    return node->item;
}

void* VELSysList::Find(void* item) {
    if (!item) {
        return nullptr;
    }
    for (Node* node = _first; node; node = node->next) {
        if (ChildCompareItem(node->item, item) == 0) {
            return node->item;
        }
    }
    return nullptr;
}

int VELSysList::Erase(void* stored) {
    Node** const link = LinkOf(stored);
    Node* const node = *link;
    if (!node) {
        return -1;
    }
    *link = node->next;
    if (_end == &node->next) {
        _end = link;
    }
    if (_next == &node->next) {
        _next = link;
    }
    --_count;
    ReleaseNode(node);
    return 0;
}

void VELSysList::removeall() {
    Node* node = _first;
    _first = nullptr;
    _end = &_first;
    _next = nullptr;
    _count = 0;
    while (node) {
        Node* const next = node->next;
        ReleaseNode(node);
        node = next;
    }
}

int VELSysList::Count() const {
    return _count;
}

int VELSysList::GetType() const {
    return _listType;
}

VELSysList::Node** VELSysList::LinkOf(void* stored) {
    Node** link = &_first;
    while (*link && (*link)->item != stored) {
        link = &(*link)->next;
    }
    return link;
}

void VELSysList::ReleaseNode(Node* node) {
    if (_owns) {
        ChildDeleteItem(node->item);
    }
    delete node;
}
