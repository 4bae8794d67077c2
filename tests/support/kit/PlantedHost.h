#pragma once

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kit/Causes.h"
#include "kit/QuietProgram.h"
#include "support/PackPrograms.h"
#include "support/RealProgram.h"
#include "support/kit/HostTest.h"

namespace trelv::tests {

/// A product of the planted hosts: its identifier, a program of it, where that lies.
struct PlantedProduct {
  const char* id;
  const char* program;
  const char* path;
};

constexpr std::array kPlantedProducts{
    PlantedProduct{"NERIO", "VIRADO", "S:\\Lumo\\mv\\nerio\\virado.exe"},
    PlantedProduct{"LUDA", "LUDA", "S:\\Lumo\\mv\\LUDA2003\\LUDA2003.exe"},
    PlantedProduct{"ZB", "MVBIL", "S:\\Lumo\\mv\\zb\\mvbil.exe"},
    PlantedProduct{"Q2", "Q2", "S:\\Lumo\\mv\\q2\\q2.exe"},
    PlantedProduct{"ZM", "ZM", "S:\\Lumo\\mv\\ZM\\zm.exe"}};

/// A host with five products, all at the version that their configuration leads to, and a
/// workstation on which real starts of the manager run. One thing at a time is planted.
class PlantedHost : public HostTest {
 public:
  static constexpr const char* kSetups = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\";
  static constexpr const char* kLog = "C:\\Users\\mario\\Temp\\log\\TrelvManager.log";
  static constexpr const char* kNow = "02.00.00.00";
  static constexpr const char* kOld = "01.00.00.00";

  PlantedHost() {
    for (const PlantedProduct& product : kPlantedProducts) {
      order.emplace_back(product.id);
      share().putProgram(product.path);
      record(product.id, kNow);
      configure(product.id, kTwoSections);
    }
    installation_.putPrograms({"server", "client"});
    packs_ = std::make_unique<PackPrograms>(machine());
    putCatalogue();
  }
  void TestBody() override {}

  static const PlantedProduct& product(const std::string& id) {
    const auto* const found =
        std::find_if(kPlantedProducts.begin(), kPlantedProducts.end(),
                     [&id](const PlantedProduct& each) { return each.id == id; });
    return *found;
  }

  // --- Arranging

  /// Products in the order of the catalogue.
  std::vector<std::string> order;
  void putFirst(const std::string& id) {
    order.erase(std::find(order.begin(), order.end(), id));
    order.insert(order.begin(), id);
    putCatalogue();
  }
  void putCatalogue() {
    std::vector<ProductEntry> entries;
    for (const std::string& id : order) {
      entries.push_back({id, id, confOf(id)});
    }
    installation_.putCatalogue(entries);
  }
  static std::string confOf(const std::string& id) {
    return id.empty() ? "" : "prg\\com\\setup\\aggdovra\\" + id + ".ini";
  }
  static std::string configurationOf(const std::string& id) {
    return std::string("S:\\Lumo\\") + confOf(id);
  }
  void configure(const std::string& id, const std::vector<Section>& sections) {
    const PlantedProduct& planted = product(id);
    installation_.putConfiguration(
        confOf(id),
        configurationText(sections, {std::string(planted.program) + "=" + planted.path}));
  }
  /// On one side, or on both.
  void record(const std::string& id, const std::string& version,
              std::optional<Side> side = std::nullopt) {
    if (side != Side::Client) {
      machine().setIniValue(Installation::kServerRecord, id, "version", version);
    }
    if (side != Side::Server) {
      machine().setIniValue(Station::kClientRecord, id, "version", version);
    }
  }
  void putLock(Side side) {
    machine().putFile(side == Side::Client ? Station::kClientLock : Installation::kServerLock,
                      "16/11/2026 08:00:00\r\n");
  }
  void putPack(const std::string& name, std::uint32_t endsWith) {
    share().put(kSetups + name,
                packBytes({{"prg\\com\\setup\\aggdovra\\nuovo.txt", "nuovo"}}, endsWith));
  }

  void useStore(std::unique_ptr<sim::SimConfigurationLibrary> store) {
    store_ = std::move(store);
    machine().useConfigurationLibrary(*store_);
  }

  // --- Starts

  /// The host asks for a program; answers when the manager has ended.
  void start(const std::string& program) {
    RealProgram(machine()).run("INTEGRATEDRUN S:\\Lumo S:\\Lumo " + program);
  }
  void startFor(const std::string& id) { start(product(id).program); }

  // --- Explaining

  std::string logText() { return machine().locale().fromAnsi(machine().fileText(kLog)); }
  Json explain(const std::string& id) {
    return result({"explain", id, "--host", "S:\\Lumo", "--log", kLog});
  }
  /// The cause without a command line, whose reader is one for the whole process.
  std::string causeOf(const std::string& id) {
    kit::QuietProgram quiet(machine().machine());
    return kit::causeOf(quiet.program(), Installation::kServer, id, kLog,
                        kit::readRunLog(logText()))
        .name;
  }
  /// The line of a file, from 1, without its end.
  std::string lineOf(const std::string& file, std::size_t number) {
    std::istringstream text(machine().locale().fromAnsi(machine().fileText(file)));
    std::string line;
    for (std::size_t i = 0; i < number; ++i) {
      std::getline(text, line);
    }
    if (!line.empty() && line.back() == '\r') {
      line.pop_back();
    }
    return line;
  }

  static inline const std::vector<Section> kTwoSections{
      {"Setup01", kNow, {"S:\\Lumo\\server.exe"}, {"S:\\Lumo\\client.exe"}},
      {"Update01", kOld, {"S:\\Lumo\\server.exe"}, {"S:\\Lumo\\client.exe"}},
      {"Update02", kNow, {"S:\\Lumo\\server.exe"}, {"S:\\Lumo\\client.exe"}}};

 private:
  std::unique_ptr<PackPrograms> packs_;
  std::unique_ptr<sim::SimConfigurationLibrary> store_;
};

}  // namespace trelv::tests
