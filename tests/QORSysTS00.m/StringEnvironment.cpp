#include "StringEnvironment.h"

#include "VELSysCodePage.h"
#include "VELSysNLSCore.h"

#include <atomic>
#include <cstring>

namespace {

std::atomic<long> s_maxCharSize = 1;
std::atomic<int> s_queries = 0;

VELSysNLSEnv RecordOf(const char* codePage) {
    VELSysNLSEnv env{};
    std::strcpy(env.codePage, codePage);
    return env;
}

} // namespace

void StringEnvironment::UseCodePage(const char* codePage, long maxCharSize) {
    s_maxCharSize = maxCharSize;
    VELSysCodePage::OnChangeNLSCore(RecordOf(codePage));
}

int StringEnvironment::Queries() {
    return s_queries;
}

// In place of the language core, so that the machine's locale has no say.

extern "C" int __wrap__Z13GetEnvNLSDataP12VELSysNLSEnv(VELSysNLSEnv* env) {
    ++s_queries;
    *env = RecordOf(StringEnvironment::UTF8);
    return 0;
}

extern "C" int __wrap__Z21RegisterNLSChangeHookPFvRK12VELSysNLSEnvE(void (*)(const VELSysNLSEnv&)) {
    return 0;
}

extern "C" long __wrap__Z26VELGetMultiByteCharMaxSizev() {
    return s_maxCharSize;
}

extern "C" char* __wrap__ZN13VELSysCLocale29GetLocaleStringFromLangStringEPKcPcj(const char*, char* out,
                                                                                 unsigned int size) {
    return std::strncpy(out, "C", size);
}
