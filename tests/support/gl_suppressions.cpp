// For programs under ThreadSanitizer that draw with OpenGL in software: it is not compiled with the
// sanitizer, and its threads meet in ways that the sanitizer cannot see.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions();

extern "C" const char* __tsan_default_suppressions() {
    return "race:swrast_dri.so\n"
           "race:libLLVM\n";
}
