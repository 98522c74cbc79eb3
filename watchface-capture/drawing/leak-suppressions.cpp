// For sanitizer builds only. The font libraries look for fonts on a thread of their own, which the end of the
// process cuts short, and keep what they found in caches that nothing frees.

extern "C" {
__attribute__((visibility("default"))) const char* __lsan_default_suppressions();

const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig.so\nleak:libpangoft2\nleak:libpango-1.0\n";
}
}
