// Downloads against a server on this computer that fails in every way that we could think of.

#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/host/LoopHost.h"
#include "Tessarune/platform/model-store/Checksums.h"
#include "Tessarune/platform/model-store/ModelInstaller.h"
#include "tests/platform/model-store/FaultyServer.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <zstd.h>

#include <algorithm>
#include <fstream>
#include <optional>
#include <random>

using namespace tessarune;
using namespace tessarune::testing;

namespace {

std::string someBytes(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(count, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random() % 64); // packs a little
    return bytes;
}

std::uint32_t crcOf(const std::string& bytes) {
    CRC32C sum;
    sum.update(bytes);
    return sum.value();
}

std::string sha256Of(const std::string& bytes) {
    SHA256 sum;
    sum.update(bytes);
    return sum.hex();
}

std::string packed(const std::string& bytes) {
    std::string out(ZSTD_compressBound(bytes.size()), '\0');
    out.resize(ZSTD_compress(out.data(), out.size(), bytes.data(), bytes.size(), 3));
    return out;
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

    AvailableModel model(std::vector<FileToFetch> files) const {
        return {ModelKind::speech, "some-en", std::move(files), {{"architecture", "0"}}};
    }

    /// The text of the failure, or nothing.
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
        ModelInstaller installer(host_, store_, impatient());
        return install(installer, std::move(what));
    }

    std::string stored(const std::string& name) {
        return disk_.read(store_.folder(ModelKind::speech, "some-en") / name);
    }
    bool isStored() const { return store_.find(ModelKind::speech, "some-en").has_value(); }
    std::filesystem::path part(const std::string& name) const {
        return store_.partialFolder(ModelKind::speech, "some-en") / (name + ".part");
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
    bool stopAtProgress_ = false;
};

} // namespace

TEST_F(InstallerTest, FilesArriveCheckedAndTheModelAppearsWhole) {
    std::vector<FileToFetch> files;
    std::uint64_t all = 0;
    for (const char* name : {"a.ort", "b.ort", "c.ort", "d.ort", "empty.json"}) {
        const std::string bytes =
            name[0] == 'e' ? "" : someBytes(100'000, static_cast<unsigned>(name[0]));
        server_.on("/" + std::string(name), [this, bytes](const Request&) {
            EXPECT_FALSE(isStored()) << "not before it is whole";
            return Reply{.body = bytes};
        });
        files.push_back(file(name, bytes));
        all += bytes.size();
    }
    // One packed, with the sum of what is in it.
    server_.on("/f.bin", packed(bytes_));
    FileToFetch zstd = file("f.bin", packed(bytes_));
    zstd.isZstd = true;
    zstd.unpackedBytes = bytes_.size();
    zstd.crc32c.reset();
    zstd.sha256 = sha256Of(bytes_);
    files.push_back(zstd);
    all += zstd.bytes;

    EXPECT_EQ(install(model(files)), "");
    const StoredModel found = store_.find(ModelKind::speech, "some-en").value();
    EXPECT_EQ(found.files.size(), files.size());
    EXPECT_EQ(found.details.at("architecture"), "0");
    EXPECT_NO_THROW(ModelStore::verify(found));
    EXPECT_EQ(stored("f.bin"), bytes_);
    EXPECT_LE(server_.mostAtATime(), 2u);
    EXPECT_EQ(progress_.received, all);
    EXPECT_EQ(install(model(files)), "");
    EXPECT_EQ(server_.requests().size(), files.size()) << "what is there is not fetched again";
}

TEST_F(InstallerTest, ServerThatFailsIsAskedAgainAndGoesOnWhereItStopped) {
    const std::string& bytes = bytes_;
    struct Case {
        const char* name;
        FaultyServer::Answer answer;
        std::size_t requests;
        std::vector<std::size_t> ranges; ///< of all requests that had one
    };
    const std::vector<Case> cases{
        {"cut",
         [&](const Request& request) {
             return Reply{.body = bytes,
                          .sendAtMost = request.number < 2 ? 100'000u : bytes.size()};
         },
         3,
         {100'000, 200'000}},
        {"stalls",
         [&](const Request& request) {
             const bool first = request.number == 0;
             return Reply{
                 .body = bytes, .sendAtMost = first ? 70'000u : bytes.size(), .stalls = first};
         },
         2,
         {70'000}},
        {"ignores ranges",
         [&](const Request& request) {
             return Reply{.body = bytes,
                          .honoursRange = false,
                          .sendAtMost = request.number == 0 ? 100'000u : bytes.size()};
         },
         2,
         {100'000}},
        {"sends another range",
         [&](const Request& request) {
             if (request.number == 0)
                 return Reply{.body = bytes, .sendAtMost = 100'000};
             if (request.rangeStart)
                 return Reply{.status = 206,
                              .headers = {"Content-Range: bytes 5-9/300000"},
                              .body = "wrong",
                              .honoursRange = false};
             return Reply{.body = bytes};
         },
         3,
         {100'000}},
        {"promises more than it sends",
         [&](const Request& request) {
             return request.number == 0 ? Reply{.body = bytes,
                                                .claimedLength = bytes.size() + 9,
                                                .sendAtMost = 1'000}
                                        : Reply{.body = bytes};
         },
         2,
         {1'000}},
        {"promises less than the file",
         [&](const Request& request) {
             return request.number == 0
                        ? Reply{.body = bytes, .claimedLength = 5'000, .sendAtMost = 5'000}
                        : Reply{.body = bytes};
         },
         2,
         {5'000}},
        {"is busy",
         [&](const Request& request) {
             const int status = request.number == 0 ? 429 : request.number == 1 ? 503 : 200;
             return Reply{.status = status, .headers = {"Retry-After: 1"}, .body = bytes};
         },
         3,
         {}},
        {"redirects",
         [&](const Request&) {
             return Reply{.status = 302, .headers = {"Location: /elsewhere"}, .body = "go on"};
         },
         1,
         {}},
    };
    server_.on("/elsewhere", bytes);
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        server_.on("/a.ort", one.answer);
        const std::size_t before = server_.requests().size();
        EXPECT_EQ(install(model({file("a.ort", bytes)})), "");
        EXPECT_TRUE(isStored() && stored("a.ort") == bytes);
        std::size_t requests = 0;
        std::vector<std::size_t> ranges;
        const std::vector<Request> all = server_.requests();
        for (std::size_t i = before; i < all.size(); ++i) {
            requests += all[i].path == "/a.ort" ? 1 : 0;
            if (all[i].rangeStart)
                ranges.push_back(*all[i].rangeStart);
        }
        EXPECT_EQ(requests, one.requests);
        EXPECT_EQ(ranges, one.ranges);
        store_.remove(ModelKind::speech, "some-en");
        server_.forget();
    }
}

TEST_F(InstallerTest, WhatIsWrongIsRefusedNamedAndRemoved) {
    const std::string& bytes = bytes_;
    std::string damaged = bytes;
    damaged[1234] = static_cast<char>(damaged[1234] ^ 1);
    struct Case {
        const char* name;
        Reply reply;
        std::function<void(FileToFetch&)> change;
        const char* text;
        std::size_t requests;
    };
    const auto nothing = [](FileToFetch&) {};
    const auto asZstd = [&](FileToFetch& file) {
        file.isZstd = true;
        file.bytes = 0;
        file.crc32c.reset();
        file.sha256 = sha256Of(bytes);
    };
    const std::vector<Case> cases{
        {"wrong bytes",
         {.body = damaged},
         nothing,
         "its sum is wrong (CRC-32C); it was removed",
         1},
        {"wrong bytes, other sum",
         {.body = damaged},
         [&](FileToFetch& file) {
             file.crc32c.reset();
             file.sha256 = sha256Of(bytes);
         },
         "its sum is wrong (SHA-256); it was removed",
         1},
        {"too long",
         {.body = bytes + "more"},
         nothing,
         "the server sends more than the file's size",
         1},
        {"missing", {.status = 404, .body = "no"}, nothing, "404", 1},
        {"forbidden", {.status = 403, .body = "no"}, nothing, "403", 1},
        {"always busy", {.status = 503, .body = "no"}, nothing, "503", 3},
        {"always cut", {.body = bytes, .honoursRange = false, .sendAtMost = 10}, nothing, "", 4},
        {"always short",
         {.body = bytes.substr(0, 999), .honoursRange = false},
         nothing,
         "the server ended the file before its size",
         4},
        {"redirects for ever",
         {.status = 302, .headers = {"Location: /a.ort"}, .body = ""},
         nothing,
         "redirect",
         6},
        {"redirects to a file",
         {.status = 302, .headers = {"Location: file:///etc/passwd"}, .body = ""},
         nothing,
         "",
         1},
        {"packed, but it is not", {.body = bytes}, asZstd, "it does not unpack", 1},
        {"packed, cut in two",
         {.body = packed(bytes).substr(0, 1000)},
         asZstd,
         "it ends before it is unpacked",
         1},
        {"packed, something else",
         {.body = packed(damaged)},
         asZstd,
         "its sum is wrong (SHA-256)",
         1},
        {"packed, unpacks to too much",
         {.body = packed(std::string(50'000'000, 'x'))},
         asZstd,
         "it unpacks to more than its size",
         1},
        {"no sum at all",
         {.body = bytes},
         [](FileToFetch& file) { file.crc32c.reset(); },
         "no sum",
         0},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        server_.on("/a.ort", [&](const Request&) { return one.reply; });
        FileToFetch wanted = file("a.ort", bytes);
        one.change(wanted);
        const std::string failure = install(model({wanted}));
        EXPECT_NE(failure.find("a.ort"), std::string::npos) << failure;
        EXPECT_NE(failure.find(one.text), std::string::npos) << failure;
        EXPECT_EQ(server_.requestsFor("/a.ort"), one.requests);
        EXPECT_FALSE(isStored());
        if (failure.find("removed") != std::string::npos) {
            EXPECT_FALSE(std::filesystem::exists(part("a.ort")));
        }
        EXPECT_FALSE(
            std::filesystem::exists(store_.partialFolder(ModelKind::speech, "some-en") / "a.ort"));
        store_.remove(ModelKind::speech, "some-en");
        server_.forget();
    }
}

TEST_F(InstallerTest, LeftoversOfAnEarlierRunAreUsedOrReplaced) {
    std::string foreign = bytes_.substr(0, 200'000);
    foreign[7] = static_cast<char>(foreign[7] ^ 1);
    struct Case {
        const char* name;
        std::string part;
        std::string whole;
        std::vector<std::optional<std::size_t>> ranges;
    };
    using Ranges = std::vector<std::optional<std::size_t>>;
    const std::vector<Case> cases{
        {"a part", bytes_.substr(0, 200'000), "", Ranges{200'000}},
        {"a part of another edition", foreign, "", Ranges{200'000, std::nullopt}},
        {"all of it, not yet checked", bytes_, "", Ranges{}},
        {"all of another edition", foreign + bytes_.substr(200'000), "", Ranges{std::nullopt}},
        {"longer than the file", bytes_ + "more", "", Ranges{std::nullopt}},
        {"checked", "", bytes_, Ranges{}},
        {"checked, damaged since", "", foreign, Ranges{std::nullopt}},
    };
    server_.on("/a.ort", bytes_);
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        const auto folder = store_.partialFolder(ModelKind::speech, "some-en");
        std::filesystem::create_directories(folder);
        std::ofstream(folder / "of-another-edition.ort") << "left";
        if (!one.part.empty())
            std::ofstream(part("a.ort"), std::ios::binary) << one.part;
        if (!one.whole.empty())
            std::ofstream(folder / "a.ort", std::ios::binary) << one.whole;
        EXPECT_EQ(install(model({file("a.ort", bytes_)})), "");
        EXPECT_TRUE(isStored() && stored("a.ort") == bytes_);
        EXPECT_EQ(disk_.list(store_.folder(ModelKind::speech, "some-en")),
                  (std::vector<std::string>{"a.ort", "model.json"}));
        Ranges ranges;
        for (const Request& request : server_.requests())
            ranges.push_back(request.rangeStart);
        EXPECT_EQ(ranges, one.ranges);
        store_.remove(ModelKind::speech, "some-en");
        server_.forget();
    }
}

TEST_F(InstallerTest, NoRoomIsSaidBeforeAnythingIsFetched) {
    server_.on("/a.ort", bytes_);
    FileToFetch huge = file("a.ort", bytes_);
    huge.bytes = std::uint64_t{1} << 60;
    const std::string failure = install(model({huge, file("b.ort", bytes_)}));
    EXPECT_NE(failure.find("not enough room"), std::string::npos) << failure;
    EXPECT_TRUE(server_.requests().empty());
}

TEST_F(InstallerTest, NamesThatLeadElsewhereAreRefused) {
    server_.on("/a.ort", bytes_);
    for (const char* name : {"../a.ort", "/etc/a.ort", ".a.ort", "a/b", "", "model.json", "a\nb"}) {
        FileToFetch wanted = file("a.ort", bytes_);
        wanted.name = name;
        EXPECT_NE(install(model({wanted})).find("not usable"), std::string::npos) << name;
    }
    const FileToFetch twice = file("a.ort", bytes_);
    EXPECT_NE(install(model({twice, twice})).find("not usable"), std::string::npos);
    EXPECT_TRUE(server_.requests().empty());
}

TEST_F(InstallerTest, StoppedDownloadKeepsItsPartAndTheNextGoesOn) {
    server_.on("/a.ort", [&](const Request& request) {
        return Reply{.body = bytes_,
                     .sendAtMost = request.number == 0 ? 150'000u : bytes_.size(),
                     .stalls = request.number == 0};
    });
    ModelInstaller installer(host_, store_, impatient());
    stopAtProgress_ = true; // as a user does while it runs
    EXPECT_EQ(install(installer, model({file("a.ort", bytes_)})), "The download was stopped.");
    EXPECT_FALSE(isStored());
    stopAtProgress_ = false;
    EXPECT_EQ(install(installer, model({file("a.ort", bytes_)})), "");
    ASSERT_EQ(server_.requests().size(), 2u);
    EXPECT_GT(server_.requests().back().rangeStart.value_or(0), 0u);
}

TEST_F(InstallerTest, WishForTheSameModelIsSharedAndOutlivesWhoGivesUp) {
    server_.on("/a.ort", bytes_);
    ModelInstaller installer(host_, store_, impatient());
    std::stop_source stop;
    std::string first = "pending";
    std::string second = "pending";
    const auto quietly = [](std::string* failure, Task<void> task, LoopHost* host) {
        return attempt(std::move(task), failure, host);
    };
    spawn(Executor::main(host_),
          quietly(&first, installer.install(model({file("a.ort", bytes_)}), {}, stop.get_token()),
                  &host_));
    spawn(Executor::main(host_),
          quietly(&second, installer.install(model({file("a.ort", bytes_)}), {}, {}), &host_));
    host_.post([&] { stop.request_stop(); });
    host_.run(); // ends when the first has given up
    EXPECT_EQ(first, "The download was stopped.");
    while (!isStored())
        host_.run();
    EXPECT_EQ(second, "pending") << "a success leaves no text";
    EXPECT_EQ(server_.requestsFor("/a.ort"), 1u);
}

// Run by the test below as a process of its own.
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

TEST_F(InstallerTest, TwoProcessesFetchOnce) {
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
    EXPECT_EQ(server_.requestsFor("/a.ort"), 1u);
    EXPECT_TRUE(isStored());
}

TEST_F(InstallerTest, MirrorStandsInForTheServers) {
    EXPECT_EQ(mirrored("https://models.example/a/b.ort", ""), "https://models.example/a/b.ort");
    EXPECT_EQ(mirrored("https://models.example/a/b.ort", "http://here/m"),
              "http://here/m/models.example/a/b.ort");
    server_.on("/m/models.example/a.ort", bytes_);
    DownloadPolicy policy = impatient();
    policy.mirror = server_.url("/m/");
    ModelInstaller installer(host_, store_, policy);
    FileToFetch wanted = file("a.ort", bytes_);
    wanted.url = "https://models.example/a.ort";
    EXPECT_EQ(install(installer, model({wanted})), "");
}
