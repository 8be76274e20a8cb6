// The converter of the environment's code page.

#include "Assertion.h"
#include "LanguageTable.h"
#include "StringDebugFlags.h"
#include "VELSysCodePage.h"
#include "VELSysNLSCore.h"
#include "VELSysStatus.h"
#include "VELSysTSDataQueue.h"

#include <atomic>
#include <cstddef>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

namespace {

/// A converter of the environment; one that is replaced may have to be kept without memory for that.
class EnvironmentCodePage final : public VELSysCodePage {
public:
    using VELSysCodePage::VELSysCodePage;
    mutable const EnvironmentCodePage* next = nullptr;
};

/// Guards what keeps the replaced converters. Its destructor does nothing, so that it works to the very end.
constinit std::mutex s_retiring;
constinit bool s_queueIsGone = false;
/// Converters that the queue could not take, kept for good.
constinit const EnvironmentCodePage* s_unqueued = nullptr;

/// The replaced converters, up to the end of the process.
class __QueueCodePage final : public VELSysTSDataQueue {
public:
    __QueueCodePage() { Init(0, 0); }
    ~__QueueCodePage() override {
        {
            const std::lock_guard lock(s_retiring);
            s_queueIsGone = true;
        }
        for (void* converter = nullptr; PopFirst(&converter, -1) == 0;) {
            delete static_cast<const EnvironmentCodePage*>(converter);
        }
    }
};

__QueueCodePage& Queue() {
    static __QueueCodePage queue;
    return queue;
}

/// Keeps a converter that readers on other threads may still be inside.
void Retire(const VELSysCodePage* converter) {
    // Only the environment's own come here.
    const auto* const replaced = static_cast<const EnvironmentCodePage*>(converter);
    const std::lock_guard lock(s_retiring);
    if (s_queueIsGone || Queue().PushLast(const_cast<EnvironmentCodePage*>(replaced), -1) != 0) {
        replaced->next = std::exchange(s_unqueued, replaced);
    }
}

/// Keeps a converter for requests from within a decision, unless one of the same code page is there, and answers that.
const VELSysCodePage& KeepForDecision(std::unique_ptr<const VELSysCodePage> made) {
    // One decision is made at a time.
    static constinit const VELSysCodePage* s_kept = nullptr;
    if (s_kept == nullptr || s_kept->GetName() == nullptr || made->GetName() == nullptr ||
        std::strcmp(s_kept->GetName(), made->GetName()) != 0) {
        if (s_kept != nullptr) {
            Retire(s_kept);
        }
        s_kept = made.release();
    }
    return *s_kept;
}

/// Null when there is no memory.
std::unique_ptr<const VELSysCodePage> MakeConverter(const VELSysNLSEnv& env) {
    return std::unique_ptr<const VELSysCodePage>(new (std::nothrow) EnvironmentCodePage(
        env.codePage, static_cast<int>(VELGetMultiByteCharMaxSize()), env.langString));
}

/// What stands in while there is no memory for a converter. It outlives whoever asks for it.
const VELSysCodePage& StandIn() {
    alignas(VELSysCodePage) static constinit std::byte memory[sizeof(VELSysCodePage)]{};
    static const VELSysCodePage* const standIn = new (memory) VELSysCodePage(nullptr);
    return *standIn;
}

/// Has the converter follow the language. @return Whether it does.
///
/// Nobody waits here for another thread that registers: the language decision converts text while it holds the lock
/// that registering takes. Registering twice does no harm.
bool FollowLanguage() {
    enum Answer : int { Unknown, Follows, Refused };
    static constinit std::atomic<int> s_answer{Unknown};
    // Relaxed: the answer comes with nothing else.
    int answer = s_answer.load(std::memory_order_relaxed);
    if (answer == Unknown) {
        answer = RegisterNLSChangeHook(VELSysCodePage::OnChangeNLSCore) < VEL::StatusOk ? Refused : Follows;
        s_answer.store(answer, std::memory_order_relaxed);
    }
    return answer == Follows;
}

/// Whether this thread is just making the language decision, or reading what it is made from.
bool IsDeciding() {
    constexpr int CalledFromWithin = 2;
    return VEL::internal::IsReadingLanguageTable() || InitNLSCore(nullptr, false) == CalledFromWithin;
}

} // namespace

constinit std::atomic<const VELSysCodePage*> VELSysCodePage::_sCPConverter{nullptr};

const VELSysCodePage& VELSysCodePage::GetEnvConverter() {
    // Acquire: with the pointer comes the object behind it.
    if (const VELSysCodePage* converter = _sCPConverter.load(std::memory_order_acquire)) {
        return *converter;
    }
    const bool follows = FollowLanguage();
    VELSysNLSEnv env{};
    GetEnvNLSData(&env);
    if (env.codePage[0] == '\0') {
        VEL::internal::FailAssertion("l_NLSEntry.codePage && strcmp(l_NLSEntry.codePage, \"\")", __FILE__, __LINE__,
                                     __PRETTY_FUNCTION__);
    }
    auto made = MakeConverter(env);
    if (made == nullptr) {
        return StandIn();
    }
    if (!follows && IsDeciding()) {
        // The record is half settled, and nothing would replace the converter when it is whole.
        return KeepForDecision(std::move(made));
    }
    const VELSysCodePage* published = nullptr;
    if (!_sCPConverter.compare_exchange_strong(published, made.get(), std::memory_order_acq_rel,
                                               std::memory_order_acquire)) {
        return *published;
    }
    static_cast<void>(made.release());
    return _TellDebugger();
}

void VELSysCodePage::OnChangeNLSCore(const VELSysNLSEnv& env) {
    auto made = MakeConverter(env);
    if (made == nullptr) {
        return;
    }
    VEL::internal::TellDebuggerOfCodePage(made->IsUTF8());
    const VELSysCodePage* const replaced = _sCPConverter.exchange(made.release(), std::memory_order_acq_rel);
    if (replaced != nullptr) {
        Retire(replaced);
        // The maker of the first converter may have had its word in between.
        _TellDebugger();
    }
}

/// Tells of the converter in force, again when that was replaced meanwhile. @return That converter.
const VELSysCodePage& VELSysCodePage::_TellDebugger() {
    const VELSysCodePage* told = nullptr;
    do {
        told = _sCPConverter.load(std::memory_order_acquire);
        VEL::internal::TellDebuggerOfCodePage(told->IsUTF8());
    } while (told != _sCPConverter.load(std::memory_order_acquire));
    return *told;
}
