// For sanitizer builds only. The font libraries look for fonts on threads of their own, which the end of the
// process cuts short, and keep what they found in caches that nothing frees; how they hand it from thread to
// thread the thread sanitizer does not see, for they are not built with it.

extern "C" {
__attribute__((visibility("default"))) const char* __lsan_default_suppressions();
__attribute__((visibility("default"))) const char* __tsan_default_suppressions();

const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig.so\nleak:libpangoft2\nleak:libpango-1.0\n";
}

const char* __tsan_default_suppressions()
{
    return "race:libfontconfig.so\n";
}
}
