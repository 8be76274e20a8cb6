/// @file
/// What a configuration of traces says.
#pragma once

namespace VEL::internal {

/// Takes a trace name for a destination, which it makes when it is missing; `name` may be null. @return 0, or -1.
using TraceAddTrace = int (*)(int kind, const char* destination, const char* name, void* data);
/// Takes an option of a destination; see VELSysTraceOption. @return 0, or -1.
using TraceAddOption = int (*)(const char* destination, int option, int value, void* data);

/// Where a configuration goes.
struct TraceSink {
    TraceAddTrace addTrace;
    TraceAddOption addOption;
    void* data;
};

/// Takes one item in the line grammar. @return 0; -1 when it names no destination or a part of it was refused; what
/// `addTrace` answers when that refuses the destination, which ends the item.
int ApplyTraceLine(const char* text, const TraceSink& sink);
/// Takes one item in the command grammar. @return 0; -1 when it can't be parsed, names no destination or that was
/// refused.
int ApplyTraceCommand(const char* text, const TraceSink& sink);
/// Takes the items of the environment variable "VELSysTrace". @return 0; -1 when it isn't set; what ApplyTraceLine()
/// answers for the first item that both grammars refuse, which ends it.
int ApplyTraceVariable(const TraceSink& sink);
/// Takes the option files. @return 0; -1 when a line was refused or a file can't be read.
int ApplyTraceOptionFiles(const TraceSink& sink);

/// A decimal number; one that an `int` can't hold is the nearest that it can, and what is no number is 0.
int ReadTraceNumber(const char* text);

} // namespace VEL::internal
