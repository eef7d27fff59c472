#include "TessaruneCore/host/SimulatedHost.h"
#include "TessaruneCore/recognition/ASREventLog.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <system_error>

namespace tessarune {
using testing::contentsOf;
using testing::TemporaryFolder;
using testing::writeContents;

namespace {

const std::string first = R"({"t":1.0,"kind":"partial","text":"a","revision":0,"timestamp":1.0})";

std::vector<std::string> texts(const std::vector<ASREventRecord>& records) {
    std::vector<std::string> result;
    for (const auto& record : records)
        result.push_back(record.text);
    return result;
}

TEST(ASREventLogTests, EachRecordBecomesALineWithoutDelayingTheCaller) {
    TemporaryFolder folder;
    SimulatedHost host(5.5);
    const auto path = folder / "events.ndjson";
    auto writer = ASREventLog::Writer::open(host, path);
    ASSERT_TRUE(writer);
    writer->append(ASREvent::partial("a", 0, 1), 1);
    EXPECT_EQ(contentsOf(path), "") << "the caller must not wait for the disk";
    host.runUntilIdle();
    EXPECT_EQ(contentsOf(path), first + "\n");
    writer->append(ASREvent::partial("infinite", 0, 1.0 / 0.0));
    writer->append(ASREvent::final(" b\n", 2, 3, EndpointReason::manual));
    writer->close();
    writer->append(ASREvent::partial("too late", 0, 1));
    writer->close();
    EXPECT_EQ(
        contentsOf(path),
        first + "\n" +
            R"({"t":5.5,"kind":"final","text":" b\n","start":2.0,"end":3.0,"reason":"manual"})" +
            "\n");
    EXPECT_EQ(texts(ASREventLog::read(path)), (std::vector<std::string>{"a", " b\n"}));
}

TEST(ASREventLogTests, DestroyingTheWriterWritesQueuedRecords) {
    TemporaryFolder folder;
    SimulatedHost host;
    const auto path = folder / "events.ndjson";
    ASREventLog::Writer::open(host, path)->append(ASREvent::partial("a", 0, 1), 1);
    EXPECT_EQ(contentsOf(path), first + "\n");
}

TEST(ASREventLogTests, ALaterWriterTruncatesTheFileOfAnEarlierOne) {
    TemporaryFolder folder;
    SimulatedHost host;
    const auto path = folder / "events.ndjson";
    auto earlier = ASREventLog::Writer::open(host, path);
    earlier->append(ASREvent::partial("lost", 0, 1), 1);
    host.runUntilIdle();
    auto later = ASREventLog::Writer::open(host, path);
    EXPECT_EQ(contentsOf(path), "");
    earlier->append(ASREvent::partial("a", 0, 1), 1);
    earlier->close();
    EXPECT_EQ(contentsOf(path), first + "\n") << "the earlier writer continues at the new end";
    EXPECT_FALSE(ASREventLog::Writer::open(host, folder.path()));
    EXPECT_FALSE(ASREventLog::Writer::open(host, folder / "missing/events.ndjson"));
}

TEST(ASREventLogTests, ReadingSkipsLinesThatAreNotRecordsAndSortsByTime) {
    const auto line = [](double t, const std::string& text) {
        return *ASREventRecord(t, ASREvent::partial(text, 0, 0)).line() + "\n";
    };
    struct Case {
        const char* what;
        std::string contents;
        std::vector<std::string> texts;
    };
    const Case cases[] = {
        {"an empty file", "", {}},
        {"only line feeds", "\n\n\n", {}},
        {"no line feed at the end", first, {"a"}},
        {"carriage returns", "\r\n" + first + "\r\n" + first + "\r", {"a", "a"}},
        {"a damaged line between", line(1, "a") + "{\"t\":1,\"ki\n" + line(1, "b"), {"a", "b"}},
        {"NUL bytes", line(1, "a") + std::string(100, '\0') + "\n" + line(1, "b"), {"a", "b"}},
        {"a byte order mark", "\xEF\xBB\xBF" + line(1, "a") + line(1, "b"), {"b"}},
        {"a JSON array, read line by line", "[\n" + first + ",\n" + first + "\n]\n", {"a"}},
        {"times out of order",
         line(3, "d") + line(2, "b") + line(1, "a") + line(2, "c") + line(-1, "z"),
         {"z", "a", "b", "c", "d"}},
    };
    TemporaryFolder folder;
    const auto path = folder / "events.ndjson";
    for (const auto& c : cases) {
        writeContents(path, c.contents);
        EXPECT_EQ(texts(ASREventLog::read(path)), c.texts) << c.what;
    }
}

TEST(ASREventLogTests, ALogThatIsCutAnywhereGivesItsWholeLines) {
    const auto line = [](const std::string& text) {
        return *ASREventRecord(1, ASREvent::final(text, 0, 1, EndpointReason::silence)).line();
    };
    const std::string earlier = line("海é😀") + "\n";
    const std::string last = line("天气很好。é😀");
    const TemporaryFolder folder;
    const auto path = folder / "events.ndjson";
    for (std::size_t size = 0; size <= last.size(); ++size) {
        writeContents(path, earlier + last.substr(0, size));
        EXPECT_EQ(ASREventLog::read(path).size(), size < last.size() ? 1u : 2u) << size;
    }
    writeContents(path, "\xE6");
    EXPECT_TRUE(ASREventLog::read(path).empty()) << "a character that is cut at the end is skipped";
    writeContents(path, "\x80");
    EXPECT_THROW(ASREventLog::read(path), std::exception) << "a last byte alone is not valid UTF-8";
}

TEST(ASREventLogTests, ADeviceWithoutEndIsRefused) {
    EXPECT_THROW(ASREventLog::read("/dev/zero"), std::system_error);
    EXPECT_TRUE(ASREventLog::read("/dev/null").empty());
}

TEST(ASREventLogTests, LongLinesAndManyLinesAreRead) {
    TemporaryFolder folder;
    const auto path = folder / "events.ndjson";
    std::string contents;
    for (int i = 0; i < 20000; ++i) // each time occurs twice, shuffled: 7919 and 10000 are coprime
        contents += "{\"t\":" + std::to_string(i / 2 * 7919 % 10000) +
                    ",\"kind\":\"x\",\"text\":\"" + std::to_string(i) + "\"}\n";
    contents += R"({"t":20000,"kind":"x","text":")" + std::string(2'000'000, 'a') + "\"}\n";
    contents += std::string(1'000'000, '[') + "\n";
    writeContents(path, contents);
    const auto records = ASREventLog::read(path);
    ASSERT_EQ(records.size(), 20001u);
    EXPECT_EQ(records.back().text.size(), 2'000'000u);
    for (std::size_t i = 0; i < 20000; ++i) {
        ASSERT_EQ(records[i].t, static_cast<double>(i / 2));
        ASSERT_EQ(std::stoi(records[i].text) % 2, static_cast<int>(i % 2)) << "equal times swapped";
    }
}

} // namespace
} // namespace tessarune
