#include "TessaruneCore/recognition/ASREventRecord.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cmath>
#include <tuple>

namespace tessarune {
namespace {

using Words = std::vector<ASRWordTiming>;

constexpr auto partialLine =
    R"({"t":1760000000.25,"kind":"partial","text":"hello wor","revision":7,"timestamp":1760000000.24})";
constexpr auto finalLine =
    R"({"t":1760000001.5,"kind":"final","text":"Hello world.","start":0.1,"end":1.4,"reason":"engineFinal","words":[{"word":"Hello","start":0.1,"end":0.6}]})";

std::optional<ASREvent> event(std::string_view line) {
    const auto record = ASREventRecord::fromLine(line);
    return record ? record->asEvent() : std::nullopt;
}

TEST(ASREventRecordTests, LinesHaveTheFieldsInTheirOrder) {
    const auto partial = ASREvent::partial("hello wor", 7, 1760000000.24);
    EXPECT_EQ(ASREventRecord(1760000000.25, partial).line(), partialLine);
    EXPECT_EQ(event(partialLine), partial);
    const auto final = ASREvent::final("Hello world.", 0.1, 1.4, EndpointReason::engineFinal,
                                       Words{{"Hello", 0.1, 0.6}});
    EXPECT_EQ(ASREventRecord(1760000001.5, final).line(), finalLine);
    EXPECT_EQ(event(finalLine), final);
}

TEST(ASREventRecordTests, AbsentFieldsAndUnknownReasonsGetDefaults) {
    const std::pair<const char*, std::optional<ASREvent>> cases[] = {
        {R"({"t":2,"kind":"partial","text":" a "})", ASREvent::partial(" a ", 0, 2)},
        {R"({"t":2,"kind":"final","text":""})", ASREvent::final("", 2, 2, EndpointReason::silence)},
        {R"({"t":2,"kind":"final","text":"a","start":1,"reason":"Manual","words":[]})",
         ASREvent::final("a", 1, 2, EndpointReason::silence, Words{})},
        {R"({"t":2,"kind":"final","text":"a","end":3,"reason":"hardLimit","words":null})",
         ASREvent::final("a", 2, 3, EndpointReason::hardLimit)},
        {R"({"t":2,"kind":"Partial","text":"a"})", std::nullopt},
    };
    for (const auto& [line, expected] : cases) {
        ASSERT_TRUE(ASREventRecord::fromLine(line)) << line;
        EXPECT_EQ(event(line), expected) << line;
    }
}

TEST(ASREventRecordTests, RecordsInUnusualJSONAreRead) {
    const char* const lines[] = {
        "{\"t\":1,\"kind\":\"partial\",\"text\":\"a\",\"revision\":7}\r",
        R"({"t":"x","t":1,"kind":"partial","text":"b","text":"a","revision":0.5,"revision":7})",
        R"({"t":1,"x":{"t":[2,{"text":"b"}]},"kind":"partial","text":"a","revision":7,"y":[[],{}]})",
        R"({"t":1,"kind":"partial","text":"a","revision":7,"words":5,"words":[{"word":"w"}],"words":null})",
    };
    for (const auto* line : lines) {
        const auto record = ASREventRecord::fromLine(line);
        ASSERT_TRUE(record) << line;
        EXPECT_EQ(record->asEvent(), ASREvent::partial("a", 7, 1)) << line;
        EXPECT_EQ(record->t, 1) << line;
    }
}

TEST(ASREventRecordTests, LinesThatAreNotRecordsAreRefused) {
    const std::string good = R"({"t":1,"kind":"final","text":"a")";
    const std::string lines[] = {
        "",
        "null",
        good + "}" + std::string(1, '\0'),
        "\xEF\xBB\xBF" + good + "}",
        R"({"kind":"final","text":"a"})",
        R"({"t":1,"text":"a"})",
        R"({"t":1,"kind":"final"})",
        R"({"t":null,"kind":"final","text":"a"})",
        R"({"t":"1","kind":"final","text":"a"})",
        R"({"t":true,"kind":"final","text":"a"})",
        R"({"t":1e999,"kind":"final","text":"a"})",
        good + R"(,"text":5})",
        good + R"(,"revision":1.5})",
        good + R"(,"revision":9223372036854775808})",
        good + R"(,"timestamp":"1"})",
        good + R"(,"start":{}})",
        good + R"(,"end":[1]})",
        good + R"(,"reason":1})",
        good + R"(,"words":{}})",
        good + R"(,"words":[null]})",
        good + R"(,"words":[[{"word":"a","start":1,"end":2}]]})",
        good + R"(,"words":[{"word":"a","start":1,"end":2},{"word":"a","start":1}]})",
        good + R"(,"words":[{"word":"a","start":1,"end":"2"}]})",
        good + ",\"x\":\"\xE4\xBD\"}",
        good + ",\"x\":" + std::string(100000, '[') + std::string(100000, ']') + "}",
    };
    for (const auto& line : lines)
        EXPECT_FALSE(ASREventRecord::fromLine(line)) << line.substr(0, 200);
}

TEST(ASREventRecordTests, ARecordWithANumberThatIsNotFiniteHasNoLine) {
    for (const double number : {HUGE_VAL, -HUGE_VAL, std::nan("")}) {
        EXPECT_FALSE(ASREventRecord(number, ASREvent::partial("", 0, 0)).line());
        const Words words{{"a", 0, number}};
        EXPECT_FALSE(
            ASREventRecord(0, ASREvent::final("", 0, 0, EndpointReason::silence, words)).line());
    }
}

// Texts that need escapes, and numbers of every size.
rc::Gen<std::string> anyText() {
    const std::vector<std::string> pieces{"a",  " ",      "\"",   "\\", "/",       "\n",
                                          "\r", "\u007F", "\x01", "é",  "e\u0301", "中",
                                          "😀",  "\u2028", "{",    "}",  ","};
    return rc::gen::map(rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(pieces)),
                        [](const std::vector<std::string>& parts) {
                            std::string text(1, '\0');
                            for (const auto& part : parts)
                                text += part;
                            return text.substr(parts.size() % 2);
                        });
}

rc::Gen<double> anyNumber() {
    return rc::gen::suchThat(
        rc::gen::map(rc::gen::arbitrary<std::uint64_t>(),
                     [](std::uint64_t bits) { return std::bit_cast<double>(bits); }),
        [](double number) { return std::isfinite(number); });
}

template <typename Value>
rc::Gen<std::optional<Value>> maybe(rc::Gen<Value> value) {
    return rc::gen::oneOf(rc::gen::construct<std::optional<Value>>(std::move(value)),
                          rc::gen::construct<std::optional<Value>>());
}

ASREventRecord anyRecord() {
    const auto number = maybe(anyNumber());
    const auto word = rc::gen::construct<ASRWordTiming>(anyText(), anyNumber(), anyNumber());
    ASREventRecord record;
    record.t = *anyNumber();
    record.kind = *rc::gen::element<std::string>("partial", "final", "other");
    record.text = *anyText();
    record.revision = *maybe(rc::gen::arbitrary<std::int64_t>());
    record.timestamp = *number;
    record.start = *number;
    record.end = *number;
    record.reason = *maybe(anyText());
    record.words = *maybe(rc::gen::container<Words>(word));
    return record;
}

/// Compares the lines, too, because equal words may differ in their bytes.
bool same(const std::optional<ASREventRecord>& a, const std::optional<ASREventRecord>& b) {
    const auto fields = [](const ASREventRecord& r) {
        return std::tie(r.t, r.kind, r.text, r.revision, r.timestamp, r.start, r.end, r.reason,
                        r.words);
    };
    return a && b ? fields(*a) == fields(*b) && a->line() == b->line()
                  : a.has_value() == b.has_value();
}

RC_GTEST_PROP(ASREventRecordPropertyTests, AWrittenRecordIsReadBackUnchanged, ()) {
    const auto record = anyRecord();
    const auto line = record.line();
    RC_ASSERT(line && line->find('\n') == std::string::npos);
    RC_ASSERT(same(ASREventRecord::fromLine(*line), record));
}

} // namespace
} // namespace tessarune
