#include "VELSysEnvironmentManager.h"

#include "DuplicateText.h"
#include "UpwardCalls.h"
#include "VELSysEnviron.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>

using VEL::internal::DuplicateText;
using VEL::internal::TraceInfo;

static_assert(sizeof(VELSysEnvironArgumentSuite) == 48 && offsetof(VELSysEnvironArgumentSuite, argv) == 8 &&
              offsetof(VELSysEnvironArgumentSuite, name) == 16 &&
              offsetof(VELSysEnvironArgumentSuite, secondName) == 24 &&
              offsetof(VELSysEnvironArgumentSuite, mark) == 32 && offsetof(VELSysEnvironArgumentSuite, state) == 36 &&
              offsetof(VELSysEnvironArgumentSuite, lifeCycle) == 40);
static_assert(sizeof(VELSysEnvironLifeCycleBlock) == 32);

/// The order of the fields.
struct VELSysEnvironmentManager::Layout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
    static constexpr std::size_t lists = 48;
    static constexpr std::size_t list = sizeof(VELSysList);
    static_assert(offsetof(VELSysEnvironmentManager, _dynamicEnviron) == 8);
    static_assert(offsetof(VELSysEnvironmentManager, _staticEnviron) == 16);
    static_assert(offsetof(VELSysEnvironmentManager, _officialEnviron) == 24);
    static_assert(offsetof(VELSysEnvironmentManager, _table) == 32);
    static_assert(offsetof(VELSysEnvironmentManager, _currentMain) == 40);
    static_assert(offsetof(VELSysEnvironmentManager, _mains) == lists);
    static_assert(offsetof(VELSysEnvironmentManager, _tags) == lists + list);
    static_assert(offsetof(VELSysEnvironmentManager, _tagAddresses) == lists + 2 * list);
    static_assert(offsetof(VELSysEnvironmentManager, _trace) == lists + 3 * list);
    static_assert(sizeof(VELSysEnvironmentManager) == lists + 3 * list + 8);
#pragma GCC diagnostic pop
};

namespace {

constexpr int TableBuckets = 8192;
constexpr int CaseCounts = -1;
constexpr int ListOfObjects = 2;
constexpr int ListOfAddresses = 3;

constexpr const char* TagStart = "${";
constexpr std::size_t TagStartLength = 2;
/// "${}".
constexpr std::size_t ShortestTag = 3;
/// A longer tag is cut to one byte less; one of just this length is kept, and not expanded.
constexpr std::size_t TagRoom = 8192;

char* Text(void* item) {
    return static_cast<char*>(item);
}

/// What stands in front of an array.
struct EnvironHeader {
    /// The array that this one stands in for, so that strings that were looked up there stay readable.
    char** replaced;
    /// Slots without the last. A slot that is null hides those behind it, but they are freed.
    std::size_t count;
};
constexpr std::size_t HeaderSlots = sizeof(EnvironHeader) / sizeof(char*);
static_assert(HeaderSlots * sizeof(char*) == sizeof(EnvironHeader));

/// An array of `count` null slots and the null that ends it.
char** NewEnviron(std::size_t count, char** replaced) {
    constexpr std::size_t extra = HeaderSlots + 1;
    if (count > SIZE_MAX / sizeof(char*) - extra) {
        throw std::bad_array_new_length();
    }
    auto** const block = new char*[count + extra]();
    new (block) EnvironHeader{replaced, count};
    return block + HeaderSlots;
}

/// Frees an array with its strings, and those that it stands in for.
void DeleteEnviron(char** array) {
    while (array != nullptr) {
        char** const block = array - HeaderSlots;
        const EnvironHeader header = *std::launder(reinterpret_cast<EnvironHeader*>(block));
        for (std::size_t i = 0; i < header.count; ++i) {
            delete[] array[i];
        }
        delete[] block;
        array = header.replaced;
    }
}

/// The value of a variable in an array, or null. `name` is not empty.
const char* FindInEnviron(char** array, const char* name) {
    // The first "=" of an entry ends its name, so a name with one in it is never found.
    if (array == nullptr || std::strchr(name, '=') != nullptr) {
        return nullptr;
    }
    const std::size_t length = std::strlen(name);
    for (; *array != nullptr; ++array) {
        const char* const entry = *array;
        if (*entry == *name && std::strncmp(entry, name, length) == 0 && entry[length] == '=') {
            return entry + length + 1;
        }
    }
    return nullptr;
}

bool IsEmpty(const char* text) {
    return text == nullptr || *text == '\0';
}

char** FindSlot(char** array, const void* string) {
    for (; array != nullptr && *array != nullptr; ++array) {
        if (*array == string) {
            return array;
        }
    }
    return nullptr;
}

void DeleteSuite(VELSysEnvironArgumentSuite* suite) {
    for (int i = suite->argc; suite->argv != nullptr && i > 0; --i) {
        delete[] suite->argv[i - 1];
    }
    delete[] suite->argv;
    delete suite->lifeCycle;
    delete suite;
}

struct SuiteDeleter {
    void operator()(VELSysEnvironArgumentSuite* suite) const { DeleteSuite(suite); }
};
using SuiteHolder = std::unique_ptr<VELSysEnvironArgumentSuite, SuiteDeleter>;

/// A suite of copies.
SuiteHolder MakeSuite(char** argv, int argc) {
    SuiteHolder suite(new VELSysEnvironArgumentSuite{argc, nullptr, nullptr, nullptr, -1, 0, nullptr});
    suite->argv = new char*[static_cast<std::size_t>(argc) + 1]();
    for (int i = 0; i < argc; ++i) {
        VELSysEnvironmentManager::BuildArgumentString(&suite->argv[i], argv[i]);
    }
    suite->name = suite->argv[0];
    suite->secondName = suite->argv[0];
    suite->lifeCycle = new VELSysEnvironLifeCycleBlock{};
    return suite;
}

} // namespace

// A copy that can't be had is null here: the containers refuse the entry then, and their callers report it.

VELSysEnvironTable::VELSysEnvironTable() : VELSysHashTable(TableBuckets, CaseCounts) {}

VELSysEnvironTable::~VELSysEnvironTable() {
    removeall();
}

void* VELSysEnvironTable::ChildCopyItem(void* value) {
    return DuplicateText(Text(value)).release();
}

void VELSysEnvironTable::ChildDeleteItem(void* value) {
    delete[] Text(value);
}

int VELSysEnvironTable::ChildCompareItem(void* first, void* second) {
    return first != nullptr && second != nullptr ? std::strcmp(Text(first), Text(second)) : -1;
}

VELSysEnvironArgumentSuiteList::VELSysEnvironArgumentSuiteList() : VELSysList(ListOfObjects, true) {}

VELSysEnvironArgumentSuiteList::~VELSysEnvironArgumentSuiteList() {
    removeall();
}

void* VELSysEnvironArgumentSuiteList::ChildCopyItem(void* item) {
    return item;
}

void VELSysEnvironArgumentSuiteList::ChildDeleteItem(void* item) {
    if (item != nullptr) {
        DeleteSuite(static_cast<VELSysEnvironArgumentSuite*>(item));
    }
}

int VELSysEnvironArgumentSuiteList::ChildCompareItem(void* first, void* second) {
    const char* const firstName = static_cast<VELSysEnvironArgumentSuite*>(first)->name;
    const char* const secondName = static_cast<VELSysEnvironArgumentSuite*>(second)->name;
    return IsEmpty(firstName) || IsEmpty(secondName) ? 0 : std::strcmp(firstName, secondName);
}

VELSysEnvironExpandableList::VELSysEnvironExpandableList() : VELSysList(ListOfObjects, true) {}

VELSysEnvironExpandableList::~VELSysEnvironExpandableList() {
    removeall();
}

void* VELSysEnvironExpandableList::ChildCopyItem(void* item) {
    return DuplicateText(Text(item)).release();
}

void VELSysEnvironExpandableList::ChildDeleteItem(void* item) {
    delete[] Text(item);
}

int VELSysEnvironExpandableList::ChildCompareItem(void* first, void* second) {
    return first != nullptr && second != nullptr ? std::strcmp(Text(first), Text(second)) : 0;
}

VELSysEnvironExpandableAddrList::VELSysEnvironExpandableAddrList() : VELSysList(ListOfAddresses, false) {}

VELSysEnvironExpandableAddrList::~VELSysEnvironExpandableAddrList() {
    removeall();
}

void* VELSysEnvironExpandableAddrList::ChildCopyItem(void* item) {
    return item;
}

void VELSysEnvironExpandableAddrList::ChildDeleteItem(void*) {}

int VELSysEnvironExpandableAddrList::ChildCompareItem(void* first, void* second) {
    return first == second ? 0 : -1;
}

VELSysEnvironmentManager::VELSysEnvironmentManager()
    : _dynamicEnviron(nullptr), _staticEnviron(nullptr), _officialEnviron(nullptr), _table(nullptr),
      _currentMain(nullptr), _trace(nullptr) {
    VELSysTraceCreate__(&_trace, "LifeCycle");
    _table = new (std::nothrow) VELSysEnvironTable;
    if (_table == nullptr) {
        VELSysTraceDestroy__(&_trace);
        throw std::bad_alloc();
    }
}

VELSysEnvironmentManager::~VELSysEnvironmentManager() {
    DeleteEnviron(_dynamicEnviron);
    DeleteEnviron(_staticEnviron);
    DeleteEnviron(_officialEnviron);
    delete _table;
    VELSysTraceDestroy__(&_trace);
}

const char* VELSysEnvironmentManager::GetEnv(const char* name) {
    if (const char* const value = GetEnvInTable(name)) {
        return value;
    }
    if (IsEmpty(name)) {
        return nullptr;
    }
    for (char** const array : {_officialEnviron, _staticEnviron, _dynamicEnviron}) {
        if (const char* const value = FindInEnviron(array, name)) {
            return value;
        }
    }
    return nullptr;
}

const char* VELSysEnvironmentManager::GetEnvInTable(const char* name) {
    return _table != nullptr ? Text(_table->Get(name)) : nullptr;
}

const char* VELSysEnvironmentManager::GetOfficialEnv(const char* name) {
    return IsEmpty(name) ? nullptr : FindInEnviron(_officialEnviron, name);
}

int VELSysEnvironmentManager::PutEnvInTable(const char* name, const char* value) {
    return _table != nullptr ? _table->Add(name, const_cast<char*>(value)) : -1;
}

int VELSysEnvironmentManager::ReplaceEnvInTable(const char* name, const char* value) {
    return _table != nullptr ? _table->Replace(name, const_cast<char*>(value)) : -1;
}

int VELSysEnvironmentManager::BuildDynamicEnviron(std::size_t count) {
    DeleteEnviron(_dynamicEnviron);
    _dynamicEnviron = nullptr;
    if (count == 0) {
        return -1;
    }
    _dynamicEnviron = NewEnviron(count, nullptr);
    return 0;
}

int VELSysEnvironmentManager::BuildStaticEnviron(std::size_t count) {
    if (count == 0) {
        return -1;
    }
    _staticEnviron = NewEnviron(count, _staticEnviron);
    return 0;
}

int VELSysEnvironmentManager::BuildOfficialEnviron(std::size_t count) {
    if (count == 0) {
        return -1;
    }
    _officialEnviron = NewEnviron(count, _officialEnviron);
    return 0;
}

int VELSysEnvironmentManager::BuildEnvironString(char** slot, const char* text) {
    if (slot == nullptr) {
        return 0;
    }
    // Before the old string goes: `text` may be that string.
    char* const copy = DuplicateText(text).release();
    delete[] * slot;
    *slot = copy;
    return copy != nullptr ? BuildEnvironExpandableString(copy) : -1;
}

int VELSysEnvironmentManager::BuildEnvironString(char** slot, const wchar_t*, std::size_t) {
    if (slot == nullptr) {
        return 0;
    }
    delete[] * slot;
    *slot = nullptr;
    return -1;
}

int VELSysEnvironmentManager::BuildEnvironExpandableString(const char* text) {
    if (text == nullptr) {
        return -1;
    }
    for (const char* p = text;;) {
        const char* const start = std::strstr(p, TagStart);
        const char* const end = start != nullptr ? std::strchr(start, '}') : nullptr;
        if (end == nullptr) {
            return 0;
        }
        const auto length = static_cast<std::size_t>(end + 1 - start);
        _AddTag(start, length <= TagRoom ? length : TagRoom - 1, text);
        p = end;
    }
}

/// Lists a tag and the string in which it stands: both, or neither.
void VELSysEnvironmentManager::_AddTag(const char* tag, std::size_t length, const char* text) {
    const std::unique_ptr<char[]> copy = DuplicateText(tag, length);
    void* const stored = _tags.Add(copy.get());
    if (stored == nullptr) {
        throw std::bad_alloc();
    }
    if (_tagAddresses.Add(const_cast<char*>(text)) == nullptr) {
        _tags.Erase(stored);
        throw std::bad_alloc();
    }
    if (_trace != nullptr) {
        TraceInfo(_trace, "l_pTag=='%s', ipStringAddr=='%s'", copy.get(), text);
    }
}

int VELSysEnvironmentManager::ExpandAllEnvironStrings() {
    if (_tagAddresses.Count() == 0) {
        return 0;
    }
    const std::unique_ptr<char**[]> slots(new char**[static_cast<std::size_t>(_tagAddresses.Count())]);
    char*** const end = slots.get() + _CollectSlots(slots.get());
    for (const char* tag = Text(_tags.GetFirst()); tag != nullptr; tag = Text(_tags.GetNext())) {
        const std::size_t length = std::strlen(tag);
        if (length < ShortestTag || length >= TagRoom) {
            continue;
        }
        const std::string name(tag + TagStartLength, length - ShortestTag);
        if (_trace != nullptr) {
            TraceInfo(_trace, "l_pExpandableStr=='%s', l_pTagAsString=='%s'", tag, name.c_str());
        }
        const char* const found = GetEnv(name.c_str());
        if (found == nullptr) {
            continue;
        }
        // A copy: the value may stand in one of the strings that are about to change.
        const std::string value(found);
        if (_trace != nullptr) {
            TraceInfo(_trace, "\tl_pEnvSet='%s'", value.c_str());
        }
        std::for_each(slots.get(), end, [&](char** slot) { _Expand(slot, tag, value.c_str()); });
    }
    return 0;
}

/// The slots of the registered strings, each once, in the order of registration. Slots rather than addresses, since
/// those of the strings change with each tag: a string that has gone meanwhile is in no slot and not looked at.
/// @return Their number.
std::size_t VELSysEnvironmentManager::_CollectSlots(char*** slots) {
    char*** end = slots;
    for (void* string = _tagAddresses.GetFirst(); string != nullptr; string = _tagAddresses.GetNext()) {
        char** const slot = _SlotOf(string);
        if (slot != nullptr && std::find(slots, end, slot) == end) {
            *end++ = slot;
        }
    }
    return static_cast<std::size_t>(end - slots);
}

/// The slot of the official, the static or the dynamic array in which a string stands, or null.
char** VELSysEnvironmentManager::_SlotOf(const void* string) const {
    for (char** const array : {_officialEnviron, _staticEnviron, _dynamicEnviron}) {
        if (char** const slot = FindSlot(array, string)) {
            return slot;
        }
    }
    return nullptr;
}

/// Replaces a tag in the string of one slot. The string is allocated anew also when the tag does not occur in it.
void VELSysEnvironmentManager::_Expand(char** slot, const char* tag, const char* value) {
    std::unique_ptr<char[]> copy = DuplicateText(*slot);
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    char* const replaced = VELSysEnvironStringReplaceA(copy.get(), tag, value);
    copy.release();
    delete[] * slot;
    *slot = replaced;
    if (_trace != nullptr) {
        TraceInfo(_trace, "*l_pEnvLine=='%s'", replaced);
    }
}

int VELSysEnvironmentManager::BuildArgumentString(char** slot, const char* text) {
    if (slot == nullptr) {
        return 0;
    }
    // Before the old string goes: `text` may be that string.
    char* const copy = DuplicateText(text).release();
    delete[] * slot;
    *slot = copy;
    if (copy == nullptr && text != nullptr) {
        throw std::bad_alloc();
    }
    return 0;
}

int VELSysEnvironmentManager::BuildArgumentArrayA(int count, char*** out) {
    if (count < 1 || out == nullptr) {
        return -1;
    }
    *out = new char*[static_cast<std::size_t>(count)]();
    return 0;
}

int VELSysEnvironmentManager::AddMain(char** argv, int argc) {
    if (argv == nullptr || argc < 1) {
        return -1;
    }
    SuiteHolder suite = MakeSuite(argv, argc);
    if (_mains.Add(suite.get()) == nullptr) {
        return -1;
    }
    static_cast<void>(suite.release());
    return 0;
}

int VELSysEnvironmentManager::AddMain(const char* commandLine) {
    if (commandLine == nullptr) {
        _mains.removeall();
        return 0;
    }
    char** argv = nullptr;
    int argc = 0;
    if (VELSysEnvironBuildArgumentFromCommandLine(commandLine, &argv, &argc) != 0) {
        return -1;
    }
    int result = -1;
    try {
        result = AddMain(argv, argc);
    } catch (...) {
        VELSysEnvironDeleteArgumentArrayA(&argv, argc);
        throw;
    }
    return VELSysEnvironDeleteArgumentArrayA(&argv, argc) == 0 ? result : -1;
}

VELSysEnvironArgumentSuite* VELSysEnvironmentManager::GetMainFirst() {
    return static_cast<VELSysEnvironArgumentSuite*>(_mains.GetFirst());
}

VELSysEnvironArgumentSuite* VELSysEnvironmentManager::GetMainNext() {
    return static_cast<VELSysEnvironArgumentSuite*>(_mains.GetNext());
}
