#include "NLSTrace.h"

#include "EnvironmentLookup.h"

#include <atomic>
#include <cstdarg>
#include <unistd.h>

namespace {

enum class Tracing { Undecided, Off, On };

constinit std::atomic<Tracing> s_tracing{Tracing::Undecided};
/// The lookup of the variable may come back here on its way; what it has to say is lost.
constinit thread_local bool t_isDeciding = false;

bool Decide() {
    if (t_isDeciding) {
        return false;
    }
    t_isDeciding = true;
    const Tracing found = VELGetEnvInt("VELSysNLSCoreTrace", nullptr) != 0 ? Tracing::On : Tracing::Off;
    t_isDeciding = false;
    // Of several threads the first one's answer stands.
    Tracing decided = Tracing::Undecided;
    return (s_tracing.compare_exchange_strong(decided, found) ? found : decided) == Tracing::On;
}

bool IsOn() {
    // Nothing else hangs on the answer.
    const Tracing tracing = s_tracing.load(std::memory_order_relaxed);
    return tracing == Tracing::Undecided ? Decide() : tracing == Tracing::On;
}

} // namespace

void VEL::internal::NLSTrace(FILE* stream, const char* format, ...) {
    if (!IsOn()) {
        return;
    }
    // Lines of several threads stay whole.
    flockfile(stream);
    std::fprintf(stream, "[PID:%u]", static_cast<unsigned int>(getpid()));
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stream, format, arguments);
    va_end(arguments);
    std::fputc('\n', stream);
    std::fflush(stream);
    funlockfile(stream);
}
