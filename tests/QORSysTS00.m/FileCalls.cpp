#include "FileCalls.h"

#include "OptionalLibraries.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/types.h>

namespace FileCalls {

static Changes* s_changes = nullptr;

Changes::Changes() {
    s_changes = this;
}

Changes::~Changes() {
    s_changes = nullptr;
}

} // namespace FileCalls

using FileCalls::s_changes;

extern "C" {

DIR* __real_opendir(const char* name);
dirent64* __real_readdir64(DIR* directory);
int __real_closedir(DIR* directory);
int __real_fnmatch(const char* pattern, const char* name, int flags);
size_t __real_fread(void* target, size_t size, size_t count, FILE* file);
ssize_t __real_sendfile(int target, int source, off_t* offset, size_t count);
int __real_fclose(FILE* file);
int __real_setxattr(const char* path, const char* name, const void* value, size_t size, int flags);
int __real_removexattr(const char* path, const char* name);
ssize_t __real_listxattr(const char* path, char* list, size_t size);
ssize_t __real_getxattr(const char* path, const char* name, void* value, size_t size);
ssize_t __real_getrandom(void* target, size_t size, unsigned int flags);
void __real__ZdaPv(void* block);
int __real_getpwuid_r(uid_t user, passwd* entry, char* buffer, size_t size, passwd** result);

DIR* __wrap_opendir(const char* name) {
    if (s_changes == nullptr || s_changes->opendirError == 0) {
        return __real_opendir(name);
    }
    errno = s_changes->opendirError;
    return nullptr;
}

dirent64* __wrap_readdir64(DIR* directory) {
    if (s_changes != nullptr && s_changes->readdirCallsBeforeError >= 0 && s_changes->readdirCallsBeforeError-- == 0) {
        errno = s_changes->readdirError;
        return nullptr;
    }
    return __real_readdir64(directory);
}

int __wrap_closedir(DIR* directory) {
    const int result = __real_closedir(directory);
    if (s_changes == nullptr || s_changes->closedirError == 0) {
        return result;
    }
    errno = s_changes->closedirError;
    return -1;
}

int __wrap_fnmatch(const char* pattern, const char* name, int flags) {
    if (s_changes == nullptr) {
        return __real_fnmatch(pattern, name, flags);
    }
    ++s_changes->fnmatchCalls;
    const int result = s_changes->fnmatchResult != -1 ? s_changes->fnmatchResult : __real_fnmatch(pattern, name, flags);
    if (s_changes->fnmatchErrno != 0) {
        errno = s_changes->fnmatchErrno;
    }
    return result;
}

ssize_t __wrap_sendfile(int target, int source, off_t* offset, size_t count) {
    if (s_changes == nullptr) {
        return __real_sendfile(target, source, offset, count);
    }
    if (!s_changes->canMove) {
        errno = EINVAL;
        return -1;
    }
    if (s_changes->beforeRead) {
        s_changes->beforeRead();
    }
    const size_t most = s_changes->mostMoved != 0 ? s_changes->mostMoved : count;
    return __real_sendfile(target, source, offset, std::min(count, most));
}

size_t __wrap_fread(void* target, size_t size, size_t count, FILE* file) {
    if (s_changes != nullptr && s_changes->beforeRead) {
        s_changes->beforeRead();
    }
    return __real_fread(target, size, count, file);
}

int __wrap_fclose(FILE* file) {
    const bool isWritten = (fcntl(fileno(file), F_GETFL) & O_ACCMODE) == O_WRONLY;
    const int result = __real_fclose(file);
    if (s_changes == nullptr) {
        return result;
    }
    const int error = isWritten ? s_changes->fcloseError : s_changes->fcloseErrorOfReader;
    if (error == 0) {
        return result;
    }
    errno = error;
    return EOF;
}

int __wrap_setxattr(const char* path, const char* name, const void* value, size_t size, int flags) {
    if (s_changes == nullptr || s_changes->setxattrError == 0) {
        return __real_setxattr(path, name, value, size, flags);
    }
    errno = s_changes->setxattrError;
    return -1;
}

int __wrap_removexattr(const char* path, const char* name) {
    if (s_changes == nullptr || s_changes->removexattrError == 0) {
        return __real_removexattr(path, name);
    }
    errno = s_changes->removexattrError;
    return -1;
}

ssize_t __wrap_listxattr(const char* path, char* list, size_t size) {
    if (size != 0 && s_changes != nullptr && s_changes->listsOutOfRange > 0) {
        --s_changes->listsOutOfRange;
        errno = ERANGE;
        return -1;
    }
    const ssize_t result = __real_listxattr(path, list, size);
    if (size == 0 && s_changes != nullptr && s_changes->afterSizeOfList) {
        s_changes->afterSizeOfList();
    }
    return result;
}

ssize_t __wrap_getxattr(const char* path, const char* name, void* value, size_t size) {
    if (s_changes != nullptr && s_changes->getxattrError != 0) {
        errno = s_changes->getxattrError;
        s_changes->getxattrError = 0;
        return -1;
    }
    const ssize_t result = __real_getxattr(path, name, value, size);
    if (size == 0 && s_changes != nullptr && s_changes->afterSizeOfValue) {
        s_changes->afterSizeOfValue();
    }
    return result;
}

ssize_t __wrap_getrandom(void* target, size_t size, unsigned int flags) {
    if (s_changes == nullptr || !s_changes->randomNumber.has_value() || size != sizeof *s_changes->randomNumber) {
        return __real_getrandom(target, size, flags);
    }
    std::memcpy(target, &*s_changes->randomNumber, size);
    s_changes->randomNumber.reset();
    return static_cast<ssize_t>(size);
}

// operator delete[](void*)
void __wrap__ZdaPv(void* block) {
    if (s_changes != nullptr && block != nullptr && block == s_changes->watchedArray) {
        ++s_changes->watchedArrayReleases;
    }
    __real__ZdaPv(block);
}

int __wrap_getpwuid_r(uid_t user, passwd* entry, char* buffer, size_t size, passwd** result) {
    if (s_changes == nullptr) {
        return __real_getpwuid_r(user, entry, buffer, size, result);
    }
    *result = nullptr;
    if (s_changes->loginName == nullptr) {
        return 0;
    }
    if (std::strlen(s_changes->loginName) >= size) {
        return ERANGE;
    }
    entry->pw_name = std::strcpy(buffer, s_changes->loginName);
    *result = entry;
    return 0;
}

// VELSysGetCmdLineArgs(int&, char**&)
void __wrap__Z20VELSysGetCmdLineArgsRiRPPc(int& count, char**& arguments) {
    static char* s_arguments[2] = {};
    s_arguments[0] = s_changes != nullptr ? const_cast<char*>(s_changes->startedName) : nullptr;
    count = s_arguments[0] != nullptr ? 1 : 0;
    arguments = count > 0 ? s_arguments : nullptr;
}

// VEL::internal::HttpInfo()
VEL::internal::HttpInfoFunction __wrap__ZN3VEL8internal8HttpInfoEv() {
    return s_changes != nullptr ? s_changes->httpInfo : nullptr;
}

// VEL::internal::GetRealPath()
VEL::internal::GetRealPathFunction __wrap__ZN3VEL8internal11GetRealPathEv() {
    return s_changes != nullptr ? s_changes->getRealPath : nullptr;
}
}
