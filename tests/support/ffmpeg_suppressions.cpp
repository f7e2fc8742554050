// For programs under ThreadSanitizer whose threads run FFmpeg's code: it is not compiled with the sanitizer,
// and hands frames from thread to thread by counts that the sanitizer cannot see.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions();

extern "C" const char* __tsan_default_suppressions() {
    return "race:libavcodec.so\n"
           "race:libavutil.so\n"
           "race:libswscale.so\n"
           "race:libx264.so\n";
}
