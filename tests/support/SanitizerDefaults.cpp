// What the sanitizers are told in every test program: losses and races of the C library itself.

extern "C" {

// `setlocale` and `newlocale` lose the list of directories that they make of LOCPATH.

const char* __lsan_default_suppressions() {
    return "leak:argz_add_sep";
}

const char* __lsan_default_options() {
    return "print_suppressions=0";
}

// Locales share data under a lock of the C library's own, which isn't seen.

const char* __tsan_default_suppressions() {
    return "race:__freelocale\nrace:_nl_unload_locale\nrace:_nl_cleanup_ctype\nrace:__gconv_close_transform";
}

const char* __tsan_default_options() {
    return "print_suppressions=0";
}
}
