#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "base/Codes.h"
#include "base/RuntimeError.h"
#include "startup/modProdTrelvLibrary.h"

namespace trelv::modProdTrelvLibrary {
namespace {

using CodeTable = std::vector<std::pair<std::string, std::int16_t>>;

const CodeTable kProgramCodes{
    {"UNDEFINED", 0}, {"VIRADO", 11}, {"NERIO", 12},  {"LUDA", 21}, {"MVBIL", 31},
    {"MVCON", 32},    {"MVICAD", 33}, {"MVPERS", 34}, {"Q2", 41},   {"ZM", 51},
    {"KXK", 61},      {"RR", 71},     {"VELTRA", 81},
};

const CodeTable kProductCodes{
    {"UNDEFINED", 0}, {"NERIO", 10}, {"LUDA", 20}, {"ZB", 30},     {"Q2", 40},
    {"ZM", 50},       {"KXK", 60},   {"RR", 70},   {"VELTRA", 80},
};

RuntimeError failureOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const RuntimeError& failure) {
    return failure;
  }
  ADD_FAILURE() << "nothing was raised";
  return {};
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

TEST(Codes, ProgramCodesConvertBothWays) {
  for (const auto& [text, number] : kProgramCodes) {
    EXPECT_EQ(number, ConvertProgramToNumber(text)) << text;
    EXPECT_EQ(text, ConvertNumberToProgram(number)) << number;
  }
}

TEST(Codes, ProductCodesConvertBothWays) {
  for (const auto& [text, number] : kProductCodes) {
    EXPECT_EQ(Product{number}, ConvertProductToNumber(text)) << text;
    EXPECT_EQ(text, ConvertNumberToProduct(Product{number})) << number;
  }
}

TEST(Codes, UnknownSideRaisesMinusOneWithItsTextInTheSource) {
  const RuntimeError above = failureOf([] { ConvertClientServerToString(static_cast<Side>(4)); });
  EXPECT_EQ(-1, above.number());
  EXPECT_EQ("ClientServer mode  4 non riconosciuto", above.source());
  EXPECT_EQ("", above.description());

  const RuntimeError below = failureOf([] { ConvertClientServerToString(static_cast<Side>(-1)); });
  EXPECT_EQ("ClientServer mode -1 non riconosciuto", below.source());
}

TEST(Codes, UnknownOperationRaisesMinusOneWithItsTextInTheSource) {
  const RuntimeError failure =
      failureOf([] { ConvertSetupUpdateToString(static_cast<Operation>(0)); });
  EXPECT_EQ(-1, failure.number());
  EXPECT_EQ("SetupUpdate mode  0 non riconosciuto", failure.source());
  EXPECT_EQ("", failure.description());
}

TEST(Codes, UnknownNumbersRaiseMinusOneWithTheirTextInTheSource) {
  const RuntimeError product = failureOf([] { ConvertNumberToProduct(Product{11}); });
  EXPECT_EQ(-1, product.number());
  EXPECT_EQ("Prodotto  11 non riconosciuto", product.source());
  EXPECT_EQ("", product.description());

  const RuntimeError program = failureOf([] { ConvertNumberToProgram(-12); });
  EXPECT_EQ(-1, program.number());
  EXPECT_EQ("Programma -12 non riconosciuto", program.source());
  EXPECT_EQ("", program.description());
}

TEST(Codes, UnknownTextsRaiseMinus99WithTheTextInQuotes) {
  const RuntimeError program = failureOf([] { ConvertProgramToNumber("XYZ"); });
  EXPECT_EQ(-99, program.number());
  EXPECT_EQ("ConvertProgramToNumber", program.source());
  EXPECT_EQ("Programma \"XYZ\" non riconosciuto", program.description());

  const RuntimeError product = failureOf([] { ConvertProductToNumber("VIRADO"); });
  EXPECT_EQ(-99, product.number());
  EXPECT_EQ("ConvertProductToNumber", product.source());
  EXPECT_EQ("Prodotto \"VIRADO\" non riconosciuto", product.description());
}

TEST(Codes, TextsAreComparedExactly) {
  EXPECT_EQ(-99, failureOf([] { ConvertProgramToNumber("nerio"); }).number());
  EXPECT_EQ(-99, failureOf([] { ConvertProgramToNumber(" NERIO"); }).number());
  EXPECT_EQ(-99, failureOf([] { ConvertProgramToNumber(""); }).number());
  EXPECT_EQ(-99, failureOf([] { ConvertProductToNumber("Zb"); }).number());
}

TEST(Codes, ProductOfAProgramIsItsTens) {
  EXPECT_EQ(Product{10}, ProgramToProduct(ConvertProgramToNumber("NERIO")));
  EXPECT_EQ(Product{10}, ProgramToProduct(ConvertProgramToNumber("VIRADO")));
  EXPECT_EQ(Product{30}, ProgramToProduct(ConvertProgramToNumber("MVPERS")));
  EXPECT_EQ(Product{80}, ProgramToProduct(ConvertProgramToNumber("VELTRA")));
  EXPECT_EQ(Product{0}, ProgramToProduct(0));
}

TEST(Codes, ProductOfAProgramRoundsHalvesToTheEvenNeighbour) {
  EXPECT_EQ(Product{0}, ProgramToProduct(5));
  EXPECT_EQ(Product{20}, ProgramToProduct(15));
  EXPECT_EQ(Product{20}, ProgramToProduct(25));
  EXPECT_EQ(Product{20}, ProgramToProduct(16));
  EXPECT_EQ(Product{10}, ProgramToProduct(14));
  EXPECT_EQ(Product{-20}, ProgramToProduct(-15));
  EXPECT_EQ(Product{-20}, ProgramToProduct(-25));
}

TEST(Codes, ProductNumberBeyond16BitsIsAnOverflow) {
  EXPECT_EQ(Product{32760}, ProgramToProduct(32764));
  EXPECT_EQ(6, failureOf([] { ProgramToProduct(32766); }).number());
}

}  // namespace
}  // namespace trelv::modProdTrelvLibrary
