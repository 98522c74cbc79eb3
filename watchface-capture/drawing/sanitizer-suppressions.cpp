// For sanitizer builds only. fontconfig keeps what it read behind offsets, in which the sanitizer sees no
// pointers. It looks for fonts on threads of their own, and how they hand them on the thread sanitizer does
// not see, for the library is not built with it.

extern "C" {
__attribute__((visibility("default"))) const char* __lsan_default_options();
__attribute__((visibility("default"))) const char* __lsan_default_suppressions();
__attribute__((visibility("default"))) const char* __tsan_default_suppressions();

const char* __lsan_default_options()
{
    return "print_suppressions=0";
}

const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig.so\n";
}

const char* __tsan_default_suppressions()
{
    return "race:libfontconfig.so\n";
}
}
