// Downloads from a local server that fails as instructed.

#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/host/LoopHost.h"
#include "Tessarune/platform/model-store/Checksums.h"
#include "Tessarune/platform/model-store/ModelInstaller.h"
#include "tests/platform/model-store/FaultyServer.h"
#include "tests/platform/model-store/PackedBytes.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <optional>
#include <random>

using namespace tessarune;
using namespace tessarune::testing;

namespace {

/// The start of each request's range; `all` for a request without one.
using Ranges = std::vector<std::optional<std::size_t>>;
constexpr std::nullopt_t all = std::nullopt;

std::string someBytes(std::size_t count, std::size_t seed) {
    std::mt19937 random(static_cast<unsigned>(seed));
    std::string bytes(count, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random() % 64); // slightly compressible
    return bytes;
}

std::uint32_t crcOf(const std::string& bytes) {
    CRC32C sum;
    sum.update(bytes);
    return sum.value();
}

DownloadPolicy impatient() {
    DownloadPolicy policy;
    policy.stallSeconds = 1;
    policy.fruitlessTries = 2;
    policy.firstPauseSeconds = 0.01;
    policy.longestPauseSeconds = 0.05;
    policy.lockPauseSeconds = 0.02;
    policy.mirror = "";
    return policy;
}

class InstallerTest : public ::testing::Test {
  protected:
    InstallerTest() : store_(disk_, folder_ / "Models", {}), bytes_(someBytes(300'000, 1)) {}

    FileToFetch file(const std::string& name, const std::string& bytes) const {
        FileToFetch made;
        made.name = name;
        made.url = server_.url("/" + name);
        made.bytes = bytes.size();
        made.crc32c = crcOf(bytes);
        return made;
    }

    /// A compressed file whose checksum is that of its unpacked content.
    FileToFetch packedFile(const std::string& name, const std::string& bytes) const {
        FileToFetch made = file(name, packed(bytes));
        made.isZstd = true;
        made.unpackedBytes = bytes.size();
        made.crc32c.reset();
        made.sha256 = sha256Of(bytes);
        return made;
    }

    AvailableModel model(std::vector<FileToFetch> files) const {
        return {ModelKind::speech, "some-en", std::move(files), {{"architecture", "0"}}};
    }

    /// Returns the text of the failure, or an empty text.
    std::string install(ModelInstaller& installer, AvailableModel what) {
        std::string failure;
        std::stop_source stop;
        const ModelInstaller::ProgressHandler progress = [this,
                                                          &stop](ModelInstaller::Progress now) {
            EXPECT_TRUE(host_.isOnMainQueue());
            progress_ = now;
            if (stopAtProgress_)
                stop.request_stop();
        };
        spawn(Executor::main(host_),
              attempt(installer.install(std::move(what), progress, stop.get_token()), &failure,
                      &host_));
        host_.run();
        return failure;
    }

    std::string install(AvailableModel what) {
        DownloadPolicy policy = impatient();
        policy.onTrouble = [this](const DownloadTrouble& trouble) {
            EXPECT_NE(trouble.reason, "");
            ++troubles_;
        };
        ModelInstaller installer(host_, store_, std::move(policy));
        return install(installer, std::move(what));
    }

    std::string stored(const std::string& name) {
        return disk_.read(store_.folder(ModelKind::speech, "some-en") / name);
    }
    bool isStored() const { return store_.find(ModelKind::speech, "some-en").has_value(); }
    std::filesystem::path partial() const {
        return store_.partialFolder(ModelKind::speech, "some-en");
    }
    Ranges ranges() const {
        Ranges found;
        for (const Request& request : server_.requests())
            found.push_back(request.rangeStart);
        return found;
    }
    void startOver() {
        store_.remove(ModelKind::speech, "some-en");
        server_.forget();
    }

    static Task<void> attempt(Task<void> task, std::string* failure, LoopHost* host) {
        try {
            co_await task;
        } catch (const std::exception& thrown) {
            *failure = thrown.what();
        }
        host->quit();
    }

    TemporaryFolder folder_;
    PosixFileSystem disk_;
    ModelStore store_;
    LoopHost host_;
    FaultyServer server_;
    std::string bytes_;
    ModelInstaller::Progress progress_;
    std::atomic<std::size_t> troubles_ = 0;
    bool stopAtProgress_ = false;
};

} // namespace

TEST_F(InstallerTest, FilesArriveCheckedAndTheModelAppearsWhole) {
    std::vector<FileToFetch> files;
    for (const char* name : {"a.ort", "b.ort", "c.ort", "d.ort", "empty.json"}) {
        const std::string bytes = *name == 'e' ? "" : someBytes(100'000, files.size());
        server_.on("/" + std::string(name), [this, bytes](const Request&) {
            EXPECT_FALSE(isStored()) << "the model appears when all its files are there";
            return Reply::whole(bytes);
        });
        files.push_back(file(name, bytes));
    }
    server_.on("/f.bin", packed(bytes_));
    files.push_back(packedFile("f.bin", bytes_));

    EXPECT_EQ(install(model(files)), "");
    const StoredModel found = store_.find(ModelKind::speech, "some-en").value();
    EXPECT_EQ(found.files.size(), files.size());
    EXPECT_EQ(found.details.at("architecture"), "0");
    EXPECT_NO_THROW(ModelStore::verify(found));
    EXPECT_EQ(stored("f.bin"), bytes_);
    EXPECT_LE(server_.mostAtATime(), 2u);
    EXPECT_EQ(progress_.received, 400'000 + packed(bytes_).size());
    EXPECT_EQ(install(model(files)), "");
    EXPECT_EQ(server_.requests().size(), files.size()) << "an installed model is not fetched again";
}

TEST_F(InstallerTest, ServerThatFailsIsRetriedFromWhereItStopped) {
    const std::string& b = bytes_;
    const Reply whole = Reply::whole(b);
    const Reply otherRange{.status = 206,
                           .headers = {"Content-Range: bytes 5-9/300000"},
                           .body = "wrong",
                           .honoursRange = false};
    struct Case {
        const char* name;
        std::vector<Reply> replies; ///< in order; the last one repeats
        Ranges ranges;              ///< what the requests ask for
    };
    const std::vector<Case> cases{
        {"cuts", {Reply::cut(b, 100'000), Reply::cut(b, 100'000), whole}, {all, 100'000, 200'000}},
        {"stalls", {Reply::cut(b, 70'000).stalling(), whole}, {all, 70'000}},
        {"ignores ranges", {Reply::cut(b, 100'000), whole.withoutRanges()}, {all, 100'000}},
        {"sends another range", {Reply::cut(b, 9'000), otherRange, whole}, {all, 9'000, all}},
        {"promises more than it sends",
         {{.body = b, .claimedLength = b.size() + 9, .sendAtMost = 1'000}, whole},
         {all, 1'000}},
        {"promises less than the file",
         {{.body = b, .claimedLength = 5'000, .sendAtMost = 5'000}, whole},
         {all, 5'000}},
        {"is busy",
         {Reply::failure(429, {"Retry-After: 1"}), Reply::failure(503), whole},
         {all, all, all}},
        {"redirects", {Reply::failure(302, {"Location: /elsewhere"})}, {all, all}},
    };
    server_.on("/elsewhere", b);
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        server_.on("/a.ort", [&](const Request& request) {
            return one.replies[std::min(request.number, one.replies.size() - 1)];
        });
        EXPECT_EQ(install(model({file("a.ort", b)})), "");
        EXPECT_TRUE(isStored() && stored("a.ort") == b);
        EXPECT_EQ(ranges(), one.ranges);
        EXPECT_EQ(troubles_.exchange(0), one.replies.size() - 1) << "each failure is reported";
        startOver();
    }
}

TEST_F(InstallerTest, BadDownloadIsRefusedWithItsReasonAndNotInstalled) {
    const std::string& b = bytes_;
    std::string wrong = b;
    wrong[1234] = static_cast<char>(wrong[1234] ^ 1);
    const FileToFetch plain = file("a.ort", b);
    FileToFetch bySHA256 = plain;
    bySHA256.sha256 = sha256Of(b);
    bySHA256.crc32c.reset();
    FileToFetch unchecked = plain;
    unchecked.crc32c.reset();
    FileToFetch zstd = packedFile("a.ort", b);
    zstd.bytes = 0;
    struct Case {
        const char* name;
        Reply reply;
        FileToFetch file;
        const char* text;     ///< part of the failure
        std::size_t requests; ///< three in a row without progress end the download
    };
    const std::vector<Case> cases{
        {"wrong CRC-32C", Reply::whole(wrong), plain,
         "its checksum (CRC-32C) is wrong; it was removed", 1},
        {"wrong SHA-256", Reply::whole(wrong), bySHA256,
         "its checksum (SHA-256) is wrong; it was removed", 1},
        {"too long", Reply::whole(b + "more"), plain, "sent more data than the file has", 1},
        {"not found", Reply::failure(404), plain, "404", 1},
        {"always busy", Reply::failure(503), plain, "503", 3},
        {"always cut", Reply::cut(b, 10).withoutRanges(), plain, "was interrupted", 4},
        {"too short", Reply::whole(b.substr(9)).withoutRanges(), plain, "too early", 4},
        {"redirect to itself", Reply::failure(302, {"Location: /a.ort"}), plain, "redirect", 6},
        {"wrong CRC-32C and always cut", Reply::cut(wrong, 150'000), plain,
         "its checksum (CRC-32C) is wrong", 4},
        {"redirect to a file", Reply::failure(302, {"Location: file:///etc/passwd"}), plain,
         "\"file\" not supported", 1},
        {"not packed", Reply::whole(b), zstd, "it cannot be unpacked", 1},
        {"packed, start cut", Reply::whole(packed(b).substr(9)), zstd, "it cannot be unpacked", 1},
        {"packed, end cut", Reply::whole(packed(b).substr(0, 999)), zstd, "it is incomplete", 1},
        {"packed, wrong", Reply::whole(packed(wrong)), zstd, "its checksum (SHA-256) is wrong", 1},
        {"packed, too long", Reply::whole(packed(std::string(9'000'000, 'x'))), zstd,
         "larger than expected", 1},
        {"no expected checksum", Reply::whole(b), unchecked, "no checksum", 0},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        server_.on("/a.ort", [&](const Request&) { return one.reply; });
        const std::string failure = install(model({one.file}));
        EXPECT_NE(failure.find("a.ort"), std::string::npos) << failure;
        EXPECT_NE(failure.find(one.text), std::string::npos) << failure;
        EXPECT_EQ(server_.requests().size(), one.requests);
        EXPECT_FALSE(isStored());
        const bool isRemoved = failure.find("removed") != std::string::npos;
        EXPECT_FALSE(isRemoved && std::filesystem::exists(partial() / "a.ort.part"));
        EXPECT_FALSE(std::filesystem::exists(partial() / "a.ort"));
        startOver();
    }
}

TEST_F(InstallerTest, LeftoversOfAnEarlierRunAreUsedOrReplaced) {
    std::string foreign = bytes_.substr(0, 200'000);
    foreign[7] = static_cast<char>(foreign[7] ^ 1);
    struct Case {
        const char* name;
        std::string part;  ///< content of a.ort.part; empty: no such file
        std::string whole; ///< content of a.ort, which was complete and checked
        Ranges ranges;
    };
    const std::vector<Case> cases{
        {"a partial file", bytes_.substr(0, 200'000), "", {200'000}},
        {"a partial file of another edition", foreign, "", {200'000, all}},
        {"a complete file, not checked yet", bytes_, "", {}},
        {"a complete file of another edition", foreign + bytes_.substr(200'000), "", {all}},
        {"a file that is too long", bytes_ + "more", "", {all}},
        {"a checked file", "", bytes_, {}},
        {"a checked file, damaged since", "", foreign, {all}},
    };
    server_.on("/a.ort", bytes_);
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        std::filesystem::create_directories(partial());
        std::ofstream(partial() / "of-another-edition.ort") << "left";
        if (!one.part.empty())
            std::ofstream(partial() / "a.ort.part", std::ios::binary) << one.part;
        if (!one.whole.empty())
            std::ofstream(partial() / "a.ort", std::ios::binary) << one.whole;
        EXPECT_EQ(install(model({file("a.ort", bytes_)})), "");
        EXPECT_TRUE(isStored() && stored("a.ort") == bytes_);
        EXPECT_EQ(disk_.list(store_.folder(ModelKind::speech, "some-en")),
                  (std::vector<std::string>{"a.ort", "model.json"}));
        EXPECT_EQ(ranges(), one.ranges);
        startOver();
    }
}

TEST_F(InstallerTest, AModelThatWasDamagedSinceItsInstallationIsReplaced) {
    const auto flip = [](const std::filesystem::path& path) {
        std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(1000);
        file.put('\xff');
    };
    const AvailableModel wanted = model({file("a.ort", bytes_)});
    server_.on("/a.ort", bytes_);
    ASSERT_EQ(install(wanted), "");
    flip(store_.folder(ModelKind::speech, "some-en") / "a.ort");
    EXPECT_EQ(install(wanted), "");
    EXPECT_TRUE(stored("a.ort") == bytes_);

    // A damaged model that came with the program stays; a downloaded one takes precedence over it.
    ModelStore own(disk_, folder_ / "own", {folder_ / "Models"});
    ModelInstaller installer(host_, own, impatient());
    EXPECT_EQ(install(installer, wanted), "");
    EXPECT_EQ(server_.requests().size(), 2u) << "an intact shipped model is not fetched";
    flip(store_.folder(ModelKind::speech, "some-en") / "a.ort");
    EXPECT_EQ(install(installer, wanted), "");
    EXPECT_EQ(server_.requests().size(), 3u);
    EXPECT_NO_THROW(ModelStore::verify(own.find(ModelKind::speech, "some-en").value()));
}

TEST_F(InstallerTest, AModelCannotBeRemovedDuringItsDownload) {
    server_.on("/a.ort", [&](const Request&) {
        EXPECT_THROW(store_.remove(ModelKind::speech, "some-en"), std::runtime_error);
        return Reply::whole(bytes_);
    });
    EXPECT_EQ(install(model({file("a.ort", bytes_)})), "");
    store_.remove(ModelKind::speech, "some-en");
    EXPECT_FALSE(isStored());
}

TEST_F(InstallerTest, TooLittleDiskSpaceIsReportedBeforeAnythingIsFetched) {
    server_.on("/a.ort", bytes_);
    FileToFetch huge = file("a.ort", bytes_);
    huge.bytes = std::uint64_t{1} << 60;
    const std::string failure = install(model({huge, file("b.ort", bytes_)}));
    EXPECT_NE(failure.find("Not enough disk space"), std::string::npos) << failure;
    EXPECT_TRUE(server_.requests().empty());
}

TEST_F(InstallerTest, UnsafeAndRepeatedFileNamesAreRefused) {
    server_.on("/a.ort", bytes_);
    for (const char* name : {"../a.ort", "/etc/a.ort", ".a.ort", "a/b", "", "model.json", "a\nb"}) {
        FileToFetch wanted = file("a.ort", bytes_);
        wanted.name = name;
        EXPECT_NE(install(model({wanted})).find("is invalid"), std::string::npos) << name;
    }
    const FileToFetch twice = file("a.ort", bytes_);
    EXPECT_NE(install(model({twice, twice})).find("is invalid"), std::string::npos);
    EXPECT_TRUE(server_.requests().empty());
}

TEST_F(InstallerTest, StoppedDownloadIsContinuedByTheNext) {
    server_.on("/a.ort", [&](const Request& request) {
        return request.number == 0 ? Reply::cut(bytes_, 150'000).stalling() : Reply::whole(bytes_);
    });
    ModelInstaller installer(host_, store_, impatient());
    stopAtProgress_ = true; // as a user does during the download
    EXPECT_EQ(install(installer, model({file("a.ort", bytes_)})), "The download was stopped.");
    EXPECT_FALSE(isStored());
    stopAtProgress_ = false;
    EXPECT_EQ(install(installer, model({file("a.ort", bytes_)})), "");
    ASSERT_EQ(ranges().size(), 2u);
    EXPECT_GT(ranges().back().value_or(0), 0u);
}

TEST_F(InstallerTest, TwoCallersShareADownloadThatContinuesWhenOneGivesUp) {
    server_.on("/a.ort", bytes_);
    ModelInstaller installer(host_, store_, impatient());
    const AvailableModel wanted = model({file("a.ort", bytes_)});
    std::stop_source stop;
    std::string first = "pending";
    std::string second = "pending";
    const Executor main = Executor::main(host_);
    spawn(main, attempt(installer.install(wanted, {}, stop.get_token()), &first, &host_));
    spawn(main, attempt(installer.install(wanted, {}, {}), &second, &host_));
    host_.post([&] { stop.request_stop(); });
    host_.run(); // until the first caller has given up
    EXPECT_EQ(first, "The download was stopped.");
    while (!isStored())
        host_.run();
    EXPECT_EQ(second, "pending") << "only a failure replaces this text";
    EXPECT_EQ(server_.requests().size(), 1u);
}

// The test below runs this one in separate processes.
TEST_F(InstallerTest, DISABLED_AnotherProcess) {
    const char* folder = std::getenv("TESSARUNE_TEST_STORE");
    const char* url = std::getenv("TESSARUNE_TEST_URL");
    ASSERT_TRUE(folder != nullptr && url != nullptr);
    ModelStore store(disk_, folder, {});
    ModelInstaller installer(host_, store, impatient());
    FileToFetch wanted = file("a.ort", bytes_);
    wanted.url = url;
    EXPECT_EQ(install(installer, model({wanted})), "");
    EXPECT_TRUE(store.find(ModelKind::speech, "some-en").has_value());
}

TEST_F(InstallerTest, ThreeProcessesShareOneDownload) {
    server_.on("/a.ort", bytes_);
    setenv("TESSARUNE_TEST_STORE", (folder_ / "Models").c_str(), 1);
    setenv("TESSARUNE_TEST_URL", server_.url("/a.ort").c_str(), 1);
    std::string program = "/proc/self/exe";
    std::string filter = "--gtest_filter=*AnotherProcess";
    std::string also = "--gtest_also_run_disabled_tests";
    char* arguments[] = {program.data(), filter.data(), also.data(), nullptr};
    pid_t others[3];
    for (pid_t& other : others)
        ASSERT_EQ(posix_spawn(&other, program.c_str(), nullptr, nullptr, arguments, environ), 0);
    for (const pid_t other : others) {
        int status = -1;
        EXPECT_EQ(waitpid(other, &status, 0), other);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(server_.requests().size(), 1u);
    EXPECT_TRUE(isStored());
}

TEST_F(InstallerTest, MirrorReplacesTheServers) {
    EXPECT_EQ(mirrored("https://models.example/a/b.ort", ""), "https://models.example/a/b.ort");
    EXPECT_EQ(mirrored("https://models.example/a/b.ort", "http://here/m"),
              "http://here/m/models.example/a/b.ort");
    server_.on("/m/models.example/a.ort", bytes_);
    DownloadPolicy policy = impatient();
    setenv("TESSARUNE_MODEL_MIRROR", "http://environment", 1);
    EXPECT_EQ(DownloadPolicy::withMirror([] { return "http://setting"; }).currentMirror(),
              "http://environment");
    unsetenv("TESSARUNE_MODEL_MIRROR");
    std::string chosen;
    policy.chosenMirror = [&] { return chosen; };
    ModelInstaller installer(host_, store_, policy);
    chosen = server_.url("/m/"); // set after construction
    FileToFetch wanted = file("a.ort", bytes_);
    wanted.url = "https://models.example/a.ort";
    EXPECT_EQ(install(installer, model({wanted})), "");
}
