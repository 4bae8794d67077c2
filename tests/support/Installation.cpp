#include "support/Installation.h"

#include <utility>

namespace trelv::tests {
namespace {

std::string numbered(const std::string& name, std::size_t index) {
  return name + (index < 10 ? "0" : "") + std::to_string(index);
}

std::string commandLines(const std::string& side, const std::vector<std::string>& commands) {
  std::string text;
  for (std::size_t i = 0; i < commands.size(); ++i) {
    text += numbered(side, i + 1) + "=" + commands[i] + "\r\n";
  }
  return text;
}

/// A set-up that puts programs on the share.
sim::ProgramScript installing(std::vector<std::string> programs) {
  return [programs = std::move(programs)](sim::SimProcess& process) -> std::uint32_t {
    for (const std::string& program : programs) {
      process.machine().diskOf(program).putProgram(program);
    }
    return 0;
  };
}

struct Delivered {
  ProductEntry entry;
  std::string version;
  std::string folder;
  std::vector<std::string> programs;
};

const std::vector<Delivered>& deliveredProducts() {
  static const std::vector<Delivered> products{
      {{"NERIO", "Nerio", "prg\\com\\setup\\aggdovra\\nerio.ini"},
       "03.20.30.00",
       "nerio",
       {"VIRADO=%PATHWORK%\\mv\\nerio\\virado.exe", "NERIO=%PATHWORK%\\mv\\nerio\\nerio.exe"}},
      {{"LUDA", "Luda", "prg\\com\\setup\\aggdovra\\luda.ini"},
       "07.10.00.00",
       "luda",
       {"LUDA=%PATHWORK%\\mv\\LUDA2003\\LUDA2003.exe"}},
      {{"ZB", "Bilancio", "prg\\com\\setup\\aggdovra\\zb.ini"},
       "09.93.00.00",
       "zb",
       {"MVBIL=%PATHWORK%\\mv\\zb\\mvbil.exe"}},
      {{"Q2", "Tarsena2", "prg\\com\\setup\\aggdovra\\q2.ini"},
       "02.92.00.00",
       "q2",
       {"Q2=%PATHWORK%\\mv\\q2\\q2.exe"}},
      {{"ZM", "Zeltomodelli", "prg\\com\\setup\\aggdovra\\zm.ini"},
       "06.50.30.00",
       "zm",
       {"ZM=%PATHWORK%\\mv\\ZM\\zm.exe"}}};
  return products;
}

std::vector<std::string> programPaths(const Delivered& product) {
  std::vector<std::string> paths;
  for (const std::string& line : product.programs) {
    paths.push_back(Installation::kServer + line.substr(line.find("%PATHWORK%") + 10));
  }
  return paths;
}

}  // namespace

std::string catalogueText(const std::vector<ProductEntry>& entries) {
  std::string text;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    text += "[" + numbered("prod", i + 1) + "]\r\nid=" + entries[i].id +
            "\r\nname=" + entries[i].name + "\r\nconf=" + entries[i].conf + "\r\n";
  }
  return text;
}

std::string configurationText(const std::vector<Section>& sections,
                              const std::vector<std::string>& programs) {
  std::string text;
  for (const Section& section : sections) {
    text += "[" + section.name + "]\r\nversion=" + section.version + "\r\n" +
            commandLines("Server", section.server) + commandLines("Client", section.client);
  }
  text += "[Exec]\r\n";
  for (const std::string& program : programs) {
    text += program + "\r\n";
  }
  return text;
}

Installation::Installation() : share_(std::make_shared<sim::SimDisk>()) {
  share_->makeFolders("S:\\Lumo\\prg\\com\\setup\\aggdovra");
  share_->makeFolders("S:\\Lumo\\prg\\etc");
  share_->makeFolders("S:\\Lumo\\prg\\tempterm");
}

void Installation::putCatalogue(const std::vector<ProductEntry>& entries) {
  share_->put(kCatalogue, catalogueText(entries));
}

void Installation::putConfiguration(const std::string& conf, const std::string& text) {
  share_->put(std::string(kServer) + "\\" + conf, text);
}

void Installation::putPrograms(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    share_->putProgram(std::string(kServer) + "\\" + name + ".exe");
  }
}

std::string Installation::serverRecord() { return share_->text(kServerRecord); }

void Installation::putServerRecord(const std::string& text) { share_->put(kServerRecord, text); }

bool Installation::serverLockExists() { return share_->exists(kServerLock); }

Station::Station(Installation& installation) {
  machine_.mount("S:", installation.sharedDisk());
  machine_.makeFolders("C:\\Lumo\\Client");
  machine_.makeFolders("C:\\Users\\mario\\Temp\\log");
  machine_.configuration().put("SYSTEM", "Complementary_Products", "Integration", "Path",
                               Installation::kServer);
}

FakeProgram& Station::program() {
  if (!program_) {
    program_ = std::make_unique<FakeProgram>(machine_);
    program_->state.startup.administrator = true;
    program_->state.startup.pluginProduct = PluginProduct::None;
  }
  return *program_;
}

void Station::putClientRecord(const std::string& text) { machine_.putFile(kClientRecord, text); }

std::string Station::clientVersion(const std::string& id) {
  return machine_.iniValue(kClientRecord, id, "version");
}

std::string Station::serverVersion(const std::string& id) {
  return machine_.iniValue(Installation::kServerRecord, id, "version");
}

void Station::forgetIntegration() {
  machine_.configuration().remove("SYSTEM", "Complementary_Products", "Integration", "Path");
}

std::string Station::recordedIntegration() {
  return machine_.configuration().value("SYSTEM", "Complementary_Products", "Integration", "Path");
}

void putFiveProducts(Installation& installation) {
  std::vector<ProductEntry> entries;
  for (const Delivered& product : deliveredProducts()) {
    entries.push_back(product.entry);
    const std::string commands = "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\" + product.folder;
    installation.putConfiguration(product.entry.conf,
                                  configurationText({{"Setup01",
                                                      product.version,
                                                      {commands + "\\server.exe -S"},
                                                      {commands + "\\client.exe -S"}},
                                                     {"Update01",
                                                      product.version,
                                                      {commands + "\\update.exe -S"},
                                                      {commands + "\\updatecl.exe -S"}}},
                                                    product.programs));
    const std::string folder = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\" + product.folder;
    installation.share().putProgram(folder + "\\server.exe", installing(programPaths(product)));
    installation.share().putProgram(folder + "\\client.exe");
    installation.share().putProgram(folder + "\\update.exe", installing(programPaths(product)));
    installation.share().putProgram(folder + "\\updatecl.exe");
  }
  installation.putCatalogue(entries);
}

std::string deliveredVersions() {
  std::string text;
  for (const Delivered& product : deliveredProducts()) {
    text += "[" + product.entry.id + "]\r\nversion=" + product.version + "\r\n";
  }
  return text;
}

}  // namespace trelv::tests
