#include <gtest/gtest.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)

extern "C" {
#include <libavfilter/version.h>
}
#include <dlfcn.h>
#include <sanitizer/lsan_interface.h>

#include <string>

namespace {

/// Ignores the leaks of the libraries that FFmpeg's filters load.
class FilterLibraries : public ::testing::Environment {
    void SetUp() override {
        const __lsan::ScopedDisabler theirs;
        const std::string name = "libavfilter.so." + std::to_string(LIBAVFILTER_VERSION_MAJOR);
        ASSERT_NE(dlopen(name.c_str(), RTLD_LAZY | RTLD_LOCAL), nullptr);
    }
};

const auto* const environment = ::testing::AddGlobalTestEnvironment(new FilterLibraries);

} // namespace

#endif
#endif
