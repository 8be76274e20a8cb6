#include "FreshName.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <sys/random.h>
#include <sys/stat.h>

namespace VEL::internal {
namespace {

constexpr char Characters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
constexpr unsigned int CharacterCount = sizeof Characters - 1;
constexpr int Attempts = 10000;

std::uint64_t RandomNumber() {
    std::uint64_t number = 0;
    if (getrandom(&number, sizeof number, GRND_NONBLOCK) != sizeof number) {
        number = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    }
    return number;
}

} // namespace

bool FillInFreshName(char* name, std::size_t n) {
    for (int i = 0; i < Attempts; ++i) {
        std::uint64_t number = RandomNumber();
        for (std::size_t at = n - FreshNameLength; at < n; ++at) {
            name[at] = Characters[number % CharacterCount];
            number /= CharacterCount;
        }
        struct stat64 status = {};
        if (lstat64(name, &status) != 0) {
            return errno == ENOENT;
        }
    }
    errno = EEXIST;
    return false;
}

} // namespace VEL::internal
