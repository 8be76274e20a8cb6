// Names of directories of trace files: an input is the process, four bytes, and the name behind it.

#include "VELSysTraceManager.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

/// The plain reading: the text between the first 'P' and the next '_' as a number.
int Plain(const std::string& name, int process) {
    const std::size_t letter = name.find('P');
    const std::size_t end = letter != std::string::npos ? name.find('_', letter) : std::string::npos;
    if (end == std::string::npos) {
        return -1;
    }
    const std::string number = name.substr(letter + 1, end - letter - 1);
    if (number.empty() || number.size() > 63) {
        return -1;
    }
    errno = 0;
    const long value = std::strtol(number.c_str(), nullptr, 10);
    return errno == 0 && value == process ? 0 : -1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::int32_t process = 0;
    if (size < sizeof process) {
        return 0;
    }
    std::memcpy(&process, data, sizeof process);
    // Ends at its first zero byte.
    const std::string name =
        std::string(reinterpret_cast<const char*>(data) + sizeof process, size - sizeof process).c_str();
    if (VELSysTraceFilterNameByPid(name.c_str(), process) != Plain(name, process)) {
        std::abort();
    }
    return 0;
}
