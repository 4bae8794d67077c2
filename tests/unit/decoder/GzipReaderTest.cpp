#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "base/RuntimeError.h"
#include "decoder/GzipReader.h"
#include "support/decoder/DecoderPacks.h"

namespace trelv::decoder {
namespace {

constexpr std::uint64_t kNoLimit = ~std::uint64_t{0};

struct Answer {
  std::string bytes;
  std::string failure;
  std::uint64_t contentEnd = 0;
};

Answer unpacked(MemoryPack input, std::uint64_t limit = kNoLimit) {
  Answer answer;
  try {
    GzipReader reader(input, limit);
    for (std::string_view bytes = reader.next(); !bytes.empty(); bytes = reader.next()) {
      answer.bytes += bytes;
      EXPECT_EQ(reader.position(), answer.bytes.size());
    }
    answer.contentEnd = reader.contentEnd();
  } catch (const RuntimeError& failure) {
    answer.failure = failure.description();
  }
  return answer;
}

std::string failureOf(const std::string& bytes) { return unpacked(MemoryPack(bytes)).failure; }

std::string sample(std::size_t size) {
  std::string text;
  for (std::size_t index = 0; text.size() < size; ++index) {
    text += std::to_string(index * index) + " ";
  }
  text.resize(size);
  return text;
}

TEST(GzipReader, GivesWhatWasPackedInPiecesOfAnyLength) {
  const auto expectGiven = [](std::size_t size, std::size_t piece) {
    const std::string text = sample(size);
    const Answer answer = unpacked(MemoryPack(gzip(text), piece));
    EXPECT_EQ(answer.failure, "");
    EXPECT_TRUE(answer.bytes == text) << size << " in pieces of " << piece;
  };
  for (const std::size_t size : {0U, 1U, 262143U, 262144U, 262145U, 1000000U}) {
    expectGiven(size, 1U << 20U);
  }
  for (const std::size_t piece : {1U, 2U, 7U, 100U}) {
    expectGiven(3000, piece);
  }
}

TEST(GzipReader, MembersOneAfterTheOtherAndZerosBehindThemAreOneText) {
  for (const std::size_t zeros : {0U, 1U, 511U, 300000U}) {
    const Answer answer = unpacked(
        MemoryPack(gzip("one ") + gzip("") + gzip("two") + std::string(zeros, '\0'), 1000));
    EXPECT_EQ(answer.failure, "");
    EXPECT_EQ(answer.bytes, "one two");
  }
}

TEST(GzipReader, WhatIsNoPackIsRefused) {
  const std::string text = gzip("text");
  constexpr const char* garbage = "dati estranei dopo la fine del pacco";
  std::string sum = text;
  sum[sum.size() - 8] = static_cast<char>(sum[sum.size() - 8] ^ 1);
  std::string length = text;
  length.back() = 1;
  const std::pair<std::string, const char*> rows[]{
      {"", "pacco vuoto"},
      {"PK\x03\x04 a zip archive", "il file non è un pacco gzip"},
      {std::string(10240, '\0'), "il file non è un pacco gzip"},
      {"\x1F\x9D of compress, of compress", "pacco danneggiato (incorrect header check)"},
      {sum, "pacco danneggiato (incorrect data check)"},
      {length, "pacco danneggiato (incorrect length check)"},
      {text + "x", garbage},
      {text + std::string(1, '\0') + "x", garbage},
      {text + std::string(200000, '\0') + "x", garbage},
      {text + std::string(3, '\0') + gzip("more"), garbage}};
  for (const auto& [bytes, failure] : rows) {
    EXPECT_EQ(failureOf(bytes), failure);
  }
}

TEST(GzipReader, APackCutOffAnywhereIsRefused) {
  const std::string whole = gzip(sample(2000));
  for (std::size_t length = 1; length < whole.size(); ++length) {
    EXPECT_EQ(failureOf(whole.substr(0, length)), "pacco troncato") << length;
  }
  EXPECT_EQ(failureOf(whole + whole.substr(0, 5)), "pacco troncato");
}

TEST(GzipReader, ADamagedByteAnywhereIsNoticed) {
  const std::string text = sample(2000);
  const std::string whole = gzip(text);
  // Behind the header, which has no sum of its own.
  for (std::size_t at = 10; at < whole.size(); ++at) {
    std::string damaged = whole;
    damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
    EXPECT_NE(failureOf(damaged), "") << at;
  }
}

TEST(GzipReader, MoreThanTheLimitIsRefused) {
  EXPECT_EQ(unpacked(MemoryPack(gzip(sample(1000000))), 1000000).failure, "");
  EXPECT_EQ(unpacked(MemoryPack(gzip(sample(1000000))), 999999).failure,
            "il contenuto supera il limite di dimensione");
}

TEST(GzipReader, KnowsWhereTheLastByteIsThatIsNotZero) {
  const std::string zeros(300000, '\0');
  EXPECT_EQ(unpacked(MemoryPack(gzip("ab" + zeros))).contentEnd, 2U);
  EXPECT_EQ(unpacked(MemoryPack(gzip(zeros + "c" + zeros))).contentEnd, 300001U);
  EXPECT_EQ(unpacked(MemoryPack(gzip(zeros))).contentEnd, 0U);
}

TEST(GzipReader, AFailureOfReadingTellsThePath) {
  MemoryPack input(gzip("text").substr(0, 12));
  input.atEnd = system_code::kNetNameDeleted;
  EXPECT_EQ(unpacked(input).failure.substr(0, 35), "Percorso di rete non più disponibi");
}

}  // namespace
}  // namespace trelv::decoder
