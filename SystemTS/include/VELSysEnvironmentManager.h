/// @file
/// Variables and command lines of one application context.
#pragma once

#include "QORSysTSExport.h"
#include "VELSysHashTable.h"
#include "VELSysList.h"

#include <cstddef>

/// What an application can leave with its command line for the end of its life. All words are zero at first.
struct VELSysEnvironLifeCycleBlock {
    void* words[4];
};

/// One command line. It owns the vector, its strings and the life-cycle block.
struct VELSysEnvironArgumentSuite {
    int argc;
    char** argv;                            ///< `argc` strings and a null.
    char* name;                             ///< The first argument.
    char* secondName;                       ///< The same.
    int mark;                               ///< -1 at first; the application's.
    int state;                              ///< 0 at first; the application's.
    VELSysEnvironLifeCycleBlock* lifeCycle; ///< Never null.
};

/// Values by name; both are copied. Case counts in names.
class QORSYSTS_EXPORT VELSysEnvironTable : public VELSysHashTable {
public:
    VELSysEnvironTable();
    ~VELSysEnvironTable() override;

protected:
    void* ChildCopyItem(void* value) override;
    void ChildDeleteItem(void* value) override;
    int ChildCompareItem(void* first, void* second) override;
};

/// Command lines, which the list takes over as they are.
class QORSYSTS_EXPORT VELSysEnvironArgumentSuiteList : public VELSysList {
public:
    VELSysEnvironArgumentSuiteList();
    ~VELSysEnvironArgumentSuiteList() override;

protected:
    void* ChildCopyItem(void* item) override;
    void ChildDeleteItem(void* item) override;
    /// Suites are equal when their names are, or when one has none.
    int ChildCompareItem(void* first, void* second) override;
};

/// Tags, copied.
class QORSYSTS_EXPORT VELSysEnvironExpandableList : public VELSysList {
public:
    VELSysEnvironExpandableList();
    ~VELSysEnvironExpandableList() override;

protected:
    void* ChildCopyItem(void* item) override;
    void ChildDeleteItem(void* item) override;
    int ChildCompareItem(void* first, void* second) override;
};

/// Addresses of strings, which are never read through this list: a string may be gone by then.
class QORSYSTS_EXPORT VELSysEnvironExpandableAddrList : public VELSysList {
public:
    VELSysEnvironExpandableAddrList();
    ~VELSysEnvironExpandableAddrList() override;

protected:
    void* ChildCopyItem(void* item) override;
    void ChildDeleteItem(void* item) override;
    int ChildCompareItem(void* first, void* second) override;
};

/// Variables and command lines of one application context.
///
/// Variables stand in a table and in three arrays of "NAME=value" strings: official, static and dynamic. None of them
/// is filled from the process's environment here, nor written to it. An array is made for a number of entries, each of
/// its slots is filled, and when all arrays are filled their "${NAME}" tags are expanded, once:
///
/// @code
/// VELSysEnvironmentManager manager;
/// manager.BuildStaticEnviron(2);
/// manager.BuildEnvironString(&manager.StaticEnviron()[0], "ROOT=/opt");
/// manager.BuildEnvironString(&manager.StaticEnviron()[1], "BIN=${ROOT}/bin");
/// manager.ExpandAllEnvironStrings();
/// manager.GetEnv("BIN"); // "/opt/bin"
/// @endcode
///
/// Results of type int are 0 for success and -1 for failure. What a lookup answers stays the manager's and is good
/// until it is replaced. There is no lock. Memory that runs out is reported by std::bad_alloc unless stated.
class QORSYSTS_EXPORT VELSysEnvironmentManager {
public:
    VELSysEnvironmentManager();
    VELSysEnvironmentManager(const VELSysEnvironmentManager&) = delete;
    VELSysEnvironmentManager& operator=(const VELSysEnvironmentManager&) = delete;
    virtual ~VELSysEnvironmentManager();

    /// Looks a variable up in the table, then in the official, the static and the dynamic array. Of equal names in one
    /// array the first counts; an entry without "=" is no variable.
    /// @return The value, or null. An empty name can be found in the table only.
    const char* GetEnv(const char* name);
    /// Looks a variable up in the table alone.
    const char* GetEnvInTable(const char* name);
    /// Looks a variable up in the official array alone.
    const char* GetOfficialEnv(const char* name);

    /// Stores a variable in the table, unless the name is there. @return -1 as well when memory is short.
    int PutEnvInTable(const char* name, const char* value);
    /// Stores a variable in the table, known or not. @return -1 as well when memory is short.
    int ReplaceEnvInTable(const char* name, const char* value);

    /// Frees the dynamic array and makes a new one of `count` null slots. @return -1 for 0; there is no array then.
    int BuildDynamicEnviron(std::size_t count);
    /// Makes a static array of `count` null slots in place of the one that is there, whose strings stay readable as
    /// long as the manager lives. @return -1 for 0; the array stays then.
    int BuildStaticEnviron(std::size_t count);
    /// The same for the official array.
    int BuildOfficialEnviron(std::size_t count);

    /// Stores a copy of `text`, which has the form "NAME=value", in a slot of an array in place of the string there,
    /// and registers the tags in it.
    /// @return 0, also for a null `slot`; -1, with the slot null, for a null `text` and when the copy can't be had.
    int BuildEnvironString(char** slot, const char* text);
    /// Wide text is not supported.
    /// @return 0 for a null `slot`; -1 for any other, whose string is freed.
    int BuildEnvironString(char** slot, const wchar_t* text, std::size_t length);
    /// Registers the tags of `text`, which stands in a slot of an array. A "${" without a "}" behind it is no tag.
    /// @return -1 for null.
    int BuildEnvironExpandableString(const char* text);
    /// Replaces each registered tag whose variable is known, in order, in all strings that had a tag when they were
    /// registered. To be called once.
    /// @return 0.
    int ExpandAllEnvironStrings();

    /// Stores a copy of `text` in a slot in place of the string there; null for null. @return 0, whatever is given.
    static int BuildArgumentString(char** slot, const char* text);
    /// Makes a vector of `count` null slots, from array `new`. @return -1 for a `count` below 1 and a null `out`.
    static int BuildArgumentArrayA(int count, char*** out);

    /// Adds a command line, of which all strings are copied.
    /// @return -1 for a null `argv`, an `argc` below 1, and when the list has no memory.
    int AddMain(char** argv, int argc);
    /// Splits a command line and adds it; null removes all command lines.
    /// @return 0, or -1 when that fails.
    int AddMain(const char* commandLine);
    /// The first command line, or null. Starts a walk.
    VELSysEnvironArgumentSuite* GetMainFirst();
    /// The next command line of the walk, or null.
    VELSysEnvironArgumentSuite* GetMainNext();

    /// The arrays, each ending with a null slot; null while there is none.
    char** DynamicEnviron() const { return _dynamicEnviron; }
    char** StaticEnviron() const { return _staticEnviron; }
    char** OfficialEnviron() const { return _officialEnviron; }
    /// The command line that the application context has chosen; kept for it and not used here.
    VELSysEnvironArgumentSuite* CurrentMain() const { return _currentMain; }
    void SetCurrentMain(VELSysEnvironArgumentSuite* suite) { _currentMain = suite; }

private:
    struct Layout;

    QORSYSTS_PRIVATE void _AddTag(const char* tag, std::size_t length, const char* text);
    QORSYSTS_PRIVATE char** _SlotOf(const void* string) const;
    QORSYSTS_PRIVATE std::size_t _CollectSlots(char*** slots);
    QORSYSTS_PRIVATE void _Expand(char** slot, const char* tag, const char* value);

    char** _dynamicEnviron;
    char** _staticEnviron;
    char** _officialEnviron;
    VELSysEnvironTable* _table;
    VELSysEnvironArgumentSuite* _currentMain;
    VELSysEnvironArgumentSuiteList _mains;
    VELSysEnvironExpandableList _tags;
    VELSysEnvironExpandableAddrList _tagAddresses;
    void* _trace;
};
