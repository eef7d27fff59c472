#include "Tessarune/platform/media/AtempoConverter.h"
#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/media/M4ATranscoder.h"
#include "Tessarune/platform/media/StatedEnd.h"
#include "Tessarune/platform/media/SwresampleConverter.h"
#include "TessaruneCore/text/Localization.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WAVBytes.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <random>
#include <stop_token>
#include <thread>

namespace tessarune {
namespace {

using testing::tone;
using testing::wavBytes;
using Kind = MediaFileError::Kind;

class MediaFileTests : public ::testing::Test {
  protected:
    std::filesystem::path write(const char* name, const std::string& bytes) {
        std::ofstream(folder / name, std::ios::binary) << bytes;
        return folder / name;
    }
    static std::vector<float> readAll(MediaFile& file) {
        std::vector<float> all;
        while (const AudioBufferPtr block = file.read()) {
            EXPECT_GT(block->frames(), 0u);
            EXPECT_LE(block->frames(), MediaFile::maximumBlockFrames);
            EXPECT_EQ(block->format, file.format());
            all.insert(all.end(), block->samples.begin(), block->samples.end());
        }
        return all;
    }

    testing::TemporaryFolder folder;
};

TEST_F(MediaFileTests, GivesEverySampleOfEveryChannelOnce) {
    for (const int channels : {1, 2}) {
        const auto samples = tone(2.5, 44100, 440, channels);
        const auto file =
            openFFmpegMediaFile(write("a: b.wav", wavBytes(samples, 44100, channels)));
        EXPECT_EQ(file->format(), (AudioFormat{44100, channels}));
        EXPECT_NEAR(file->duration().value_or(0), 2.5, 0.001);
        const auto decoded = readAll(*file);
        ASSERT_EQ(decoded.size(), samples.size());
        for (std::size_t i = 0; i < samples.size(); ++i)
            ASSERT_NEAR(decoded[i], samples[i] / 32768.0, 1e-6) << i;
        EXPECT_EQ(file->read(), nullptr) << "nothing follows the end";
    }
}

TEST_F(MediaFileTests, GivesTheSameSoundFromAnyPositionAsFromTheStart) {
    auto samples = tone(6, 16000);
    for (std::size_t i = 0; i < samples.size(); ++i) // no two positions are alike
        samples[i] = static_cast<std::int16_t>(samples[i] * static_cast<double>(i) / 96000);
    const auto wav = write("a.wav", wavBytes(samples, 16000));
    transcodeToM4A(wav, folder / "a.m4a", {}, {});
    for (const auto& path : {wav, folder / "a.m4a"}) {
        const auto file = openFFmpegMediaFile(path);
        const auto all = readAll(*file);
        for (const double place : {3.2, 0.0, 5.99, 1.0037, 0.05, 4.0}) {
            file->seek(place);
            const auto rest = readAll(*file);
            const auto first = static_cast<std::size_t>(place * 16000);
            ASSERT_EQ(rest.size(), all.size() - first) << path << " from " << place;
            double difference = 0; // decoders add different noise each time
            for (std::size_t i = 0; i < rest.size(); ++i)
                difference += std::abs(rest[i] - all[first + i]);
            EXPECT_LT(difference / static_cast<double>(rest.size()), 0.005)
                << path << " from " << place;
        }
        file->seek(100);
        EXPECT_EQ(file->read(), nullptr);
    }
}

TEST_F(MediaFileTests, ATruncatedFileIsReadToItsEndAndReportedAsDamaged) {
    using namespace std::string_literals;
    const auto samples = tone(1, 16000);
    const struct {
        std::uint32_t claimed; ///< bytes of sound in the header; the file has 32000
        bool isCut;            ///< whether the file is reported as damaged
    } cases[] = {
        {320000, true}, {48000, true}, {32800, false}, {0x7FFFF000, false}, {0xFFFFFFDB, false}};
    const auto pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::stop_source never;
    const auto check = [&samples](const std::unique_ptr<MediaFile>& file, bool isCut) {
        std::size_t count = 0;
        bool saysSo = false;
        try {
            while (const AudioBufferPtr block = file->read())
                count += block->samples.size();
        } catch (const MediaFileError& error) {
            saysSo = error.kind() == Kind::damaged;
        }
        EXPECT_EQ(count, samples.size());
        EXPECT_EQ(saysSo, isCut);
        EXPECT_EQ(file->read(), nullptr);
    };
    for (const auto& [claimed, isCut] : cases) {
        SCOPED_TRACE(claimed);
        const std::string bytes = wavBytes(samples, 16000, 1, claimed);
        check(openFFmpegMediaFile(write("cut.wav", bytes)), isCut);
        std::jthread writer([&] { std::ofstream(pipe, std::ios::binary) << bytes; });
        check(openAwaitedFFmpegMediaFile(pipe, never.get_token()), isCut);
    }
    // 4000 samples in WavPack, complete, before a tag that FFmpeg cannot read from a pipe.
    const std::string tagged = "wvpk<\0\0\0\x10\x04\0\0\xa0\x0f\0\0\0"
                               "\0\0\0\xa0\x0f\0\0\x04\x19\x80\0\x3f\xf9\xccn\x02\x01"
                               "WVC\x01@\0\x04\x02\0\xff\0\xff\x05\x03\0\0\0"
                               "\0\0\0\x09\x02\0\x08\0\0\x8a\x02\0\0\xff\x0f\xf4\0"s +
                               "APETAGEX" + std::string(24, '\0');
    std::jthread writer([&] { std::ofstream(pipe, std::ios::binary) << tagged; });
    EXPECT_EQ(readAll(*openAwaitedFFmpegMediaFile(pipe, never.get_token())).size(), 4000U);
    const auto emptied = write("emptied.wav", wavBytes(tone(60, 16000), 16000));
    const auto file = openFFmpegMediaFile(emptied);
    EXPECT_NE(file->read(), nullptr);
    std::filesystem::resize_file(emptied, 0);
    EXPECT_THROW(readAll(*file), MediaFileError);
}

TEST(StatedEndTests, EachFormatStatesTheEndOfItsSoundUnlessItIsUnknown) {
    using namespace std::string_literals;
    const std::string id3 = "ID3\4\0\0\0\0\1\x2"s + std::string(130, ' ') + "\xFF\xFB  ";
    const struct {
        std::string head;
        std::optional<std::uint64_t> end;
    } cases[] = {
        {"RIFF\0\0\0\0WAVEJUNK\0\0\0\0data\0\1\0\0"s, 284},
        {"RIFF\0\1\0\0AVI LIST"s, 264},
        {"RF64\xFF\xFF\xFF\xFFWAVEds64\x18\0\0\0--------\0\0\0\0\1\0\0\0data\xFF\xFF\xFF\xFF"s,
         (1ULL << 32) + 44},
        {"riff----data------------\x19\1\0\0\0\0\0\0"s, 289},
        {"riff----data------------\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F"s, std::nullopt},
        {"FORM----AIFFSSND\0\0\1\x8--------"s, 284},
        {"FORM----AIFFSSND\x7F\0\0\x8--------"s, std::nullopt}, // as SoX writes to a pipe
        {"caff----data\0\0\0\0\0\0\1\x4----"s, 280},
        {"\x1A\x45\xDF\xA3\x82--\x18\x53\x80\x67\x41\0"s, 269},
        {"\x1A\x45\xDF\xA3\x82--\x18\x53\x80\x67\x7F\xFF"s, std::nullopt},
        {id3 + "Xing\0\0\0\3----\0\0\1\0"s, 396},
        {id3 + "Info\0\0\0\1----"s, std::nullopt},
        {id3, std::nullopt},
    };
    for (const auto& [head, end] : cases)
        EXPECT_EQ(statedEnd(head), end) << head;
}

TEST_F(MediaFileTests, APipeIsWaitedForUntilTheWaitIsStopped) {
    const auto pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::stop_source stop;
    std::jthread impatient([&] { stop.request_stop(); });
    try {
        openAwaitedFFmpegMediaFile(pipe, stop.get_token());
        FAIL() << "a pipe was opened into which nobody writes";
    } catch (const MediaFileError& error) {
        EXPECT_EQ(error.kind(), Kind::cancelled);
    }
}

TEST_F(MediaFileTests, AFileThatCannotBePlayedIsReportedWithReasonAndPath) {
    std::string garbage(5000, '\0');
    for (std::size_t i = 0; i < garbage.size(); ++i)
        garbage[i] = static_cast<char>(i * i * 7 + i / 3);
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    const struct {
        std::filesystem::path path;
        std::vector<Kind> kinds;
    } cases[] = {
        {folder / "missing.wav", {Kind::cannotOpen}},
        {folder / "pipe", {Kind::notMedia}}, // nothing could end the wait for its data
        {folder.path(), {Kind::cannotOpen}},
        {write("empty.wav", ""), {Kind::notMedia, Kind::cannotOpen, Kind::damaged}},
        {write("garbage.mp4", garbage),
         {Kind::notMedia, Kind::noAudioTrack, Kind::damaged, Kind::unsupported}},
        {write("text.txt", "These are words.\n"), {Kind::notMedia, Kind::noAudioTrack}},
        {write("text.mp3", "These are words.\n"), {Kind::notMedia}},
        {write("head.wav", wavBytes({}, 16000, 1, 32000)), {Kind::damaged}},
        {write("short.wav", wavBytes({}, 16000, 1, 32000).substr(0, 40)), {Kind::damaged}},
        {write("rate.wav", wavBytes(tone(0.1, 16000), -16000)),
         {Kind::unsupported, Kind::notMedia, Kind::damaged}},
    };
    for (const auto& c : cases) {
        try {
            const auto file = openFFmpegMediaFile(c.path);
            readAll(*file);
            ADD_FAILURE() << c.path << " was read";
        } catch (const MediaFileError& error) {
            EXPECT_NE(std::find(c.kinds.begin(), c.kinds.end(), error.kind()), c.kinds.end())
                << c.path << ": " << static_cast<int>(error.kind()) << " " << error.what();
            EXPECT_NE(std::string(error.what()).find(c.path.string()), std::string::npos);
        }
    }
}

TEST_F(MediaFileTests, APlaylistOpensNoOtherFile) {
    write("other.wav", wavBytes(tone(1, 16000), 16000));
    for (const auto& [name, text] : {
             std::pair{"list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nother.wav\n"
                                    "#EXT-X-ENDLIST\n"},
             std::pair{"list.ffconcat", "ffconcat version 1.0\nfile other.wav\n"},
         }) {
        EXPECT_THROW(readAll(*openFFmpegMediaFile(write(name, text))), MediaFileError) << name;
    }
}

TEST_F(MediaFileTests, AnM4AWithItsIndexAtTheEndCannotComeThroughAPipe) {
    const auto pipe = folder / "pipe.wav";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);

    transcodeToM4A(write("long.wav", wavBytes(tone(60, 16000), 16000)), folder / "a.m4a", {}, {});
    const std::stop_source never;
    const std::jthread writer(
        [&] { std::ofstream(pipe, std::ios::binary) << testing::contentsOf(folder / "a.m4a"); });
    try {
        openAwaitedFFmpegMediaFile(pipe, never.get_token());
        ADD_FAILURE() << "it was opened";
    } catch (const MediaFileError& error) {
        EXPECT_NE(std::string(error.what()).find("pipe; save"), std::string::npos) << error.what();
    }
}

TEST_F(MediaFileTests, DamageAnywhereDoesNotMakeReadingEndless) {
    const auto wav = write("whole.wav", wavBytes(tone(3, 16000), 16000));
    transcodeToM4A(wav, folder / "whole.m4a", [](double) {}, {});
    std::mt19937 random(7);
    for (const char* name : {"whole.wav", "whole.m4a"}) {
        const std::string whole = testing::contentsOf(folder / name);
        for (int round = 0; round < 60; ++round) {
            // Each format has its headers at one of the two ends. Damage may lengthen the sound,
            // but at most tenfold.
            std::string damaged = whole;
            for (int flips = 0; flips <= round % 4; ++flips) {
                const std::size_t at = random() % 60;
                const std::size_t place = random() % 2 ? at : damaged.size() - 1 - at * 10;
                damaged[place] = static_cast<char>(damaged[place] ^ (1 << random() % 8));
            }
            try {
                const auto file = openFFmpegMediaFile(write("damaged", damaged));
                EXPECT_LE(readAll(*file).size(), std::size_t{3 * 16000 * 10}) << round;
            } catch (const MediaFileError&) {
            }
        }
    }
}

TEST_F(MediaFileTests, TranscodesToASmallFileOfTheSameLength) {
    std::vector<double> fractions;
    const auto source = write("a.wav", wavBytes(tone(20.3, 48000, 500, 2), 48000, 2));
    transcodeToM4A(source, folder / "a.m4a",
                   [&](double fraction) { fractions.push_back(fraction); }, {});
    const auto file = openFFmpegMediaFile(folder / "a.m4a");
    EXPECT_EQ(file->format(), (AudioFormat{16000, 1}));
    EXPECT_NEAR(file->duration().value_or(0), 20.3, 0.1);
    const auto samples = readAll(*file);
    EXPECT_NEAR(static_cast<double>(samples.size()), 20.3 * 16000, 2048);
    double energy = 0;
    int crossings = 0;
    for (std::size_t i = 16000; i < 176000; ++i) {
        energy += samples[i] * samples[i];
        crossings += (samples[i - 1] < 0) != (samples[i] < 0);
    }
    EXPECT_NEAR(std::sqrt(energy / 160000), 0.354, 0.03); // 0.5 of full scale, divided by √2
    EXPECT_NEAR(crossings, 10000, 20) << "500 Hz over ten seconds";
    const auto size = std::filesystem::file_size(folder / "a.m4a");
    EXPECT_NEAR(static_cast<double>(size), 20.3 * 32000 / 8, 30000);
    EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
    EXPECT_GT(fractions.size(), 50U);
    EXPECT_EQ(fractions.back(), 1);
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(folder / "a.m4a").permissions() &
                  (perms::group_all | perms::others_all),
              perms::none)
        << "only the user may access the recording";
}

TEST_F(MediaFileTests, AnM4AGrowsUnderATemporaryNameUntilItIsFinished) {
    const auto samples = tone(5, 48000);
    for (const bool isFinished : {false, true}) {
        auto file = createM4A(folder / "a.m4a", {48000, 1});
        for (std::size_t at = 0; at < samples.size(); at += 777) {
            const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(at);
            const auto left = static_cast<std::ptrdiff_t>(std::min(samples.size() - at, 777UL));
            file->append({{48000, 1}, {begin, begin + left}});
        }
        EXPECT_FALSE(std::filesystem::exists(folder / "a.m4a"));
        EXPECT_TRUE(std::filesystem::exists(folder / "a.m4a.part"));
        if (isFinished)
            file->finish();
        file.reset();
        EXPECT_FALSE(std::filesystem::exists(folder / "a.m4a.part"));
        EXPECT_EQ(std::filesystem::exists(folder / "a.m4a"), isFinished);
    }
    EXPECT_NEAR(openFFmpegMediaFile(folder / "a.m4a")->duration().value_or(0), 5, 0.1);
}

TEST_F(MediaFileTests, ATranscodingThatFailsLeavesTheFormerFile) {
    const auto source = write("a.wav", wavBytes(tone(5, 16000), 16000));
    const auto check = [&](const std::filesystem::path& from, const std::filesystem::path& to,
                           Kind kind, std::stop_token stop = {}) {
        try {
            transcodeToM4A(from, to, {}, stop);
            ADD_FAILURE() << "transcoded: " << to;
        } catch (const MediaFileError& error) {
            EXPECT_EQ(error.kind(), kind) << error.what();
            EXPECT_EQ(std::string(error.what()).find("No such file"), std::string::npos);
        }
    };
    setLocalizationTable({{"No such file or directory", "没有那个文件或目录"}});
    std::stop_source stopped;
    stopped.request_stop();
    const auto old = write("old.m4a", "old");
    check(source, old, Kind::cancelled, stopped.get_token());
    check(folder / "missing.wav", old, Kind::cannotOpen);
    check(source, folder / "no folder" / "a.m4a", Kind::cannotCreate);
    setLocalizationTable({});
    EXPECT_EQ(testing::contentsOf(old), "old");
    std::filesystem::create_symlink("/dev/full", folder / "full.m4a.part");
    check(source, folder / "full.m4a", Kind::cannotCreate);
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        files += entry.path().extension() == ".part" ? 100 : 1;
    EXPECT_EQ(files, 2U) << "a partial file counts as 100";
}

TEST(AtempoConverterTests, ChangesTheLengthButNotThePitch) {
    // Qt applies the user's locale with its decimal comma. Where the system cannot create such a
    // locale, the rest is still tested.
    const testing::TemporaryFolder locales;
    const std::string locale = (locales / "de_DE.UTF-8").string();
    (void)std::system(("localedef -i de_DE -f UTF-8 " + locale).c_str());
    setenv("LOCPATH", locales.path().c_str(), 1);
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    for (const double rate : {0.5, 0.8, 1.25, 2.0, 2.5, 3.0}) {
        const auto converter = makeAtempoConverter({16000, 2}, rate);
        AudioBuffer all{{16000, 2}, {}};
        const auto take = [&](const AudioBuffer& made) {
            all.samples.insert(all.samples.end(), made.samples.begin(), made.samples.end());
        };
        const auto sound = tone(4, 16000, 500, 2);
        constexpr std::size_t soundsFrom = std::size_t{2} * 16000 * 2; // silence for two seconds
        for (std::size_t at = 0; at < sound.size(); at += 1000) {
            AudioBuffer block{{16000, 2}, std::vector<float>(1000)};
            for (std::size_t i = at; i < at + 1000 && at >= soundsFrom; ++i)
                block.samples[i - at] = static_cast<float>(sound[i]) / 32768.0F;
            take(converter->convert(block));
        }
        take(converter->flush());
        EXPECT_NEAR(all.seconds(), 4 / rate, 0.04) << rate;
        std::size_t onset = 0;
        while (onset < all.frames() && std::abs(all.samples[2 * onset]) < 0.1F)
            ++onset;
        EXPECT_NEAR(static_cast<double>(onset) / 16000, 2 / rate, 0.09) << rate;
        int crossings = 0;
        const std::size_t from = onset + 1600;
        for (std::size_t i = from; i < from + 6400; ++i)
            crossings += (all.samples[2 * i] < 0) != (all.samples[2 * i + 2] < 0);
        EXPECT_NEAR(crossings, 400, 8) << "500 Hz at " << rate;
    }
    std::setlocale(LC_NUMERIC, "C");
    EXPECT_THROW(makeAtempoConverter({0, 2}, 1.5), AudioConversionError);
}

TEST(SwresampleConverterTests, KeepsTheToneAndTheLengthOfMixedChannelsOfAnyPhase) {
    for (const auto& [channels, right] : {std::pair{2, 1.0F}, {2, -1.0F}, {10, 1.0F}}) {
        const auto converter = makeSwresampleConverter({48000, channels}, {16000, 1});
        std::vector<float> converted;
        const auto take = [&](const AudioBuffer& buffer) {
            EXPECT_EQ(buffer.format, (AudioFormat{16000, 1}));
            converted.insert(converted.end(), buffer.samples.begin(), buffer.samples.end());
        };
        const auto samples = tone(2, 48000, 500, channels);
        for (std::size_t at = 0; at < samples.size(); at += 960) {
            AudioBuffer buffer{{48000, channels}, {}};
            for (std::size_t i = at; i < at + 960; ++i)
                buffer.samples.push_back((i % 2 == 0 ? 1 : right) * static_cast<float>(samples[i]) /
                                         32768.0f);
            take(converter->convert(buffer));
        }
        take(converter->flush());
        EXPECT_NEAR(static_cast<double>(converted.size()), 32000, 40);
        int crossings = 0;
        double energy = 0;
        for (std::size_t i = 4001; i < 28000; ++i) {
            crossings += (converted[i - 1] < 0) != (converted[i] < 0);
            energy += converted[i] * converted[i];
        }
        EXPECT_NEAR(crossings, 1500, 3) << "500 Hz over a second and a half";
        EXPECT_NEAR(std::sqrt(energy / 23999), 0.354, 0.02);
    }
    EXPECT_THROW(makeSwresampleConverter({0, 2}, {16000, 1}), std::runtime_error);
}

} // namespace
} // namespace tessarune
