#include "StackSamples.h"

#include <cstdint>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>
#include <new>
#include <sys/mman.h>

// The unwinder's, which knows no functions but those of loaded objects by itself.
extern "C" void __register_frame(void* frames);
extern "C" void __deregister_frame(void* frames);

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

    __attribute__((noinline)) void mainLoop(void (*action)()) {
    action();
    asm volatile("");
}

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

void* InMainLoop() {
    return reinterpret_cast<char*>(mainLoop) + 1;
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

namespace {

constexpr std::size_t MadeSize = 4096;
/// Behind the code, where the unwinder finds how to leave it.
constexpr std::size_t FramesOffset = 64;

// A frame, a call of what the first argument points to, and back.
constexpr unsigned char MadeCode[] = {0x55, 0x48, 0x89, 0xE5, 0xFF, 0xD7, 0x5D, 0xC3};

#pragma pack(push, 1)
/// Call frame information in the form of DWARF: what all functions have in common, one function, and the end.
struct Frames {
    std::uint32_t commonLength = 20;
    std::uint32_t commonId = 0;
    // Version 1, no augmentation, code in steps of 1, data in steps of -8, the return address is register 16. On entry
    // the frame begins 8 bytes behind register 7, the stack pointer, and the return address stands in front of that.
    unsigned char common[16] = {1, 0, 1, 0x78, 16, 0x0C, 7, 8, 0x80 | 16, 1};
    std::uint32_t length = 36;
    std::uint32_t toCommon = 28;
    const void* begin = nullptr;
    std::uint64_t size = sizeof MadeCode;
    // Behind the first byte the frame is 16 bytes and holds register 6, the frame pointer; 3 bytes further that one
    // gives the frame.
    unsigned char rules[16] = {0x40 | 1, 0x0E, 16, 0x80 | 6, 2, 0x40 | 3, 0x0D, 6};
    std::uint32_t end = 0;
};
#pragma pack(pop)

} // namespace

MadeFunction::MadeFunction() {
    void* const memory = mmap(nullptr, MadeSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::bad_alloc();
    }
    _memory = static_cast<unsigned char*>(memory);
    std::memcpy(_memory, MadeCode, sizeof MadeCode);
    Frames frames;
    frames.begin = _memory;
    std::memcpy(_memory + FramesOffset, &frames, sizeof frames);
    mprotect(_memory, MadeSize, PROT_READ | PROT_EXEC);
    __register_frame(_memory + FramesOffset);
}

MadeFunction::~MadeFunction() {
    __deregister_frame(_memory + FramesOffset);
    munmap(_memory, MadeSize);
}

void MadeFunction::Call(void (*action)()) const {
    reinterpret_cast<void (*)(void (*)())>(_memory)(action);
}

bool MadeFunction::Holds(const void* address) const {
    return address >= _memory && address < _memory + sizeof MadeCode;
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
