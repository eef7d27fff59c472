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

/// What the libraries below FFmpeg's filters keep as they are loaded is theirs.
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
