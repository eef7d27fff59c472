/// What Qt, fontconfig and the drivers keep until the process ends is theirs.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}
