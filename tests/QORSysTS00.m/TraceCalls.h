/// @file
/// What a configuration of traces tells the one that it goes to.
#pragma once

#include "TraceConfiguration.h"

#include <map>
#include <string>
#include <vector>

namespace TraceCalls {

using Calls = std::vector<std::string>;

/// Keeps the calls, each as one text: "0 STDOUT" for a destination of kind 0, "0 STDOUT A" for a trace, "STDOUT 12=1"
/// for an option.
struct Recorder {
    Calls calls;
    /// What calls are answered, where it isn't 0.
    std::map<std::string, int> answers;

    static int AddTrace(int kind, const char* destination, const char* name, void* data) {
        const std::string call = std::to_string(kind) + " " + destination;
        return static_cast<Recorder*>(data)->Answer(name != nullptr ? call + " " + name : call);
    }
    static int AddOption(const char* destination, int option, int value, void* data) {
        return static_cast<Recorder*>(data)->Answer(std::string(destination) + " " + std::to_string(option) + "=" +
                                                    std::to_string(value));
    }
    VEL::internal::TraceSink Sink() { return {AddTrace, AddOption, this}; }

private:
    int Answer(const std::string& call) {
        calls.push_back(call);
        const auto answer = answers.find(call);
        return answer != answers.end() ? answer->second : 0;
    }
};

/// An item and what becomes of it.
struct Item {
    std::string text;
    int result;
    Calls calls;
};

} // namespace TraceCalls
