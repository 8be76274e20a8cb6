// The command grammar of a trace configuration.

#include "CommandOption.h"
#include "TraceConfiguration.h"
#include "VELSysEnviron.h"
#include "VELSysTraceManager.h"

#include <new>
#include <string>

namespace {

using VEL::internal::ReadTraceNumber;
using VEL::internal::TraceSink;

/// The arguments of an item, behind one that stands for a program's name.
class Arguments {
public:
    explicit Arguments(const char* text) {
        try {
            const std::string line = std::string("_ ") + text;
            VELSysEnvironBuildArgumentFromCommandLine(line.c_str(), &_slots, &_count);
        } catch (const std::bad_alloc&) {
            // There are none.
        }
    }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;
    ~Arguments() { VELSysEnvironDeleteArgumentArrayA(&_slots, _count); }

    char** Slots() const { return _slots; }
    char** End() const { return _slots + _count; }
    int Count() const { return _count; }

private:
    char** _slots = nullptr;
    int _count = 0;
};

struct LongOption {
    char** firstValue = nullptr;
    int counter = 0;

    /// How many values it has; the option itself is counted, too.
    int Values() const { return counter - 1; }
    const char* Value() const { return firstValue != nullptr ? *firstValue : nullptr; }
};

/// What an item says.
struct Command {
    LongOption names;
    LongOption file;
    LongOption rotateCount;
    LongOption rotateSize;
    int isLocalTime = 0;
    int isStandardOutput = 0;
    int isStandardError = 0;
    int isInactive = 0;

    int Parse(const Arguments& arguments);
    const char* Destination() const;
    void AddNames(const Arguments& arguments, const char* destination, const TraceSink& sink) const;
    void AddOptions(const char* destination, const TraceSink& sink) const;
};

int Command::Parse(const Arguments& arguments) {
    VELSysEnvironCommandLongOptionStructA longOptions[] = {
        {"name", VELSysEnvironCommandOptionValues, &names.firstValue, &names.counter},
        {"file", VELSysEnvironCommandOptionValues, &file.firstValue, &file.counter},
        {"local-time", VELSysEnvironCommandOptionFlag, nullptr, &isLocalTime},
        {"rotate-file-count", VELSysEnvironCommandOptionValues, &rotateCount.firstValue, &rotateCount.counter},
        {"rotate-file-size", VELSysEnvironCommandOptionValues, &rotateSize.firstValue, &rotateSize.counter},
        {nullptr, 0, nullptr, nullptr}};
    VELSysEnvironCommandShortOptionStruct shortOptions[] = {
        {'o', &isStandardOutput}, {'e', &isStandardError}, {'n', &isInactive}, {0, nullptr}};
    int wrongArgument = 0;
    return VELSysEnvironParseCommandOptionA(arguments.Count(), arguments.Slots(), longOptions, shortOptions,
                                            &wrongArgument);
}

/// Null for none.
const char* Command::Destination() const {
    if (isStandardOutput != 0) {
        return "STDOUT";
    }
    if (isStandardError != 0) {
        return "STDERR";
    }
    return file.Values() == 1 ? file.Value() : nullptr;
}

void Command::AddNames(const Arguments& arguments, const char* destination, const TraceSink& sink) const {
    int left = names.Values();
    for (char** slot = names.firstValue; left > 0 && slot != arguments.End(); ++slot) {
        // Short options may stand between the names.
        if (!VEL::internal::IsCommandOption(*slot)) {
            sink.addTrace(VELSysTraceKindStream, destination, *slot, sink.data);
            --left;
        }
    }
}

void Command::AddOptions(const char* destination, const TraceSink& sink) const {
    const auto add = [&](int option, int value) { sink.addOption(destination, option, value, sink.data); };
    const auto addNumber = [&](int option, const LongOption& number) {
        const int value = number.Value() != nullptr ? ReadTraceNumber(number.Value()) : 0;
        if (value > 0) {
            add(option, value);
        }
    };
    if (isLocalTime != 0) {
        add(VELSysTraceOptionLocalTime, 1);
    }
    addNumber(VELSysTraceOptionRotateCount, rotateCount);
    addNumber(VELSysTraceOptionRotateSize, rotateSize);
    if (isInactive != 0) {
        add(VELSysTraceOptionActive, 0);
    }
}

} // namespace

int VEL::internal::ApplyTraceCommand(const char* text, const TraceSink& sink) {
    const Arguments arguments(text);
    Command command;
    if (command.Parse(arguments) != 0) {
        return -1;
    }
    const char* const destination = command.Destination();
    if (destination == nullptr || sink.addTrace(VELSysTraceKindStream, destination, nullptr, sink.data) != 0) {
        return -1;
    }
    // What becomes of these is not looked at, deliberately: the destination stands.
    command.AddNames(arguments, destination, sink);
    command.AddOptions(destination, sink);
    return 0;
}
