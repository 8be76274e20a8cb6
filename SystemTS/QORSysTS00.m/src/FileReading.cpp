#include "FileReading.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

VEL::internal::File VEL::internal::OpenForReading(const char* name) {
    const int descriptor = open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return nullptr;
    }
    struct stat64 status;
    if (fstat64(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor);
        return File(std::fopen("/dev/null", "re"));
    }
    std::FILE* const file = fdopen(descriptor, "r");
    if (file == nullptr) {
        close(descriptor);
    }
    return File(file);
}
