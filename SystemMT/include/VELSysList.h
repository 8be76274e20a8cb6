/// @file
/// An ordered list of untyped entries, with the handling of an entry left to a derived class.
#pragma once

#include "QORSysMTExport.h"

/// A list that keeps the order of its entries, and duplicates as well.
///
/// A derived class says how an entry is cloned, released and compared, and its destructor calls `removeall`: once this
/// class's own destructor runs, the derived operations are gone, and what is still listed is dropped unreleased.
///
/// There is no lock: a list belongs to one thread at a time. Its one cursor makes a walk a change of the list.
class QORSYSMT_EXPORT VELSysList {
public:
    /// @param listType  2: entries are objects; 3: entries are addresses. Both keep order and duplicates and differ in
    ///                  nothing that the list does; other values count as 2.
    /// @param owns      True: the list stores the clone of what is added, and releases it on removal. False: it stores
    ///                  what is added and never releases.
    VELSysList(int listType, bool owns);
    VELSysList(const VELSysList&) = delete;
    VELSysList& operator=(const VELSysList&) = delete;
    virtual ~VELSysList();

protected:
    /// The copy of an entry that an owning list stores. Answers `item` itself here.
    /// @return Null when there is no memory; the entry is refused then.
    virtual void* ChildCopyItem(void* item);

    /// Releases an entry that an owning list removes. Does nothing here.
    virtual void ChildDeleteItem(void* item);

    /// Compares two entries: 0 for equal. Compares the addresses here.
    virtual int ChildCompareItem(void* first, void* second);

public:
    /// Appends an entry.
    /// @return The stored entry: the clone in an owning list, otherwise `item`. Null when it is refused, because
    ///         `item` is null or memory is short; `item` then is as it was, and no clone is left behind.
    void* Add(void* item);

    /// Starts a walk.
    /// @return The first entry, or null when the list is empty. It stays the list's.
    void* GetFirst();

    /// Goes on with the walk. An entry added meanwhile is reached, also when the walk had come to its end.
    /// @return The next entry, or null at the end and before any walk.
    void* GetNext();

    /// @return The first entry that compares equal to `item`, or null. The cursor stays. Null finds nothing.
    void* Find(void* item);

    /// Removes one entry, by its address and without comparison. A walk that stands on it goes on behind it.
    /// @param stored  An entry as answered by `Add`, `GetFirst`, `GetNext` or `Find`. Of an address that is listed
    ///                more than once the first goes.
    /// @return 0, or -1 when it is not listed.
    int Erase(void* stored);

    /// Removes all entries, from first to last, and ends the walk.
    void removeall();

    /// @return The number of entries.
    int Count() const;

    /// @return 2 or 3, as the list was made.
    int GetType() const;

private:
    struct Node;

    QORSYSMT_PRIVATE void ReleaseNode(Node* node);
    QORSYSMT_PRIVATE Node** LinkOf(void* stored);

    Node* _first;
    /// The link behind the last entry.
    Node** _end;
    /// The link that leads to the next entry of the walk, null when there is no walk.
    Node** _next;
    int _count;
    int _listType;
    bool _owns;
};
