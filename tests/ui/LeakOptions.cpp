/// Switches off the search for leaks, because Qt, fontconfig and the drivers keep memory until the
/// process ends.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}
