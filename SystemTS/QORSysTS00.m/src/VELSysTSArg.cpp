#include "VELSysTSArg.h"

#include "DuplicateText.h"
#include "QORResourceLock.h"
#include "QORSysSimpleHashTable.h"
#include "QORSysTSCodePage.h"
#include "StringAccess.h"
#include "StringText.h"
#include "VELString.h"
#include "VELSysStatus.h"

#include <climits>
#include <cstring>
#include <memory>
#include <new>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
static_assert(sizeof(ArgEnt) == 40 && offsetof(ArgEnt, key) == 8 && offsetof(ArgEnt, hasValue) == 16 &&
              offsetof(ArgEnt, isAdded) == 20 && offsetof(ArgEnt, hash) == 24 && offsetof(ArgEnt, value) == 32);
#pragma GCC diagnostic pop

using VEL::internal::DuplicateText;

namespace {

constexpr int FirstBuckets = 23;
/// hasValue of a record that was made for a look-up.
constexpr int OwnsNothing = -1;
/// Values up to this size are converted without the heap.
constexpr std::size_t ShortValue = 512;

/// Made on first need and kept for the life of the process.
constinit QORSysSimpleHashTable* s_table = nullptr;

QORResourceLock& TableLock() {
    static QORResourceLock s_lock(1);
    return s_lock;
}

class Reading {
public:
    Reading() : _isHeld(TableLock().ReadLock() == 0) {}
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;
    ~Reading() {
        if (_isHeld) {
            TableLock().ReadUnlock();
        }
    }
    /// False when the platform admits no further reader.
    explicit operator bool() const { return _isHeld; }

private:
    const bool _isHeld;
};

class Writing {
public:
    Writing() { TableLock().WriteLock(); }
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;
    ~Writing() { TableLock().WriteUnlock(); }
};

unsigned int HashOf(const char* key) {
    unsigned int hash = 5381;
    for (; *key != '\0'; ++key) {
        hash = hash * 33 + static_cast<unsigned int>(static_cast<signed char>(*key));
    }
    return hash;
}

unsigned int HashOfRecord(void* record) {
    return record != nullptr ? static_cast<const ArgEnt*>(record)->hash : 0;
}

int HaveEqualKeys(void* a, void* b) {
    const auto* first = static_cast<const ArgEnt*>(a);
    const auto* second = static_cast<const ArgEnt*>(b);
    if (first == nullptr || second == nullptr || first->key == nullptr || second->key == nullptr) {
        return -1;
    }
    return first->hash == second->hash && std::strcmp(first->key, second->key) == 0 ? 1 : 0;
}

/// The table, made when it is missing; null without memory. Under the write lock.
QORSysSimpleHashTable* EnsureTable() {
    if (s_table == nullptr) {
        s_table = new (std::nothrow) QORSysSimpleHashTable(FirstBuckets, HashOfRecord, HaveEqualKeys);
    }
    return s_table;
}

/// A record for a look-up, which borrows the key.
class Wanted : public ArgEnt {
public:
    explicit Wanted(const char* name) {
        key = const_cast<char*>(name);
        hasValue = OwnsNothing;
        hash = HashOf(name);
    }
};

/// A record that owns key and value; null without memory.
std::unique_ptr<ArgEnt> MakeRecord(std::unique_ptr<char[]> key, int hasValue, std::unique_ptr<char[]> value) {
    std::unique_ptr<ArgEnt> record(key != nullptr ? new (std::nothrow) ArgEnt : nullptr);
    if (record != nullptr) {
        record->hash = HashOf(key.get());
        record->key = key.release();
        record->hasValue = hasValue;
        record->value = value.release();
    }
    return record;
}

/// Puts a record into the table. False, with the record gone, when its key is there or memory is short.
bool Store(QORSysSimpleHashTable& table, std::unique_ptr<ArgEnt> record) {
    if (record == nullptr || table.Insert(record.get()) != 1) {
        return false;
    }
    static_cast<void>(record.release());
    return true;
}

void StoreFlag(QORSysSimpleHashTable& table, const char* key) {
    Store(table, MakeRecord(DuplicateText(key), 0, nullptr));
}

/// An option with a value; a null value leaves it without text.
void StoreValue(QORSysSimpleHashTable& table, std::unique_ptr<char[]> key, const char* value) {
    std::unique_ptr<char[]> copy = DuplicateText(value);
    if (copy != nullptr || value == nullptr) {
        Store(table, MakeRecord(std::move(key), 1, std::move(copy)));
    }
}

/// How the value of a listed option is found.
enum class ValueRule { None, Next, NextAndWords };

/// A listed option. What it is called without its first byte is its key.
struct Option {
    const char* text;
    std::size_t compared; ///< Bytes that are compared, with the terminator for a whole comparison.
    ValueRule value;
};

constexpr Option Whole(const char* text, ValueRule value) {
    return {text, std::char_traits<char>::length(text) + 1, value};
}

/// Compares the beginning alone, deliberately: "-environment" is "-env", and callers rely on it.
constexpr Option Beginning(const char* text) {
    return {text, std::char_traits<char>::length(text), ValueRule::Next};
}

/// In the order in which they are tried.
constexpr Option ListedOptions[] = {
    Whole("-help", ValueRule::None),
    Whole("-admin", ValueRule::None),
    Whole("-batch", ValueRule::None),
    Whole("/regserver", ValueRule::None),
    Whole("/unregserver", ValueRule::None),
    Whole("-object", ValueRule::Next),
    Whole("-serviceId", ValueRule::Next),
    Whole("-objectType", ValueRule::Next),
    Whole("-file", ValueRule::Next),
    Beginning("-workbench"),
    Whole("-e", ValueRule::NextAndWords),
    Beginning("-env"),
    Beginning("-direnv"),
    Whole("-Url", ValueRule::Next),
    Whole("-Sli", ValueRule::Next),
    Whole("-Cas", ValueRule::Next),
    Whole("-Ctx", ValueRule::Next),
};

constexpr char MaintenanceOption[] = "-maintenance";
constexpr char RenderOption[] = "-render=";
constexpr std::size_t RenderLength = sizeof RenderOption - 1;

/// Null for what the caller left out of its vector, which the vector of `main` never does.
bool EndsWords(const char* word) {
    return word == nullptr || *word == '\\' || *word == '-';
}

/// The words from `first` on, joined by single spaces, up to one that begins with a backslash or a dash. The first is
/// taken whatever it begins with. Null without memory.
std::unique_ptr<char[]> JoinWords(char** first, char** end) {
    char** last = first + 1;
    std::size_t size = std::strlen(*first) + 1;
    for (; last < end && !EndsWords(*last); ++last) {
        size += std::strlen(*last) + 1;
    }
    std::unique_ptr<char[]> joined(new (std::nothrow) char[size]);
    if (joined == nullptr) {
        return nullptr;
    }
    char* out = joined.get();
    for (char** word = first; word < last; ++word) {
        const std::size_t length = std::strlen(*word);
        std::memcpy(out, *word, length);
        out += length;
        *out++ = ' ';
    }
    out[-1] = '\0';
    return joined;
}

/// Takes "-key=value", "--key=value", "-flag" and "--flag".
void StoreGeneral(QORSysSimpleHashTable& table, const char* argument) {
    const char* const key = argument + (argument[1] == '-' ? 2 : 1);
    const char* const equals = std::strchr(key, '=');
    if (equals == nullptr) {
        StoreFlag(table, key);
        return;
    }
    StoreValue(table, DuplicateText(key, static_cast<std::size_t>(equals - key)), equals + 1);
}

/// Takes the argument when it is a listed option. @return The number of arguments taken, 0 for none.
int StoreListed(QORSysSimpleHashTable& table, char** argument, char** end) {
    const bool hasNext = argument + 1 < end;
    for (const Option& option : ListedOptions) {
        if ((option.value != ValueRule::None && !hasNext) ||
            std::strncmp(*argument, option.text, option.compared) != 0) {
            continue;
        }
        const char* const key = option.text + 1;
        if (option.value == ValueRule::None) {
            StoreFlag(table, key);
            return 1;
        }
        if (option.value == ValueRule::NextAndWords && argument[1] != nullptr) {
            if (std::unique_ptr<char[]> words = JoinWords(argument + 1, end)) {
                Store(table, MakeRecord(DuplicateText(key), 1, std::move(words)));
            }
            // The joined words are looked at again, deliberately, and passed over as words.
            return 2;
        }
        StoreValue(table, DuplicateText(key), argument[1]);
        return 2;
    }
    return 0;
}

/// Takes the argument at `i`. @return The index of the next.
int StoreArgument(QORSysSimpleHashTable& table, int argc, char** argv, int i) {
    char* const argument = argv[i];
    if (argument == nullptr) {
        return i + 1;
    }
    if (const int taken = StoreListed(table, argv + i, argv + argc)) {
        return i + taken;
    }
    // Only as the second and last argument; the value is then what stands behind the last, which `main` sees as null.
    if (i == 2 && argc == 3 && std::strcmp(argument, MaintenanceOption) == 0) {
        StoreValue(table, DuplicateText(MaintenanceOption + 1), argv[3]);
        return 4;
    }
    if (std::strncmp(argument, RenderOption, RenderLength) == 0) {
        StoreValue(table, DuplicateText("render"), argument + RenderLength);
    } else if (*argument == '-') {
        StoreGeneral(table, argument);
    }
    return i + 1;
}

/// Hands a value out as a wide string. False without memory, which may leave the string empty.
bool BuildFromValue(QORUnicodeString& string, const char* value) {
    unsigned short shortScratch[ShortValue + 1];
    std::unique_ptr<unsigned short[]> longScratch;
    unsigned short* scratch = shortScratch;
    const std::size_t length = std::strlen(value);
    if (length > INT_MAX) {
        return false;
    }
    if (length > ShortValue) {
        longScratch.reset(new (std::nothrow) unsigned short[length + 1]);
        scratch = longScratch.get();
    }
    if (scratch == nullptr) {
        return false;
    }
    int units = 0;
    QORSysTSCodePage::ConvertUTF8ToUCS2(value, length, scratch, &units);
    string.BuildFromUCChar(scratch, units);
    return units == 0 || !string.IsEmpty();
}

/// The text as UTF-8; null without memory.
std::unique_ptr<char[]> ValueOf(const QORUnicodeString& string) {
    const VEL::internal::Block block = VEL::internal::StringAccess::BlockOf(string);
    const VEL::internal::UTF16Range range = VEL::internal::UTF16Of(block);
    if (VEL::internal::IsMissing(block, range)) {
        return nullptr;
    }
    constexpr std::size_t bytesPerUnit = 4;
    const std::unique_ptr<char[]> scratch(
        new (std::nothrow) char[static_cast<std::size_t>(range.length) * bytesPerUnit + 1]);
    if (scratch == nullptr) {
        return nullptr;
    }
    unsigned long length = 0;
    QORSysTSCodePage::ConvertUCS2ToUTF8(const_cast<unsigned short*>(range.text), range.length, scratch.get(), &length);
    return DuplicateText(scratch.get(), length);
}

/// Removes and destroys the record of a key. Under the write lock.
bool Remove(QORSysSimpleHashTable& table, const char* key) {
    Wanted wanted(key);
    const std::unique_ptr<ArgEnt> removed(static_cast<ArgEnt*>(table.Remove(&wanted)));
    return removed != nullptr;
}

} // namespace

ArgEnt::~ArgEnt() {
    if (hasValue != OwnsNothing) {
        delete[] key;
        delete[] value;
    }
}

int VELSysTSSetArg(int argc, char** argv) {
    const Writing lock;
    QORSysSimpleHashTable* const table = EnsureTable();
    if (table == nullptr) {
        return VEL::StatusOk;
    }
    for (int i = 0; i < table->Size(); ++i) {
        delete static_cast<ArgEnt*>(table->Get(i));
    }
    table->RemoveAll();
    for (int i = 1; argv != nullptr && i < argc;) {
        i = StoreArgument(*table, argc, argv, i);
    }
    return VEL::StatusOk;
}

int VELSysTSGetArg(const char* key, int& hasValue, int& isAdded, QORUnicodeString& value) {
    const Reading lock;
    if (!lock || s_table == nullptr) {
        return VEL::StatusFailure;
    }
    if (key == nullptr) {
        return VEL::StatusNotFound;
    }
    Wanted wanted(key);
    const auto* const record = static_cast<const ArgEnt*>(s_table->Locate(&wanted));
    if (record == nullptr) {
        return VEL::StatusNotFound;
    }
    if (record->value != nullptr && !BuildFromValue(value, record->value)) {
        return VEL::StatusFailure;
    }
    hasValue = record->hasValue;
    isAdded = record->isAdded;
    return VEL::StatusOk;
}

int VELSysTSGetArg(char* key, int& hasValue, int& isAdded, QORUnicodeString& value) {
    return VELSysTSGetArg(const_cast<const char*>(key), hasValue, isAdded, value);
}

int VELSysTSGetArg(const char* key, int& hasValue, int& isAdded, QORSysTSUnicodeString& value) {
    QORUnicodeString text;
    VEL::Copy(text, value);
    const int status = VELSysTSGetArg(key, hasValue, isAdded, text);
    VEL::Move(value, text);
    return status;
}

int VELSysTSGetArg(char* key, int& hasValue, int& isAdded, QORSysTSUnicodeString& value) {
    return VELSysTSGetArg(const_cast<const char*>(key), hasValue, isAdded, value);
}

int VELSysTSGetArg(const char* key, int& hasValue, QORUnicodeString& value) {
    int isAdded = 0;
    return VELSysTSGetArg(key, hasValue, isAdded, value);
}

int VELSysTSGetArg(char* key, int& hasValue, QORUnicodeString& value) {
    return VELSysTSGetArg(const_cast<const char*>(key), hasValue, value);
}

int VELSysTSGetArg(const char* key, int& hasValue, QORSysTSUnicodeString& value) {
    int isAdded = 0;
    return VELSysTSGetArg(key, hasValue, isAdded, value);
}

int VELSysTSGetArg(char* key, int& hasValue, QORSysTSUnicodeString& value) {
    return VELSysTSGetArg(const_cast<const char*>(key), hasValue, value);
}

int VELSysTSAddArg(const char* key, const QORUnicodeString* value) {
    // Without the lock, since the string may have to make the environment's converter first, and the decision behind
    // that one reads the command line into this table.
    std::unique_ptr<char[]> text = value != nullptr ? ValueOf(*value) : nullptr;
    const Writing lock;
    QORSysSimpleHashTable* const table = EnsureTable();
    if (table == nullptr || key == nullptr) {
        return VEL::StatusFailure;
    }
    Remove(*table, key);
    if (value != nullptr && text == nullptr) {
        return VEL::StatusFailure;
    }
    std::unique_ptr<ArgEnt> record = MakeRecord(DuplicateText(key), value != nullptr ? 1 : 0, std::move(text));
    if (record != nullptr) {
        record->isAdded = 1;
    }
    return Store(*table, std::move(record)) ? VEL::StatusOk : VEL::StatusFailure;
}

int VELSysTSAddArg(char* key, const QORUnicodeString* value) {
    return VELSysTSAddArg(const_cast<const char*>(key), value);
}

int VELSysTSAddArg(const char* key, QORSysTSUnicodeString* value) {
    if (value == nullptr) {
        return VELSysTSAddArg(key, nullptr);
    }
    QORUnicodeString text;
    VEL::Copy(text, *value);
    return VELSysTSAddArg(key, &text);
}

int VELSysTSAddArg(char* key, QORSysTSUnicodeString* value) {
    return VELSysTSAddArg(const_cast<const char*>(key), value);
}

int VELSysTSResetArg(const char* key) {
    const Writing lock;
    QORSysSimpleHashTable* const table = EnsureTable();
    return table != nullptr && key != nullptr && Remove(*table, key) ? VEL::StatusOk : VEL::StatusFailure;
}

int VELSysTSResetArg(char* key) {
    return VELSysTSResetArg(const_cast<const char*>(key));
}
