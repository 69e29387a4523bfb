#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "quillback/recognition/process/Message.h"

namespace voxtrel::quillback {
namespace {

using namespace std::chrono_literals;
using Kind = Message::Kind;

/// Sends it one byte at a time.
Message received(const Message& message) {
  MessageReader reader;
  const std::string bytes = encoded(message);
  for (std::size_t at = 0; at + 1 < bytes.size(); ++at) {
    reader.append(bytes.substr(at, 1));
    EXPECT_FALSE(reader.next().value());
  }
  reader.append(bytes.substr(bytes.size() - 1));
  return reader.next().value().value();
}

TEST(MessageTest, SamplesArriveAsTheyWereSent) {
  const std::vector<std::int16_t> samples{0, -1, 32767, -32768, 257};
  EXPECT_EQ(readSamples(received(samplesMessage(samples))), samples);
  EXPECT_EQ(readSamples(received(samplesMessage({}))), std::vector<std::int16_t>{});
}

TEST(MessageTest, ALoadReportArrivesAsItWasSent) {
  for (const bool isUsable : {true, false}) {
    const auto report = readLoaded(received(loadedMessage({isUsable, {"one", "", "three\n"}})));
    ASSERT_TRUE(report);
    EXPECT_EQ(report->isUsable, isUsable);
    EXPECT_EQ(report->lines, (std::vector<std::string>{"one", "", "three\n"}));
  }
}

TEST(MessageTest, ATranscriptionArrivesAsItWasSent) {
  const Transcription sent{"Grüße!", 12us, std::chrono::microseconds::max(), {"a line"}};
  const auto result = readResult(received(resultMessage(sent)));
  ASSERT_TRUE(result);
  EXPECT_EQ(result->text, sent.text);
  EXPECT_EQ(result->encode, sent.encode);
  EXPECT_EQ(result->decode, sent.decode);
  EXPECT_EQ(result->lines, sent.lines);
}

TEST(MessageTest, MessagesThatArriveTogetherAreTakenOneByOne) {
  MessageReader reader;
  reader.append(encoded({Kind::begin, {}}) + encoded({Kind::finish, {}}) +
                encoded({Kind::drop, {}}).substr(0, 2));
  EXPECT_EQ(reader.next().value()->kind, Kind::begin);
  EXPECT_EQ(reader.next().value()->kind, Kind::finish);
  EXPECT_FALSE(reader.next().value());
  reader.append(encoded({Kind::drop, {}}).substr(2));
  EXPECT_EQ(reader.next().value()->kind, Kind::drop);
  EXPECT_FALSE(reader.next().value());
}

TEST(MessageTest, AnUnknownKindIsBroken) {
  for (const char kind : {'\0', '\x08', '\xff'}) {
    MessageReader reader;
    reader.append(std::string(1, kind) + std::string(4, '\0'));
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.next());
  }
}

TEST(MessageTest, ALongMessageIsTakenAndAnOversizedOneIsBrokenBeforeItHasArrived) {
  const Message longest{Kind::result, std::string(kMaxMessageBytes, 'x')};
  MessageReader reader;
  reader.append(encoded(longest));
  EXPECT_EQ(reader.next().value()->content, longest.content);
  reader.append(encoded({Kind::result, std::string(kMaxMessageBytes + 1, 'x')}).substr(0, 5));
  EXPECT_FALSE(reader.next());
}

TEST(MessageTest, AnotherKindIsNotRead) {
  EXPECT_FALSE(readSamples({Kind::result, "xx"}));
  EXPECT_FALSE(readLoaded({Kind::samples, loadedMessage({true, {}}).content}));
  EXPECT_FALSE(readResult({Kind::loaded, resultMessage({}).content}));
}

TEST(MessageTest, ContentThatIsCutOrTooLongIsNotRead) {
  EXPECT_FALSE(readSamples({Kind::samples, "odd"}));
  const std::string loaded = loadedMessage({true, {"a", "b"}}).content;
  const std::string result = resultMessage({"text", 1us, 2us, {"a"}}).content;
  for (std::size_t size = 0; size < loaded.size(); ++size) {
    EXPECT_FALSE(readLoaded({Kind::loaded, loaded.substr(0, size)})) << size;
  }
  for (std::size_t size = 0; size < result.size(); ++size) {
    EXPECT_FALSE(readResult({Kind::result, result.substr(0, size)})) << size;
  }
  EXPECT_FALSE(readLoaded({Kind::loaded, loaded + "x"}));
  EXPECT_FALSE(readResult({Kind::result, result + "x"}));
}

TEST(MessageTest, ACountOfLinesThatCannotBeTrueIsNotBelieved) {
  EXPECT_FALSE(readLoaded({Kind::loaded, "\x01\xff\xff\xff\xff"}));
}

}  // namespace
}  // namespace voxtrel::quillback
