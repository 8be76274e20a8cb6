#include "StackSamples.h"

#include <dlfcn.h>
#include <execinfo.h>

// Some length, so that there is an inside.
#define SAMPLE_BODY                                                                                                    \
    { asm volatile("nop\n nop\n nop\n nop"); }

extern "C" {
__attribute__((noinline)) void SampleFunction0() SAMPLE_BODY
    __attribute__((noinline)) void SampleFunction1() SAMPLE_BODY
    __attribute__((noinline)) void SampleFunction2() SAMPLE_BODY
    __attribute__((noinline)) void SampleFunction3() SAMPLE_BODY
    __attribute__((noinline)) void SampleFunction4() SAMPLE_BODY
    __attribute__((noinline)) void SampleFunctionWithANameThatIsLongerThanTheSixtyThreeBytesThatAnEntryOfATraceHolds()
        SAMPLE_BODY

    __attribute__((noinline)) std::size_t CallsBacktraceItself() {
    void* addresses[8];
    const int count = backtrace(addresses, 8);
    std::size_t position = 0;
    while (position < static_cast<std::size_t>(count) &&
           StackSamples::NameOf(addresses[position]) != "CallsBacktraceItself") {
        ++position;
    }
    return position;
}
}

namespace StackSamples {

namespace {

void* Inside(void (*function)()) {
    return reinterpret_cast<char*>(function) + 1;
}

} // namespace

void* InSample(int number) {
    void (*const functions[])() = {SampleFunction0, SampleFunction1, SampleFunction2, SampleFunction3, SampleFunction4};
    return Inside(functions[number]);
}

void* InTheLongSample() {
    return Inside(SampleFunctionWithANameThatIsLongerThanTheSixtyThreeBytesThatAnEntryOfATraceHolds);
}

void* InMain() {
    return static_cast<char*>(dlsym(RTLD_DEFAULT, "main")) + 1;
}

void* WithoutSymbol() {
    Dl_info info;
    dladdr(InSample(0), &info);
    return info.dli_fbase;
}

void* Unknown() {
    return reinterpret_cast<void*>(0x1000);
}

ucontext_t ContextAt(void* address, const void* frame, const void* top) {
    static const void* const s_noAddress = nullptr;
    ucontext_t context = {};
    context.uc_mcontext.gregs[REG_RIP] = reinterpret_cast<greg_t>(address);
    context.uc_mcontext.gregs[REG_RBP] = reinterpret_cast<greg_t>(frame);
    context.uc_mcontext.gregs[REG_RSP] = reinterpret_cast<greg_t>(top != nullptr ? top : &s_noAddress);
    return context;
}

std::string NameOf(void* address) {
    Dl_info info;
    return dladdr(address, &info) != 0 && info.dli_sname != nullptr ? info.dli_sname : "";
}

std::size_t FramesOfBacktraceItself() {
    return CallsBacktraceItself();
}

FiveSamples::FiveSamples()
    : _frames{{_frames + 1, InSample(1)},
              {_frames + 2, InSample(2)},
              {_frames + 3, InSample(3)},
              {_frames + 4, InSample(4)},
              {nullptr, nullptr}},
      _context(ContextAt(InSample(0), _frames)) {}

std::vector<void*> FiveSamples::Addresses() const {
    return {InSample(0), InSample(1), InSample(2), InSample(3), InSample(4)};
}

} // namespace StackSamples
