/// @file
/// A walk through the entries of a directory.
#pragma once

#include "QORSysTSExport.h"
#include "VELSysFileFinder.h"
#include "VELSysPath.h"

class QORSysTSUnicodeString;
class VELSysDirectoryIteratorImpl;

/// Walks the entries of a VELSysPath, "." and ".." left out, in the system's order. The walk holds one descriptor,
/// which is closed as soon as it ends.
///
/// The path that is listed must outlive the iterator and all its copies, those of a finished one and of
/// VELSysPath::End() too: the iterator refers to it and can't tell when it is gone. Move assignment to that path counts
/// as its end. An iterator belongs to one thread.
///
/// @code
/// for (VELSysDirectoryIterator it = path.Begin(&rc); it != path.End(); ++it) {
///     Take(*it);
/// }
/// @endcode
class QORSYSTS_EXPORT VELSysDirectoryIterator {
public:
    /// Stands nowhere and lists nothing.
    VELSysDirectoryIterator();
    /// Starts a new walk with the other's path, pattern and options: the copy stands on the first entry, not on the
    /// other's. So does the copy of an iterator at its end.
    VELSysDirectoryIterator(const VELSysDirectoryIterator& other);
    /// As the copy constructor. Where the walk can't be started because the other lists nothing or its path is no
    /// directory, this iterator stays as it is.
    VELSysDirectoryIterator& operator=(const VELSysDirectoryIterator& other);
    ~VELSysDirectoryIterator();

    /// True for two iterators of the same path when either has ended, or when pattern, options and the number of
    /// entries walked agree. A walk that failed counts as ended against every other.
    bool operator==(const VELSysDirectoryIterator& other) const;
    bool operator!=(const VELSysDirectoryIterator& other) const { return !(*this == other); }

    /// Moves on. An iterator at its end opens the directory again and delivers its first entry, while it still counts
    /// as ended.
    /// @return 0; VEL::StatusNoMoreFiles at the end; VEL::StatusNotFound when the pattern matches nothing;
    /// VEL::StatusFailure for an iterator that stands nowhere; otherwise the code of the system's error, after which
    /// the iterator stands nowhere.
    int next();
    /// next(), with the code dropped.
    VELSysDirectoryIterator& operator++() {
        next();
        return *this;
    }

    /// The path of the current entry, for as long as the iterator stays there. An entry whose name can't be turned into
    /// UTF-8 shows the path that is listed.
    const VELSysPath& operator*() const;
    /// The path of the current entry: the text of the path that is listed, and the name.
    /// @return 0; VEL::StatusFailure when the iterator stands nowhere, VEL::StatusBadArgument at its end; otherwise the
    /// code of building the path.
    int GetCurrentPath(VELSysPath& path) const;
    /// The name of the current entry alone, in the file system's bytes.
    /// @return 0; VEL::StatusFailure when the iterator stands nowhere, VEL::StatusBadArgument at its end.
    int GetCurrentName(QORSysTSUnicodeString& name) const;

private:
    friend class VELSysPath;

    /// The start of a walk, as VELSysPath::Begin() answers it.
    QORSYSTS_PRIVATE VELSysDirectoryIterator(VELSysPathImpl* owner, const QORUnicodeString* pattern,
                                             const VELSysFNMatchOptions& options, int* rc);
    /// The end of a walk of `owner`.
    QORSYSTS_PRIVATE explicit VELSysDirectoryIterator(VELSysPathImpl* owner);
    QORSYSTS_PRIVATE int _Start(VELSysPathImpl* owner, const QORUnicodeString* pattern,
                                const VELSysFNMatchOptions& options);

    VELSysDirectoryIteratorImpl* _impl; ///< Owned; null when there was no memory for it.
};
