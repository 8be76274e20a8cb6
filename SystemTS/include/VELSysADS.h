/// @file
/// Small named texts attached to a file, each one an extended attribute of it.
///
/// Names carry the namespace of the file system, as in "user.origin"; nothing is added to them. Names, values and paths
/// are bytes as the system takes them, zero-terminated.
#pragma once

#include "QORSysTSExport.h"

#include "VELSysList.h"
#include <cstddef>

/// One text. Both fields are zero-terminated and cut where they don't fit.
struct VELSysADSItem {
    char name[256];
    char value[1024];
};

/// The texts of a file, in the system's order. A list belongs to one thread.
class QORSYSTS_EXPORT VELSysADSList : private VELSysList {
public:
    VELSysADSList();
    ~VELSysADSList() override;

    /// Adds a text; a null field stays empty. Without memory nothing is added.
    void Add(const char* name, const char* value);
    /// Starts a walk. @return The first text, which stays the list's, or null.
    VELSysADSItem* GetStringFirst();
    /// Goes on with the walk. @return The next text, or null at the end.
    VELSysADSItem* GetStringNext();
    /// The number of texts.
    int Count() const;
    void RemoveAll();

protected:
    void* ChildCopyItem(void* item) override;
    void ChildDeleteItem(void* item) override;
    /// Compares the names. @return As `strcmp`; 0 when either is null.
    int ChildCompareItem(void* first, void* second) override;
};

extern "C" {

/// Reads a text.
/// @param value  Target of `size` bytes, all of which are cleared first; stays empty when there is no such text or it
///               doesn't fit. Null does nothing.
QORSYSTS_EXPORT void VELSysADSStringGet(char* value, std::size_t size, const char* name, const char* path);

/// Attaches a text, which is stored with its terminator. Failures are reported on standard output.
/// @param flags  0 replaces a text of that name; any other value refuses to.
/// @return 0, or -1; for a null argument without a report.
QORSYSTS_EXPORT int VELSysADSStringSet(const char* name, const char* value, const char* path, int flags);

/// Removes a text. Failures are reported on standard output.
/// @return 0, or -1.
QORSYSTS_EXPORT int VELSysADSStringDel(const char* name, const char* path);

/// Puts all texts of a file into `list`, in place of what it held. Empty ones are passed over. Nulls do nothing.
QORSYSTS_EXPORT void VELSysADSStringList(VELSysADSList* list, const char* path);
}
