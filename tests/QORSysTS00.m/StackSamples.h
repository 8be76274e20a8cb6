/// @file
/// Stacks made by hand, for tests of what is captured from them: functions with known names, frame records and
/// contexts.
#pragma once

#include <cstddef>
#include <string>
#include <ucontext.h>
#include <vector>

// Exported, so that their names are known.
extern "C" {
void SampleFunction0();
void SampleFunction1();
void SampleFunction2();
void SampleFunction3();
void SampleFunction4();
/// Its name is longer than what a trace has room for.
void SampleFunctionWithANameThatIsLongerThanTheSixtyThreeBytesThatAnEntryOfATraceHolds();
/// Its name begins as that of `main` does. Calls `action`.
void mainLoop(void (*action)());
}

namespace StackSamples {

/// What a function's prologue leaves on the stack.
struct Frame {
    const void* next;
    void* address;
};

/// An address inside SampleFunction<number>.
void* InSample(int number);
/// An address inside the sample with the long name.
void* InTheLongSample();
/// An address inside `main`.
void* InMain();
/// An address inside mainLoop().
void* InMainLoop();
/// An address in the test's executable that belongs to no function.
void* WithoutSymbol();
/// An address that belongs to no loaded object.
void* Unknown();

/// A context that stands at `address` with the frame pointer `frame` and the stack pointer `top`, which null makes
/// point to a value that is no address.
ucontext_t ContextAt(void* address, const void* frame, const void* top = nullptr);

/// The name that `dladdr` has for an address, or an empty text.
std::string NameOf(void* address);

/// The frames that `backtrace` shows before its caller: none, unless a sanitizer stands in between.
std::size_t FramesOfBacktraceItself();

/// A function that no loaded object holds, though stacks can be walked through it: the one that programs make for
/// themselves while they run.
class MadeFunction {
public:
    MadeFunction();
    MadeFunction(const MadeFunction&) = delete;
    MadeFunction& operator=(const MadeFunction&) = delete;
    ~MadeFunction();
    /// Calls `action` from within the function.
    void Call(void (*action)()) const;
    bool Holds(const void* address) const;

private:
    unsigned char* _memory;
};

/// A stack of sample functions 0 to 4, which is followed by nothing.
class FiveSamples {
public:
    FiveSamples();
    FiveSamples(const FiveSamples&) = delete;
    FiveSamples& operator=(const FiveSamples&) = delete;
    void* Context() { return &_context; }
    std::vector<void*> Addresses() const;

private:
    Frame _frames[5];
    ucontext_t _context;
};

} // namespace StackSamples
