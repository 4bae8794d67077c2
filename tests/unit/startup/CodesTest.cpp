#include <gtest/gtest.h>

#include <functional>
#include <tuple>
#include <utility>

#include "base/Codes.h"
#include "base/RuntimeError.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvLibrary {
namespace {

const std::vector<std::pair<std::string, std::int16_t>> kProgramCodes{
    {"UNDEFINED", 0}, {"VIRADO", 11}, {"NERIO", 12},  {"LUDA", 21}, {"MVBIL", 31},
    {"MVCON", 32},    {"MVICAD", 33}, {"MVPERS", 34}, {"Q2", 41},   {"ZM", 51},
    {"KXK", 61},      {"RR", 71},     {"VELTRA", 81}};
const std::vector<std::pair<std::string, std::int16_t>> kProductCodes{
    {"UNDEFINED", 0}, {"NERIO", 10}, {"LUDA", 20}, {"ZB", 30},    {"Q2", 40},
    {"ZM", 50},       {"KXK", 60},   {"RR", 70},   {"VELTRA", 80}};

/// Number, source and description.
using Failure = std::tuple<std::int32_t, std::string, std::string>;

Failure failureOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const RuntimeError& failure) {
    return {failure.number(), failure.source(), failure.description()};
  }
  return {0, "nothing was raised", ""};
}

TEST(Codes, SidesHaveTheNamesThatBuildIniKeys) {
  EXPECT_EQ("None", ConvertClientServerToString(Side::None));
  EXPECT_EQ("Client", ConvertClientServerToString(Side::Client));
  EXPECT_EQ("Server", ConvertClientServerToString(Side::Server));
  EXPECT_EQ("ClientServer", ConvertClientServerToString(Side::ClientServer));
}

TEST(Codes, OperationsHaveTheNamesThatBuildIniSections) {
  EXPECT_EQ("Setup", ConvertSetupUpdateToString(Operation::Setup));
  EXPECT_EQ("Update", ConvertSetupUpdateToString(Operation::Update));
  EXPECT_EQ("Remove", ConvertSetupUpdateToString(Operation::Remove));
  EXPECT_EQ("Exec", ConvertSetupUpdateToString(Operation::Exec));
}

TEST(Codes, OfProgramsAndProductsConvertBothWays) {
  for (const auto& [text, number] : kProgramCodes) {
    EXPECT_EQ(number, ConvertProgramToNumber(text)) << text;
    EXPECT_EQ(text, ConvertNumberToProgram(number)) << number;
  }
  for (const auto& [text, number] : kProductCodes) {
    EXPECT_EQ(Product{number}, ConvertProductToNumber(text)) << text;
    EXPECT_EQ(text, ConvertNumberToProduct(Product{number})) << number;
  }
}

/// Which numbers below 1000 a conversion knows.
std::vector<std::int16_t> numbersKnownTo(const std::function<void(std::int16_t)>& conversion) {
  std::vector<std::int16_t> known;
  for (std::int16_t number = 0; number < 1000; ++number) {
    if (std::get<0>(failureOf([&] { conversion(number); })) == 0) {
      known.push_back(number);
    }
  }
  return known;
}

TEST(Codes, OfNoOtherProgramsAndProductsAreKnown) {
  const auto numbersOf = [](const std::vector<std::pair<std::string, std::int16_t>>& codes) {
    std::vector<std::int16_t> numbers;
    for (const auto& [text, number] : codes) {
      numbers.push_back(number);
    }
    return numbers;
  };
  EXPECT_EQ(numbersOf(kProgramCodes),
            numbersKnownTo([](std::int16_t number) { ConvertNumberToProgram(number); }));
  EXPECT_EQ(numbersOf(kProductCodes),
            numbersKnownTo([](std::int16_t number) { ConvertNumberToProduct(Product{number}); }));
}

TEST(Codes, EachProgramBelongsToAProductThatHasACode) {
  for (const auto& [text, number] : kProgramCodes) {
    const Product product = ProgramToProduct(number);
    EXPECT_NO_THROW(ConvertNumberToProduct(product)) << text;
  }
}

TEST(Codes, UnknownNumbersRaiseMinusOneWithTheirTextInTheSource) {
  EXPECT_EQ(Failure(-1, "ClientServer mode  4 non riconosciuto", ""),
            failureOf([] { ConvertClientServerToString(static_cast<Side>(4)); }));
  EXPECT_EQ(Failure(-1, "ClientServer mode -1 non riconosciuto", ""),
            failureOf([] { ConvertClientServerToString(static_cast<Side>(-1)); }));
  EXPECT_EQ(Failure(-1, "SetupUpdate mode  0 non riconosciuto", ""),
            failureOf([] { ConvertSetupUpdateToString(static_cast<Operation>(0)); }));
  EXPECT_EQ(Failure(-1, "Prodotto  11 non riconosciuto", ""),
            failureOf([] { ConvertNumberToProduct(Product{11}); }));
  EXPECT_EQ(Failure(-1, "Programma -12 non riconosciuto", ""),
            failureOf([] { ConvertNumberToProgram(-12); }));
}

TEST(Codes, UnknownTextsRaiseMinus99WithTheTextInQuotes) {
  // Compared exactly.
  for (const std::string text : {"XYZ", "nerio", " NERIO", ""}) {
    EXPECT_EQ(Failure(-99, "ConvertProgramToNumber", "Programma \"" + text + "\" non riconosciuto"),
              failureOf([&] { ConvertProgramToNumber(text); }));
  }
  for (const std::string text : {"VIRADO", "Zb"}) {
    EXPECT_EQ(Failure(-99, "ConvertProductToNumber", "Prodotto \"" + text + "\" non riconosciuto"),
              failureOf([&] { ConvertProductToNumber(text); }));
  }
}

TEST(Codes, ProductOfAProgramIsItsTensHalvesRoundedToTheEvenNeighbour) {
  for (const auto& [program, product] :
       std::vector<std::pair<std::int32_t, std::int16_t>>{{12, 10},
                                                          {11, 10},
                                                          {34, 30},
                                                          {81, 80},
                                                          {0, 0},
                                                          {5, 0},
                                                          {15, 20},
                                                          {25, 20},
                                                          {16, 20},
                                                          {14, 10},
                                                          {-15, -20},
                                                          {-25, -20},
                                                          {32764, 32760}}) {
    EXPECT_EQ(Product{product}, ProgramToProduct(program)) << program;
  }
}

TEST(Codes, ProductNumberBeyond16BitsIsAnOverflow) {
  const std::tuple failure = failureOf([] { ProgramToProduct(32766); });
  EXPECT_EQ(failure, std::tuple(6, "ProgramToProduct", "Numero troppo grande"));
}

}  // namespace
}  // namespace trelv::modProdTrelvLibrary
