#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "sim/SimMachine.h"
#include "support/decoder/DecoderPacks.h"
#include "support/kit/Archives.h"
#include "support/kit/Trelv.h"

namespace trelv::tests {

/// A finding as the JSON document tells it; line 0 for null.
struct Found {
  std::string code;
  std::string file;
  std::size_t line = 0;

  friend bool operator==(const Found&, const Found&) = default;
  friend auto operator<=>(const Found&, const Found&) = default;
};

inline std::string textOf(const Found& found) {
  return found.code + " " + found.file + ":" + std::to_string(found.line);
}

inline void PrintTo(const Found& found, std::ostream* stream) { *stream << textOf(found); }

/// A host S:\Lumo and a medium D:\ in which lint finds nothing.
class LintWorld {
 public:
  static constexpr const char* kHost = "S:\\Lumo";
  static constexpr const char* kSetups = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\";
  static constexpr const char* kTree = "prg/com/setup/aggdovra/";
  static constexpr const char* kCatalogue = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\agdvcomp.ini";
  static constexpr const char* kConfiguration = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini";
  static constexpr const char* kRecord = "S:\\Lumo\\prg\\etc\\agdvver.ini";

  LintWorld() {
    machine.mount("S:");
    machine.mount("D:");
    putHost();
    putMedium();
  }

  sim::SimDisk& share() { return machine.diskOf("S:\\"); }
  sim::SimDisk& medium() { return machine.diskOf("D:\\"); }
  sim::SimDisk& disk(const std::string& path) { return machine.diskOf(path); }

  void put(const std::string& path, const std::string& bytes) { disk(path).put(path, bytes); }
  std::string text(const std::string& path) { return machine.fileText(path); }
  /// Puts a text in the place of another one that stands in the file.
  void edit(const std::string& path, const std::string& from, const std::string& to) {
    const std::string before = text(path);
    ASSERT_NE(before.find(from), std::string::npos) << path << " lacks " << from;
    put(path,
        before.substr(0, before.find(from)) + to + before.substr(before.find(from) + from.size()));
  }
  void remove(const std::string& path) { disk(path).removeTree(path); }

  /// Runs lint; findings sorted. The exit code is in `exitCode`.
  std::vector<Found> lint(const std::vector<std::string>& arguments) {
    std::vector<std::string> whole{"lint", "--json"};
    whole.insert(whole.end(), arguments.begin(), arguments.end());
    exitCode = trelv.run(whole);
    std::vector<Found> found;
    if (trelv.console.output.empty()) {
      return found;
    }
    const auto document = nlohmann::json::parse(trelv.console.output);
    for (const auto& finding : document["findings"]) {
      found.push_back({finding["code"], finding["file"],
                       finding["line"].is_null() ? 0 : finding["line"].get<std::size_t>()});
    }
    std::sort(found.begin(), found.end());
    return found;
  }

  /// Catalogue, configuration and set-up of ZB as a pack brings them, with one file more.
  static std::vector<ArchiveFile> tree(const std::string& version = "09.95.00.00") {
    const std::string top = kTree;
    return {{top + "agdvcomp.ini", catalogueText()},
            {top + "zb.ini", configurationText(version)},
            {top + "bilancio/setup.exe", "MZ"}};
  }
  static std::string gzBytes(const std::vector<ArchiveFile>& files) {
    decoder::TarBytes tar;
    for (const ArchiveFile& file : files) {
      tar.entry(file.name, file.link.empty() ? '0' : '2', file.content, file.link);
    }
    return decoder::pack(tar);
  }
  static std::string mediumPack() {
    return zipBytes(
        {{"bilancio.gz", gzBytes({{std::string(kTree) + "zb.zip", zipBytes(tree())}})}});
  }

  static std::string catalogueText() {
    return "; prodotti\r\n"                                 // 1
           "[prod01]\r\n"                                   // 2
           "id=NERIO\r\n"                                   // 3
           "name=Nerio\r\n"                                 // 4
           "conf=prg\\com\\setup\\aggdovra\\nerio.ini\r\n"  // 5
           "[prod02]\r\n"                                   // 6
           "id=ZB\r\n"                                      // 7
           "name=Bilancio\r\n"                              // 8
           "conf=prg\\com\\setup\\aggdovra\\zb.ini\r\n"     // 9
           "[prod03]\r\n"                                   // 10
           "id=Q2\r\n"                                      // 11
           "name=Tarsena2\r\n"                              // 12
           "conf=prg\\com\\setup\\aggdovra\\q2.ini\r\n";    // 13
  }

  /// Of Bilancio: set-up and the last update have this version.
  static std::string configurationText(const std::string& version = "09.94.00.00") {
    const std::string setup = "\"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe\" ZB ";
    return "[Setup01]\r\n"  // 1
           "version=" +
           version +
           "\r\n"  // 2
           "Server01=" +
           setup +
           "Server -s\r\n"  // 3
           "Client01=" +
           setup +
           "Client -s\r\n"            // 4
           "\r\n"                     // 5
           "[Update01]\r\n"           // 6
           "version=09.93.00.00\r\n"  // 7
           "Server01=" +
           setup +
           "Server -u1\r\n"  // 8
           "Client01=" +
           setup +
           "Client -u1\r\n"  // 9
           "[Update02]\r\n"  // 10
           "version=" +
           version +
           "\r\n"  // 11
           "Server01=" +
           setup +
           "Server -u2\r\n"  // 12
           "Client01=" +
           setup +
           "Client -u2\r\n"                                         // 13
           "[Exec]\r\n"                                             // 14
           "MVBIL=%PATHWORK%\\mv\\bilancio\\bilancio.exe\r\n"       // 15
           "MVCON=%PATHWORK%\\mv\\bilancio\\consolidato.exe\r\n"    // 16
           "MVICAD=%PATHWORK%\\mv\\bilancio\\icad.exe\r\n"          // 17
           "MVPERS=%PATHWORK%\\mv\\bilancio\\personalizza.exe\r\n"  // 18
           "[Remove]\r\n"                                           // 19
           "Server01=" +
           setup +
           "-rimuovi Server\r\n"  // 20
           "Client01=" +
           setup + "-rimuovi Client\r\n";  // 21
  }

  static std::string simpleConfiguration(const std::string& folder,
                                         const std::vector<std::string>& codes) {
    const std::string setup =
        "\"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\" + folder + "\\setup.exe\" ";
    std::string text;
    for (const char* const section : {"Setup01", "Update01"}) {
      text +=
          "[" + std::string(section) + "]\r\nversion=01.00.00.00\r\nServer01=" + setup + "-s\r\n";
    }
    text += "[Exec]\r\n";
    for (const std::string& code : codes) {
      text += code + "=%PATHWORK%\\mv\\" + folder + "\\" + code + ".exe\r\n";
    }
    return text + "[Remove]\r\nServer01=" + setup + "-rimuovi\r\n";
  }

  sim::SimMachine machine;
  Trelv trelv{machine};
  int exitCode = 0;

 private:
  void putHost() {
    const std::string host = kHost;
    for (const char* const folder : {"\\prg\\tempterm", "\\prg\\com\\bin\\cpy\\client", "\\mv"}) {
      share().makeFolders(host + folder);
    }
    put(kCatalogue, catalogueText());
    put(kConfiguration, configurationText());
    put(std::string(kSetups) + "nerio.ini", simpleConfiguration("nerio", {"VIRADO", "NERIO"}));
    put(std::string(kSetups) + "q2.ini", simpleConfiguration("tarsena2", {"Q2"}));
    for (const char* const folder : {"bilancio", "nerio", "tarsena2"}) {
      put(std::string(kSetups) + folder + "\\setup.exe", "MZ");
    }
    for (const char* const program :
         {"bilancio\\bilancio", "bilancio\\consolidato", "bilancio\\icad", "bilancio\\personalizza",
          "nerio\\virado", "nerio\\nerio", "tarsena2\\q2"}) {
      put(host + "\\mv\\" + program + ".exe", "MZ");
    }
    put(kRecord,
        "[NERIO]\r\nversion=01.00.00.00\r\n[ZB]\r\nversion=09.93.00.00\r\n[Q2]\r\nversion=\r\n");
    put(host + "\\prg\\etc\\ambver", "000011 14/09/26 17:40\r\n");
    put(host + "\\prg\\etc\\dvrel", "11.00.00\r\n");
    share().makeFolders(host + "\\prg\\com\\dovra\\plugin");
    putRelease(host + "\\prg\\com\\bin\\cpy\\client\\");
  }

  void putRelease(const std::string& folder) {
    for (const char* const name : {"TrelvManager.exe", "qalbunex.exe", "7z.exe", "7z.dll"}) {
      put(folder + name, "MZ");
    }
    disk(folder).setVersion(folder + "TrelvManager.exe", {9, 0, 0, 0});
  }

  void putMedium() {
    putRelease("D:\\prodotti\\manager\\");
    put("D:\\prodotti\\manager\\images\\product.jpg", "");
    put("D:\\prodotti\\manager\\images\\setup_fase1.jpg", "");
    put("D:\\prodotti\\docs\\kodamuri.pdf", "");
    put("D:\\Setup.cmf",
        "Prodotti - versione %V%\r\n"                             // 1
        "2026-11-21\r\n"                                          // 2
        "#PRIMA_LISTA#Lista\r\n"                                  // 3
        "#PRIMA_LISTA#Nerio|prodotti\\packs\\nerio|NERIO\r\n"     // 4
        "#PRIMA_LISTA#Bilancio|prodotti\\packs\\bilancio|ZB\r\n"  // 5
        "#SECONDA_LISTA#Esci||Exit\r\n");                         // 6
    put("D:\\Versione.ver", "2026.2\r\n");
    put("D:\\Products.cmf", "NERIO|Nerio\r\nZB|Bilancio\r\n");
    put("D:\\prodotti\\packs\\nerio\\nerio.zip", mediumPack());
    put("D:\\prodotti\\packs\\bilancio\\b-09.93.zip", mediumPack());
    put("D:\\prodotti\\packs\\bilancio\\b-09.94.zip", mediumPack());
    put("D:\\prodotti\\packs\\bilancio\\b-09.95.zip", mediumPack());
  }
};

}  // namespace trelv::tests
