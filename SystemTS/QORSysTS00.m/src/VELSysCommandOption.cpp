// The option parser.

#include "VELSysEnviron.h"

#include "CommandOption.h"

#include <cstddef>
#include <cstring>

using LongOption = VELSysEnvironCommandLongOptionStructA;
using ShortOption = VELSysEnvironCommandShortOptionStruct;

static_assert(sizeof(ShortOption) == 16 && offsetof(ShortOption, counter) == 8);
static_assert(sizeof(LongOption) == 32 && offsetof(LongOption, kind) == 8 && offsetof(LongOption, firstValue) == 16 &&
              offsetof(LongOption, counter) == 24);

namespace {

/// Names that differ mostly differ in this byte. It spares tables of many long options most comparisons.
unsigned char MarkOf(const char* name) {
    const std::size_t length = std::strlen(name);
    const char last = length > 0 ? name[length - 1] : '\0';
    const char beforeLast = length > 1 ? name[length - 2] : '\0';
    return static_cast<unsigned char>(length + static_cast<unsigned char>(last) * 7U +
                                      static_cast<unsigned char>(beforeLast) * 37U);
}

class OptionParser {
public:
    OptionParser(LongOption* longOptions, ShortOption* shortOptions)
        : _longOptions(longOptions), _shortOptions(shortOptions) {}

    /// Sets counters to zero and forgets first values.
    void Reset() {
        // Deliberately up to the first entry without a counter, which need not be the last.
        for (ShortOption* option = _shortOptions; option != nullptr && option->counter != nullptr; ++option) {
            *option->counter = 0;
            if (option->character == 0) {
                break;
            }
        }
        for (LongOption* option = _longOptions; option != nullptr && option->name != nullptr; ++option) {
            if (option->counter != nullptr) {
                *option->counter = 0;
            }
            if (option->firstValue != nullptr) {
                *option->firstValue = nullptr;
            }
            if (_marked < MarkCount) {
                _marks[_marked++] = MarkOf(option->name);
            }
        }
    }

    /// Takes one argument. @return False when it is wrong.
    bool Take(char** argument) {
        if (!VEL::internal::IsCommandOption(*argument)) {
            return TakeValue(argument);
        }
        if (_current != nullptr && _current->kind == VELSysEnvironCommandOptionValues && *_current->counter == 1) {
            return false;
        }
        return (*argument)[1] == '-' ? TakeLong(*argument + 2) : TakeShort(*argument + 1);
    }

private:
    /// Counts an option that may be given once.
    static bool CountOnce(int& counter) {
        const int before = counter;
        counter = static_cast<int>(static_cast<unsigned int>(before) + 1);
        return before == 0;
    }

    bool TakeValue(char** argument) {
        if (_current == nullptr) {
            return false;
        }
        if (_current->firstValue != nullptr && *_current->firstValue == nullptr) {
            *_current->firstValue = argument;
        }
        ++*_current->counter;
        return true;
    }

    bool TakeLong(const char* name) {
        _current = nullptr;
        if (_longOptions == nullptr) {
            return true;
        }
        const unsigned char mark = MarkOf(name);
        for (std::size_t i = 0; _longOptions[i].name != nullptr; ++i) {
            LongOption* const option = &_longOptions[i];
            if (option->counter == nullptr || (i < _marked && _marks[i] != mark) ||
                std::strcmp(option->name, name) != 0) {
                continue;
            }
            if (option->kind != VELSysEnvironCommandOptionFlag) {
                _current = option;
            }
            return CountOnce(*option->counter);
        }
        return false;
    }

    /// Short options leave the current long option as it is, so values behind them still belong to it.
    bool TakeShort(const char* characters) {
        for (; *characters != '\0' && _shortOptions != nullptr; ++characters) {
            ShortOption* option = _shortOptions;
            while (option->character != 0 && (option->counter == nullptr || option->character != *characters)) {
                ++option;
            }
            if (option->character == 0 || !CountOnce(*option->counter)) {
                return false;
            }
        }
        return true;
    }

    static constexpr std::size_t MarkCount = 256;

    LongOption* const _longOptions;
    ShortOption* const _shortOptions;
    /// The long option to which values belong.
    LongOption* _current = nullptr;
    /// Those of the first names of the long table.
    unsigned char _marks[MarkCount] = {};
    std::size_t _marked = 0;
};

} // namespace

int VELSysEnvironParseCommandOptionA(int argc, char** argv, LongOption* longOptions, ShortOption* shortOptions,
                                     int* errorIndex) {
    if (argc < 1 || argv == nullptr || errorIndex == nullptr) {
        return -1;
    }
    OptionParser parser(longOptions, shortOptions);
    parser.Reset();
    *errorIndex = 0;
    for (int i = 1; i < argc; ++i) {
        if (argv[i] != nullptr && !parser.Take(argv + i)) {
            *errorIndex = i;
            return -1;
        }
    }
    return 0;
}
