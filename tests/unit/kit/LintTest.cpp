#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <map>

#include "kit/Lint.h"
#include "kit/LintRules.h"
#include "support/kit/LintWorld.h"

namespace trelv::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

using Arrange = std::function<void(LintWorld&)>;

const std::string kHost = LintWorld::kHost;
const std::string kSetups = LintWorld::kSetups;
const std::string kCatalogue = LintWorld::kCatalogue;
const std::string kZb = LintWorld::kConfiguration;
const std::string kRecord = LintWorld::kRecord;
const std::string kTree = LintWorld::kTree;
const std::string kInner = "!prg\\com\\setup\\aggdovra\\";
const std::string kBilancio = "D:\\prodotti\\packs\\bilancio\\";

/// A change of the clean world: what a rule finds in it, or that it finds nothing.
struct Row {
  const char* code;
  const char* what;
  Arrange arrange;
  /// File and line of the finding; no file where the rule must keep silent.
  std::string file;
  std::size_t line = 0;
};

Arrange edit(const std::string& path, const std::string& from, const std::string& to) {
  return [=](LintWorld& world) -> void { world.edit(path, from, to); };
}
Arrange put(const std::string& path, const std::string& bytes) {
  return [=](LintWorld& world) -> void { world.put(path, bytes); };
}
Arrange removed(const std::string& path) {
  return [=](LintWorld& world) -> void { world.remove(path); };
}
Arrange nothing() {
  return [](LintWorld&) -> void {};
}

/// UTF-16 with its mark.
std::string wide(const std::string& text, bool swapped) {
  std::string bytes = swapped ? "\xFE\xFF" : "\xFF\xFE";
  for (const char letter : text) {
    bytes += swapped ? std::string{'\0', letter} : std::string{letter, '\0'};
  }
  return bytes;
}

/// A pack on the share with these files beside the usual ones.
Arrange packWith(const std::vector<ArchiveFile>& more) {
  return [=](LintWorld& world) -> void {
    std::vector<ArchiveFile> files = LintWorld::tree();
    files.insert(files.end(), more.begin(), more.end());
    world.put(kSetups + "zb.zip", zipBytes(files));
  };
}
Arrange gzWith(const std::vector<ArchiveFile>& more) {
  return [=](LintWorld& world) -> void {
    std::vector<ArchiveFile> files{{kTree + "zb.zip", zipBytes(LintWorld::tree())}};
    files.insert(files.end(), more.begin(), more.end());
    world.put("S:\\zb.gz", LintWorld::gzBytes(files));
  };
}

const std::string kSetupExe = "\"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe\" ZB ";
const std::string kServerSetup = "Server01=" + kSetupExe + "Server -s";

const std::vector<Row>& rows() {
  static const std::vector<Row> table{
      {"TK101", "missing", removed(kCatalogue), kCatalogue, 0},
      {"TK101", "empty", put(kCatalogue, "; niente\r\n"), kCatalogue, 0},
      {"TK101", "refused", [](LintWorld& world) -> void { world.share().deny(kCatalogue); },
       kCatalogue, 0},
      {"TK101", "one product is enough", put(kCatalogue, LintWorld::catalogueText().substr(0, 90)),
       ""},
      {"TK102", "an empty conf", edit(kCatalogue, "prg\\com\\setup\\aggdovra\\zb.ini", ""),
       kCatalogue, 10},
      {"TK102", "a missing number", edit(kCatalogue, "[prod03]", "[prod04]"), kCatalogue, 10},
      {"TK102", "the last conf is empty",
       edit(kCatalogue, "prg\\com\\setup\\aggdovra\\q2.ini", ""), ""},
      {"TK103", "one digit", edit(kCatalogue, "[prod03]", "[prod3]"), kCatalogue, 10},
      {"TK103", "behind the last", edit(kCatalogue, "[prod03]", "[prod101]"), kCatalogue, 10},
      {"TK103", "capitals are read", edit(kCatalogue, "[prod03]", "[PROD03]"), ""},
      {"TK103", "something between", edit(kCatalogue, "[prod03]", "[prod_03]"), kCatalogue, 10},
      {"TK103", "no number", edit(kCatalogue, "[prod03]", "[prod]"), kCatalogue, 10},
      {"TK103", "another word", edit(kCatalogue, "[prod03]", "[prodotto3]"), ""},
      {"TK104", "a folder", [](LintWorld& world) -> void {
         world.remove(kSetups + "q2.ini");
         world.share().makeFolders(kSetups + "q2.ini");
       },
       kCatalogue, 13},
      {"TK104", "no such file", removed(kSetups + "q2.ini"), kCatalogue, 13},
      {"TK104", "the file comes with a pack that waits",
       [](LintWorld& world) -> void {
         world.remove(kZb);
         packWith({})(world);
       },
       ""},
      {"TK105", "up and out", edit(kCatalogue, "conf=prg\\com\\setup\\aggdovra\\q2.ini", "conf=..\\q2.ini"),
       kCatalogue, 13},
      {"TK105", "a drive", edit(kCatalogue, "conf=prg\\com\\setup\\aggdovra\\q2.ini", "conf=C:\\q2.ini"),
       kCatalogue, 13},
      {"TK105", "up and in again",
       edit(kCatalogue, "conf=prg\\com\\setup\\aggdovra\\q2.ini",
            "conf=prg\\..\\prg\\com\\setup\\aggdovra\\q2.ini"),
       ""},
      {"TK105", "a share", edit(kCatalogue, "conf=prg\\com\\setup\\aggdovra\\q2.ini", "conf=\\\\srv\\q2.ini"),
       kCatalogue, 13},
      {"TK105", "one separator in front", edit(kCatalogue, "conf=prg\\com\\setup\\aggdovra\\q2.ini",
                                               "conf=\\prg\\com\\setup\\aggdovra\\q2.ini"),
       ""},
      {"TK106", "no id", edit(kCatalogue, "id=Q2\r\n", "\r\n"), kCatalogue, 10},
      {"TK106", "an id in quotes", edit(kCatalogue, "id=Q2", "id=\"Q2\""), ""},
      {"TK107", "no product's", edit(kCatalogue, "id=Q2", "id=PIPPO"), kCatalogue, 11},
      {"TK107", "in another case", edit(kCatalogue, "id=Q2", "id=q2"), ""},
      {"TK107", "below a header in capitals",
       [](LintWorld& world) -> void {
         world.edit(kCatalogue, "[prod03]", "[PROD03]");
         world.edit(kCatalogue, "id=Q2", "id=PIPPO");
       },
       kCatalogue, 11},
      {"TK108", "small letters", edit(kCatalogue, "id=Q2", "id=q2"), kCatalogue, 11},
      {"TK108", "a blank does not count", edit(kCatalogue, "id=Q2", "id = Q2 "), ""},
      {"TK109", "twice", edit(kCatalogue, "id=Q2", "id=ZB"), kCatalogue, 11},
      {"TK109", "in another case", edit(kCatalogue, "id=Q2", "id=zb"), kCatalogue, 11},
      {"TK109", "another product's", edit(kCatalogue, "id=Q2", "id=ZM"), ""},
      {"TK110", "twice, in another case", edit(kCatalogue, "aggdovra\\q2.ini", "AggDovra\\ZB.ini"),
       kCatalogue, 13},
      {"TK110", "with the other separator", edit(kCatalogue, "prg\\com\\setup\\aggdovra\\q2.ini",
                                                 "prg/com/setup/aggdovra/zb.ini"),
       kCatalogue, 13},
      {"TK110", "the first with the other separator",
       [](LintWorld& world) -> void {
         world.edit(kCatalogue, "aggdovra\\q2.ini", "aggdovra\\zb.ini");
         world.edit(kCatalogue, "prg\\com\\setup\\aggdovra\\zb.ini", "prg/com/setup/aggdovra/zb.ini");
       },
       kCatalogue, 13},
      {"TK110", "another file", edit(kCatalogue, "aggdovra\\q2.ini", "aggdovra\\zb2.ini"), ""},
      {"TK111", "none", edit(kCatalogue, "name=Tarsena2", "name="), kCatalogue, 12},
      {"TK111", "short", edit(kCatalogue, "name=Tarsena2", "name=T"), ""},
      {"TK112", "511", edit(kCatalogue, "Tarsena2", std::string(511, 'x')), kCatalogue, 12},
      {"TK112", "in a configuration", edit(kZb, "Server -s", std::string(500, 'x')), kZb, 3},
      {"TK112", "510", edit(kCatalogue, "Tarsena2", std::string(510, 'x')), ""},
      {"TK112", "a comment", edit(kCatalogue, "; prodotti", ";a=" + std::string(600, 'x')), ""},
      {"TK113", "a mark of UTF-8", edit(kCatalogue, "; prodotti", "\xEF\xBB\xBF; prodotti"),
       kCatalogue, 1},
      {"TK113", "UTF-8", edit(kCatalogue, "Tarsena2", "Tarsen\xC3\xA0"), kCatalogue, 12},
      {"TK113", "UTF-16 without its mark", edit(kCatalogue, "Tarsena2", std::string("T\0a", 3)),
       kCatalogue, 12},
      {"TK113", "a mark of UTF-8 in the record", edit(kRecord, "[NERIO]", "\xEF\xBB\xBF[NERIO]"), kRecord,
       1},
      {"TK113", "UTF-16 in the other order, with its mark",
       [](LintWorld& world) -> void { world.put(kCatalogue, wide(LintWorld::catalogueText(), true)); },
       ""},
      {"TK113", "an accent of the code page", edit(kCatalogue, "Tarsena2", "Tarsen\xE0"), ""},
      {"TK114", "twice", edit(kCatalogue, "[prod03]", "[Prod02]"), kCatalogue, 10},
      {"TK114", "in a configuration", edit(kZb, "[Update02]", "[Update01]"), kZb, 10},
      {"TK114", "another number", edit(kZb, "[Update02]", "[Update03]"), ""},
      {"TK115", "twice", edit(kCatalogue, "name=Tarsena2", "ID=ZM"), kCatalogue, 12},
      {"TK115", "in the record", edit(kRecord, "version=09.93.00.00", "version=09.93.00.00\r\nVersion=1"),
       kRecord, 5},
      {"TK115", "before the first section", edit(kCatalogue, "; prodotti", "a=1\r\na=2"), ""},
      {"TK115", "in two sections", nothing(), ""},
      {"TK115", "a comment", edit(kCatalogue, "name=Tarsena2", "name=T\r\n;name=Z"), ""},

      {"TK201", "no version", edit(kZb, "version=09.93.00.00\r\n", "\r\n"), kZb, 6},
      {"TK201", "empty", edit(kZb, "version=09.93.00.00", "version="), kZb, 7},
      {"TK201", "without commands", edit(kZb, "[Exec]", "[Update03]\r\n[Exec]"), ""},
      {"TK202", "too few fields", edit(kZb, "[Exec]", "[Update03]\r\nversion=10.00\r\n[Exec]"), kZb,
       15},
      {"TK202", "of two the one that is written otherwise",
       [](LintWorld& world) -> void {
         world.put(kZb, "[Setup01]\r\nversion=10.00\r\nServer01=C:\\a.exe -s\r\n"
                        "[Update01]\r\nversion=09.93.00.00\r\nServer01=C:\\a.exe -s\r\n");
       },
       kZb, 2},
      {"TK202", "another number of digits",
       edit(kZb, "[Exec]", "[Update03]\r\nversion=9.100.0.0\r\n[Exec]"), kZb, 15},
      {"TK202", "another number of digits in a field between",
       [](LintWorld& world) -> void {
         world.put(kZb, "[Setup01]\r\nversion=1.2.30\r\nServer01=C:\\a.exe -s\r\n"
                        "[Update01]\r\nversion=1.10.0\r\nServer01=C:\\a.exe -s\r\n");
       },
       kZb, 5},
      {"TK202", "fewer fields in the same order", edit(kZb, "version=09.93.00.00", "version=09.93"),
       ""},
      {"TK203", "a letter", edit(kZb, "version=09.93.00.00", "version=09.93a"), kZb, 7},
      {"TK203", "digits without points", edit(kZb, "version=09.93.00.00", "version=9930000"), ""},
      {"TK204", "an earlier one is higher", edit(kZb, "version=09.93.00.00", "version=09.95.00.00"),
       kZb, 11},
      {"TK204", "an earlier one is equal", edit(kZb, "version=09.93.00.00", "version=09.94.00.00"),
       kZb, 11},
      {"TK204", "of the other side",
       [](LintWorld& world) -> void {
         world.edit(kZb, "version=09.93.00.00", "version=09.94.00.00");
         world.edit(kZb, "Server01=" + kSetupExe + "Server -u1\r\n", "");
         world.edit(kZb, "Client01=" + kSetupExe + "Client -u2\r\n", "");
       },
       ""},
      {"TK205", "a number is missing", edit(kZb, "Client01=" + kSetupExe + "Client -s",
                                            "Client01=" + kSetupExe + "a\r\nClient03=b.exe"),
       kZb, 5},
      {"TK205", "in the removal", edit(kZb, "Server01=" + kSetupExe + "-rimuovi Server",
                                       "Server02=" + kSetupExe + "-rimuovi Server"),
       kZb, 20},
      {"TK205", "one digit", edit(kZb, "Client01=" + kSetupExe + "Client -s", "Client1=a.exe"), kZb, 4},
      {"TK205", "behind the last", edit(kZb, "[Update01]", "Server101=a.exe\r\n[Update01]"), kZb, 6},
      {"TK205", "another key", edit(kZb, "[Update01]", "ServerNome1=a\r\n[Update01]"), ""},
      {"TK205", "an empty last one", edit(kZb, "[Update01]", "Server02=\r\n[Update01]"), ""},
      {"TK206", "two of the server", edit(kZb, "[Update01]", "Server02=a.exe\r\n[Update01]"), kZb, 6},
      {"TK206", "two of the removal", edit(kZb, "Client01=" + kSetupExe + "-rimuovi Client",
                                           "Server02=C:\\a\\b.exe -x"),
       ""},
      {"TK207", "one digit", edit(kZb, "[Update02]", "[Update2]"), kZb, 10},
      {"TK207", "behind the last", edit(kZb, "[Update02]", "[Update101]"), kZb, 10},
      {"TK207", "something between", edit(kZb, "[Update02]", "[Update-02]"), kZb, 10},
      {"TK207", "a sign behind", edit(kZb, "[Update02]", "[Update02#]"), kZb, 10},
      {"TK207", "another word", edit(kZb, "[Update02]", "[UpdateInfo2]"), ""},
      {"TK207", "the last", edit(kZb, "[Update02]", "[Update100]"), ""},
      {"TK208", "no such program", removed(kSetups + "bilancio\\setup.exe"), kZb, 3},
      {"TK208", "of the removal", edit(kZb, "Client01=" + kSetupExe + "-rimuovi Client",
                                       "Client01=%PATHWORK%\\mv\\bilancio\\togli.exe"),
       kZb, 21},
      {"TK208", "of the removal, before the set-up", [](LintWorld& world) -> void {
         edit(kZb, "Client01=" + kSetupExe + "-rimuovi Client",
              "Client01=%PATHWORK%\\mv\\bilancio\\togli.exe")(world);
         world.remove("S:\\Lumo\\mv\\bilancio");
       },
       ""},
      {"TK208", "of the removal, beside the set-ups, before the set-up",
       [](LintWorld& world) -> void {
         edit(kZb, "bilancio\\setup.exe\" ZB -rimuovi Client", "bilancio\\togli.exe\" ZB -rimuovi Client")(world);
         world.remove("S:\\Lumo\\mv\\bilancio");
       },
       kZb, 21},
      {"TK208", "another waiting pack brings it",
       [](LintWorld& world) -> void {
         world.remove(kSetups + "bilancio\\setup.exe");
         world.put(kSetups + "a.zip", zipBytes({LintWorld::tree()[1]}));
         world.put(kSetups + "b.zip", zipBytes({LintWorld::tree()[2]}));
       },
       ""},
      {"TK208", "elsewhere", edit(kZb, kServerSetup, "Server01=C:\\Strumenti\\a.exe"), ""},
      {"TK208", "without its ending",
       edit(kZb, kServerSetup, "Server01=%PATHSETUP%\\prg\\com\\setup\\aggdovra\\bilancio\\setup -s"),
       ""},
      {"TK209", "one is missing", edit(kZb, "setup.exe\" ZB Server -s", "setup.exe ZB Server -s"), kZb,
       3},
      {"TK209", "both outer ones are lost", edit(kZb, "ZB Server -s", "ZB \"Server\""), kZb, 3},
      {"TK209", "both outer ones of a short name are lost", edit(kZb, kServerSetup, "Server01=\"a\" b \"c\""),
       kZb, 3},
      {"TK209", "quotes inside", edit(kZb, "ZB Server -s", "ZB \"Server\" -s"), ""},
      {"TK210", "a switch", edit(kZb, "Server -s", "Server /s"), kZb, 3},
      {"TK210", "an address", edit(kZb, "Server -s", "-d http://lumo -s"), kZb, 3},
      {"TK210", "a date", edit(kZb, "Server -s", "-data=01/02/2026 -s"), kZb, 3},
      {"TK210", "a switch of a switch", edit(kZb, "Server -s", "-o:/s -s"), kZb, 3},
      {"TK210", "a drive", edit(kZb, "Server -s", "C:/Lumo -d=C:/Lumo -l:D:/a -s"), ""},
      {"TK210", "a share", edit(kZb, "Server -s", "//srv/lumo/a -s"), ""},
      {"TK210", "in quotes, behind a blank", edit(kZb, "Server -s", "\"%PATHWORK%\\mia cartella /b\" -s"),
       ""},
      {"TK210", "a folder that is a year", edit(kZb, "Server -s", "2026/tabelle -s"), ""},
      {"TK210", "a path", edit(kZb, "Server -s", "%PATHWORK%/mv/bilancio -s"), ""},
      {"TK211", "unknown", edit(kZb, "Server -s", "%TEMP% -s"), kZb, 3},
      {"TK211", "in small letters", edit(kZb, "Server -s", "%pathwork%\\mv -s"), kZb, 3},
      {"TK211", "without its end", edit(kZb, "Server -s", "%PATHWORK\\mv -s"), kZb, 3},
      {"TK211", "with a hyphen", edit(kZb, "Server -s", "%PATH-WORK%\\mv -s"), kZb, 3},
      {"TK211", "known", edit(kZb, "Server -s", "%PATHWORK%\\mv %INSTALLTYPE% -s"), ""},
      {"TK211", "words between two per cents", edit(kZb, "Server -s", "5%A di B% -s"), ""},
      {"TK211", "two per cents", edit(kZb, "Server -s", "5% di 10% -s"), ""},
      {"TK212", "in a set-up", edit(kZb, "Server -s", "%PATHCLIENT%\\a -s"), kZb, 3},
      {"TK212", "in the removal", edit(kZb, "-rimuovi Server", "%PATHCLIENT%\\a -s"), ""},
      {"TK213", "twice", edit(kZb, "Server -s", "100%% -s"), kZb, 3},
      {"TK213", "two placeholders meet", edit(kZb, "Server -s", "%PATHWORK%%INSTALLTYPE% -s"), ""},
      {"TK214", "blanks", edit(kZb, kServerSetup, "Server01=%PATHSETUP%\\mio setup\\setup.exe -s"),
       kZb, 3},
      {"TK214", "quotes that are lost",
       edit(kZb, kServerSetup, "Server01=\"%PATHSETUP%\\mio setup\\setup.exe\""), kZb, 3},
      {"TK214", "an argument that is a program",
       edit(kZb, kServerSetup, "Server01=C:\\a\\setup.exe C:\\b\\c.exe"), ""},
      {"TK215", "no set-up", edit(kZb, "[Setup01]", "[Exec02]"), kZb, 6},
      {"TK215", "a set-up of another number", edit(kZb, "[Setup01]", "[Setup07]"), ""},
      {"TK216", "a forgotten set-up", edit(kZb, "version=09.94.00.00", "version=09.92.00.00"), kZb, 2},
      {"TK216", "a forgotten update",
       edit(kZb, "[Setup01]\r\nversion=09.94.00.00", "[Setup01]\r\nversion=09.95.00.00"), kZb, 11},
      {"TK216", "no updates", put(kZb, LintWorld::configurationText().substr(
                                           0, LintWorld::configurationText().find("[Update01]"))),
       ""},
      {"TK217", "the set-up folder itself",
       edit(kZb, "bilancio\\setup.exe\" ZB -rimuovi Server", "setup.exe\" ZB -rimuovi Server"), kZb,
       20},
      {"TK217", "the workstation's folder",
       edit(kZb, kSetupExe + "-rimuovi Server", "%PATHCLIENT%\\togli.exe -s"), kZb, 20},
      {"TK217", "a folder below the workstation's",
       edit(kZb, kSetupExe + "-rimuovi Server", "%PATHCLIENT%\\a\\togli.exe -s"), ""},
      {"TK217", "a folder below", nothing(), ""},
      {"TK218", "one folder", edit(kZb, "[Remove]\r\n", "[Remove]\r\nServer02=" + kSetupExe + "x\r\n"),
       kZb, 20},
      {"TK218", "a folder below the first's",
       edit(kZb, "Client01=" + kSetupExe + "-rimuovi Client",
            "Server02=%PATHSETUP%\\prg\\com\\setup\\aggdovra\\bilancio\\altro\\x.exe -s"),
       kZb, 21},
      {"TK218", "the folder above the first's",
       edit(kZb, "[Remove]\r\n",
            "[Remove]\r\nServer02=" + kSetupExe + "x\r\nServer01="
            "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\bilancio\\altro\\x.exe -s\r\n;"), ""},
      {"TK218", "two folders",
       edit(kZb, "[Remove]\r\n", "[Remove]\r\nServer02=C:\\Altro\\x.exe -s\r\n"), ""},
      {"TK218", "a command of the client in the same folder", nothing(), ""},
      {"TK219", "no section",
       put(kZb, LintWorld::configurationText().substr(
                    0, LintWorld::configurationText().find("[Remove]"))),
       kZb, 0},
      {"TK219", "no command of the server",
       edit(kZb, "Server01=" + kSetupExe + "-rimuovi Server\r\n", ""), kZb, 19},
      {"TK219", "no command of the client",
       edit(kZb, "Client01=" + kSetupExe + "-rimuovi Client\r\n", ""), ""},
      {"TK220", "one is missing", edit(kZb, "MVCON=", "MVCONX="), kZb, 14},
      {"TK220", "the only one is empty",
       edit(kSetups + "q2.ini", "Q2=%PATHWORK%\\mv\\tarsena2\\Q2.exe", "Q2="), kSetups + "q2.ini", 8},
      {"TK220", "no catalogue says whose they are",
       [](LintWorld& world) -> void {
         world.edit(kZb, "MVCON=", "MVCONX=");
         world.put("S:\\zb.txt", world.text(kZb));
       },
       "S:\\zb.txt", 14},
      {"TK220", "a product that is delivered with one program",
       [](LintWorld& world) -> void {
         for (const char* const code : {"MVCON", "MVICAD", "MVPERS"}) {
           world.edit(kZb, code, ";");
         }
       },
       ""},
      {"TK221", "an argument", edit(kZb, "bilancio.exe", "bilancio.exe -x"), kZb, 15},
      {"TK221", "quotes", edit(kZb, "MVBIL=", "MVBIL=x\""), kZb, 15},
      {"TK221", "a blank in the path", edit(kZb, "mv\\bilancio\\bilancio.exe", "mv\\il bilancio\\b.exe"),
       ""},
      {"TK222", "no such program", removed(kHost + "\\mv\\bilancio\\icad.exe"), kZb, 17},
      {"TK222", "before anything is installed",
       [](LintWorld& world) -> void {
         world.remove(kHost + "\\mv");
         world.remove(kRecord);
       },
       ""},
      {"TK222", "recorded, and nothing is there", removed(kHost + "\\mv"), kZb, 15},
      {"TK222", "a record of no version, and nothing is there",
       [](LintWorld& world) -> void {
         world.remove(kHost + "\\mv");
         world.put(kRecord, "[ZB]\r\nversion=\r\n");
       },
       ""},
      {"TK222", "elsewhere", edit(kZb, "%PATHWORK%\\mv\\bilancio\\icad", "C:\\Altrove\\icad"), ""},
      {"TK223", "a blank within the quotes",
       edit(kZb, kServerSetup, "Server01=\"%PATHSETUP%\\mio setup\\setup.exe\" -s"), kZb, 3},
      {"TK223", "of an update",
       edit(kZb, "Server01=" + kSetupExe + "Server -u1", "Server01=\"C:\\mio setup\\a.exe\" -s"), kZb,
       8},
      {"TK223", "of the removal",
       edit(kZb, kSetupExe + "-rimuovi Server", "\"C:\\mio setup\\a.exe\" -s"), ""},

      {"TK301", "above", edit(kRecord, "09.93.00.00", "09.96.00.00"), kRecord, 4},
      {"TK301", "equal", edit(kRecord, "09.93.00.00", "09.94.00.00"), ""},
      {"TK302", "not listed", edit(kRecord, "[Q2]\r\nversion=", "[ZM]\r\nversion=01.00"), kRecord, 5},
      {"TK302", "listed with an empty conf",
       [](LintWorld& world) -> void {
         world.edit(kCatalogue, "prg\\com\\setup\\aggdovra\\q2.ini", "");
         world.edit(kRecord, "[Q2]\r\nversion=", "[Q2]\r\nversion=01.00.00.00");
       },
       ""},
      {"TK302", "with an empty version", edit(kRecord, "[Q2]", "[ZM]"), ""},
      {"TK303", "read-only", [](LintWorld& world) -> void { world.share().setReadOnly(kRecord); },
       kRecord, 0},
      {"TK303", "the folder refuses",
       [](LintWorld& world) -> void { world.share().denyWriting(kHost + "\\prg\\etc"); }, kRecord, 0},
      {"TK303", "no record yet, and the folder refuses",
       [](LintWorld& world) -> void {
         world.remove(kRecord);
         world.share().denyWriting(kHost + "\\prg\\etc");
       },
       kRecord, 0},
      {"TK303", "another file is",
       [](LintWorld& world) -> void { world.share().setReadOnly(kCatalogue); }, ""},
      {"TK304", "three fields", edit(kRecord, "09.93.00.00", "09.93.00"), kRecord, 4},
      {"TK304", "other digits", edit(kRecord, "09.93.00.00", "9.93.0.0"), ""},

      {"TK401", "a lock", put(kHost + "\\prg\\tempterm\\agdv.lck", "20/11/2026"),
       kHost + "\\prg\\tempterm\\agdv.lck", 0},
      {"TK401", "another file", put(kHost + "\\prg\\tempterm\\agdv.lc", ""), ""},
      {"TK402", "a folder",
       [](LintWorld& world) -> void {
         world.share().makeFolders(kHost + "\\prg\\tempterm\\agdv.lck");
       },
       kHost + "\\prg\\tempterm\\agdv.lck", 0},
      {"TK402", "a lock", put(kHost + "\\prg\\tempterm\\agdv.lck", ""), ""},
      {"TK403", "missing", removed(kHost + "\\prg\\tempterm"), kHost + "\\prg\\tempterm", 0},
      {"TK403", "on another volume",
       [](LintWorld& world) -> void {
         world.machine.mount("E:");
         world.disk("E:\\").makeFolders("E:\\t");
         world.remove(kHost + "\\prg\\tempterm");
         world.share().putLink(kHost + "\\prg\\tempterm", "E:\\t");
       },
       kHost + "\\prg\\tempterm", 0},
      {"TK403", "empty", nothing(), ""},
      {"TK404", "missing", removed(kHost + "\\prg\\etc\\ambver"), kHost + "\\prg\\etc\\ambver", 0},
      {"TK404", "empty", put(kHost + "\\prg\\etc\\ambver", ""), kHost + "\\prg\\etc\\ambver", 0},
      {"TK404", "an empty last line", put(kHost + "\\prg\\etc\\ambver", "000011 1\r\n\r\n"),
       kHost + "\\prg\\etc\\ambver", 0},
      {"TK404", "a short last line", put(kHost + "\\prg\\etc\\ambver", "000011 1\r\n00001"),
       kHost + "\\prg\\etc\\ambver", 0},
      {"TK404", "seven characters", put(kHost + "\\prg\\etc\\ambver", "000011 "), ""},
      {"TK405", "missing", removed(kHost + "\\prg\\etc\\dvrel"), kHost + "\\prg\\etc\\dvrel", 0},
      {"TK405", "no Dovra",
       [](LintWorld& world) -> void {
         world.remove(kHost + "\\prg\\etc\\dvrel");
         world.remove(kHost + "\\prg\\com\\dovra");
       },
       ""},
      {"TK406", "without 7-Zip", removed(kHost + "\\prg\\com\\bin\\cpy\\client\\7z.exe"),
       kHost + "\\prg\\com\\bin\\cpy\\client\\7z.exe", 0},
      {"TK406", "older",
       [](LintWorld& world) -> void {
         const std::string path = kHost + "\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe";
         world.share().setVersion(path, {0, 9, 0, 0});
       },
       kHost + "\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe", 0},
      {"TK406", "of a version with more digits",
       [](LintWorld& world) -> void {
         world.share().setVersion(kHost + "\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe", {0, 900, 0, 0});
       },
       kHost + "\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe", 0},
      {"TK406", "of this release",
       [](LintWorld& world) -> void {
         world.share().setVersion(kHost + "\\prg\\com\\bin\\cpy\\client\\TrelvManager.exe", {1, 0, 0, 0});
       },
       ""},
      {"TK406", "no copy at all",
       [](LintWorld& world) -> void {
         world.remove(kHost + "\\prg\\com\\bin\\cpy\\client");
       },
       ""},

      {"TK501", "capitals", put(kSetups + "zb.ZIP", zipBytes(LintWorld::tree())), kSetups + "zb.ZIP",
       0},
      {"TK501", "a capital of gz", put(kSetups + "zb.Gz", ""), kSetups + "zb.Gz", 0},
      {"TK501", "capitals in a gz pack",
       gzWith({{kTree + "altro.ZIP", zipBytes(LintWorld::tree())}}), "S:\\zb.gz" + kInner + "altro.ZIP", 0},
      {"TK501", "capitals in a pack of a medium",
       put(kBilancio + "b-09.95.zip",
           zipBytes({{"a.gz", LintWorld::gzBytes({{kTree + "zb.zip", zipBytes(LintWorld::tree())}})},
                     {"b.Gz", ""}})),
       kBilancio + "b-09.95.zip!b.Gz", 0},
      {"TK501", "small letters", packWith({}), ""},
      {"TK502", "no zip", put(kSetups + "zb.zip", "testo"), kSetups + "zb.zip", 0},
      {"TK502", "cut short",
       put(kSetups + "zb.zip", zipBytes(LintWorld::tree()).substr(0, 300)), kSetups + "zb.zip", 0},
      {"TK502", "another byte",
       [](LintWorld& world) -> void {
         std::string bytes = zipBytes({{kTree + "a.txt", std::string(100, 'x') + "yz"}});
         bytes[bytes.find("a.txt") + 12] = static_cast<char>(bytes[bytes.find("a.txt") + 12] ^ 0x55);
         world.put(kSetups + "zb.zip", bytes);
       },
       kSetups + "zb.zip", 0},
      {"TK502", "a hundred folders in each other",
       [](LintWorld& world) -> void {
         std::string name = kTree;
         for (int i = 0; i < 110; ++i) {
           name += "d/";
         }
         packWith({{name + "a", ""}})(world);
       },
       kSetups + "zb.zip", 0},
      {"TK502", "good", packWith({}), ""},
      {"TK503", "a password", put(kSetups + "zb.zip", zipBytes(LintWorld::tree(), "segreto")),
       kSetups + "zb.zip", 0},
      {"TK503", "none", packWith({}), ""},
      {"TK504", "no tree", put(kSetups + "zb.zip", zipBytes({{"zb.ini", ""}})), kSetups + "zb.zip", 0},
      {"TK504", "no gz pack where a medium needs one",
       put(kBilancio + "b-09.95.zip", zipBytes(LintWorld::tree())), kBilancio + "b-09.95.zip", 0},
      {"TK504", "in capitals", put(kSetups + "zb.zip", zipBytes({{"PRG/COM/SETUP/AGGDOVRA/a.txt", ""}})),
       ""},
      {"TK505", "in the root", packWith({{"leggimi.txt", ""}}), kSetups + "zb.zip!leggimi.txt", 0},
      {"TK505", "beside the tree", packWith({{"prg/etc/ambver", ""}}), kSetups + "zb.zip!prg\\etc\\ambver",
       0},
      {"TK505", "in the tree", packWith({{kTree + "leggimi.txt", ""}}), ""},
      {"TK506", "a device", packWith({{kTree + "nul.txt", ""}}), kSetups + "zb.zip" + kInner + "nul.txt",
       0},
      {"TK506", "a colon", packWith({{kTree + "a:b", ""}}), kSetups + "zb.zip" + kInner + "a:b", 0},
      {"TK506", "a short name", packWith({{kTree + "SETUP~1.EXE", ""}}), ""},
      {"TK506", "a name like a device's", packWith({{kTree + "null.txt", ""}}), ""},
      {"TK507", "another case", packWith({{kTree + "ZB.ini", ""}}), kSetups + "zb.zip" + kInner + "ZB.ini",
       0},
      {"TK507", "a file and a folder", packWith({{kTree + "BILANCIO", ""}}),
       kSetups + "zb.zip" + kInner + "BILANCIO", 0},
      {"TK507", "files of one folder in two spellings", packWith({{kTree + "Bilancio/dati.txt", ""}}), ""},
      {"TK507", "a file and a folder of folders", packWith({{kTree + "a/b/c.txt", ""}, {kTree + "A", ""}}),
       kSetups + "zb.zip" + kInner + "A", 0},
      {"TK507", "in another folder", packWith({{kTree + "a/ZB.ini", ""}}), ""},
      {"TK508", "too long", packWith({{kTree + std::string(229, 'x'), ""}}),
       kSetups + "zb.zip" + kInner + std::string(229, 'x'), 0},
      {"TK508", "a letter that counts twice", packWith({{kTree + "😀" + std::string(227, 'x'), ""}}),
       kSetups + "zb.zip" + kInner + "😀" + std::string(227, 'x'), 0},
      {"TK508", "just fits", packWith({{kTree + std::string(228, 'x'), ""}}), ""},
      {"TK509", "on the share", put(kSetups + "zb.gz", LintWorld::gzBytes(
                                                           {{kTree + "zb.zip", zipBytes(LintWorld::tree())}})),
       kSetups + "zb.gz", 0},
      {"TK509", "on a medium",
       put(kBilancio + "zb.gz",
           LintWorld::gzBytes({{kTree + "zb.zip", zipBytes(LintWorld::tree())}})),
       kBilancio + "zb.gz", 0},
      {"TK509", "a medium's pack on the share", put(kSetups + "zb.zip", LintWorld::mediumPack()),
       kSetups + "zb.zip", 0},
      {"TK509", "alone", gzWith({}), ""},
      {"TK510", "in the tree", packWith({{kTree + "altro.zip", ""}}),
       kSetups + "zb.zip" + kInner + "altro.zip", 0},
      {"TK510", "capitals", packWith({{kTree + "altro.ZIP", ""}}), ""},
      {"TK510", "below it", packWith({{kTree + "bilancio/dati.zip", ""}}), ""},
      {"TK510", "in a gz pack", gzWith({}), ""},
      {"TK511", "in a zip pack", packWith({{kTree + "link", "", "zb.ini"}}),
       kSetups + "zb.zip" + kInner + "link", 0},
      {"TK511", "in a gz pack", gzWith({{kTree + "link", "", "zb.zip"}}), "S:\\zb.gz" + kInner + "link",
       0},
      {"TK511", "a file", packWith({{kTree + "link", ""}}), ""},
      {"TK512", "no room", [](LintWorld& world) -> void {
         packWith({{kTree + "dati.bin", std::string(5000, 'x')}})(world);
         world.trelv.paths.freeBytes = 5000;
       },
       kSetups + "zb.zip", 0},
      {"TK512", "just fits", [](LintWorld& world) -> void {
         std::size_t size = 5000;
         for (const ArchiveFile& file : LintWorld::tree()) {
           size += file.content.size();
         }
         packWith({{kTree + "dati.bin", std::string(5000, 'x')}})(world);
         world.trelv.paths.freeBytes = size;
       },
       ""},
      {"TK512", "room that is not known", [](LintWorld& world) -> void {
         world.trelv.paths.freeBytes = 0;
         world.trelv.paths.roomCode = system_code::kAccessDenied;
         packWith({})(world);
       },
       ""},
      {"TK513", "no gz", put("S:\\zb.gz", "testo"), "S:\\zb.gz", 0},
      {"TK513", "a name that leads up", gzWith({{"../a.txt", ""}}), "S:\\zb.gz", 0},
      {"TK513", "good", gzWith({}), ""},
      {"TK514", "lower", put(kSetups + "zb.zip", zipBytes(LintWorld::tree("09.93.50.00"))),
       kSetups + "zb.zip" + kInner + "zb.ini", 0},
      {"TK514", "in a gz pack",
       put("S:\\zb.gz", LintWorld::gzBytes(
                            {{kTree + "zb.zip", zipBytes(LintWorld::tree("09.93.50.00"))}})),
       "S:\\zb.gz" + kInner + "zb.zip" + kInner + "zb.ini", 0},
      {"TK514", "equal", put(kSetups + "zb.zip", zipBytes(LintWorld::tree("09.94.00.00"))), ""},

      {"TK601", "missing", removed("D:\\Setup.cmf"), "D:\\Setup.cmf", 0},
      {"TK601", "empty", put("D:\\Setup.cmf", "\r\n"), "D:\\Setup.cmf", 0},
      {"TK601", "binary", put("D:\\Setup.cmf", std::string("a\0b", 3)), "D:\\Setup.cmf", 0},
      {"TK601", "good", nothing(), ""},
      {"TK602", "missing", removed("D:\\Versione.ver"), "D:\\Versione.ver", 0},
      {"TK602", "empty", put("D:\\Versione.ver", ""), "D:\\Versione.ver", 0},
      {"TK602", "an empty first line", put("D:\\Versione.ver", "\r\n2026.2\r\n"), "D:\\Versione.ver", 0},
      {"TK602", "without line end", put("D:\\Versione.ver", "1"), ""},
      {"TK603", "missing", removed("D:\\Products.cmf"), "D:\\Products.cmf", 0},
      {"TK603", "unknown", put("D:\\Products.cmf", "ZB|Bilancio\r\nPIPPO|Pippo\r\n"),
       "D:\\Products.cmf", 2},
      {"TK603", "an empty line", put("D:\\Products.cmf", "ZB|Bilancio\r\n\r\nZM|Modelli"), ""},
      {"TK604", "no folder", edit("D:\\Setup.cmf", "packs\\nerio", "packs\\nerioo"), "D:\\Setup.cmf", 4},
      {"TK604", "no zip pack", removed("D:\\prodotti\\packs\\nerio\\nerio.zip"), "D:\\Setup.cmf", 4},
      {"TK604", "an entry that leaves", nothing(), ""},
      {"TK605", "a text", put(kBilancio + "leggimi.txt", ""), kBilancio + "leggimi.txt", 0},
      {"TK605", "in another folder", put("D:\\prodotti\\packs\\leggimi.txt", ""), ""},
      {"TK606", "capitals", [](LintWorld& world) -> void {
         world.remove(kBilancio + "b-09.94.zip");
         world.put(kBilancio + "B-09.94.zip", LintWorld::mediumPack());
       },
       "D:\\prodotti\\packs\\bilancio", 0},
      {"TK606", "small letters", nothing(), ""},
      {"TK607", "no picture", removed("D:\\prodotti\\manager\\images\\product.jpg"),
       "D:\\prodotti\\manager\\images\\product.jpg", 0},
      {"TK607", "both", nothing(), ""},
      {"TK608", "no manual", removed("D:\\prodotti\\docs\\kodamuri.pdf"),
       "D:\\prodotti\\docs\\kodamuri.pdf", 0},
      {"TK608", "the other manual", [](LintWorld& world) -> void {
         world.remove("D:\\prodotti\\docs\\kodamuri.pdf");
         world.put("D:\\prodotti\\docs\\UserManual.doc", "");
       },
       ""},
      {"TK609", "in the root", [](LintWorld& world) -> void {
         world.remove("D:\\prodotti\\manager\\TrelvManager.exe");
         world.put("D:\\TrelvManager.exe", "MZ");
       },
       "D:\\", 0},
      {"TK609", "without the decoder", removed("D:\\prodotti\\manager\\qalbunex.exe"),
       "D:\\prodotti\\manager\\qalbunex.exe", 0},
      {"TK609", "two levels below", nothing(), ""},
      {"TK610", "small letters", edit("D:\\Setup.cmf", "#PRIMA_LISTA#Nerio", "#Prima_Lista#Nerio"),
       "D:\\Setup.cmf", 4},
      {"TK610", "a fifth list", edit("D:\\Setup.cmf", "#SECONDA_LISTA#", "#QUINTA_LISTA#"),
       "D:\\Setup.cmf", 6},
      {"TK610", "in the title", edit("D:\\Setup.cmf", "Prodotti", "#PRIMA_LISTA#Prodotti"),
       "D:\\Setup.cmf", 1},
      {"TK610", "the fourth list", edit("D:\\Setup.cmf", "#SECONDA_LISTA#", "#QUARTA_LISTA#"), ""},
      {"TK611", "none", edit("D:\\Setup.cmf", "packs\\nerio|NERIO", "packs\\nerio|"), "D:\\Setup.cmf",
       4},
      {"TK611", "unknown", edit("D:\\Setup.cmf", "packs\\nerio|NERIO", "packs\\nerio|PIPPO"),
       "D:\\Setup.cmf", 4},
      {"TK611", "an entry that leaves", nothing(), ""},
      {"TK611", "none of the five", edit("D:\\Setup.cmf", "packs\\nerio|NERIO", "packs\\nerio|KXK"),
       "D:\\Setup.cmf", 4},
      {"TK612", "no Nerio", edit("D:\\Setup.cmf", "packs\\nerio|NERIO", "packs\\nerio|ZM"),
       "D:\\Setup.cmf", 5},
      {"TK612", "in small letters", edit("D:\\Setup.cmf", "packs\\nerio|NERIO", "packs\\nerio|nerio"),
       ""},
      {"TK613", "up and out", edit("D:\\Setup.cmf", "|prodotti\\packs\\nerio|", "|..\\packs|"),
       "D:\\Setup.cmf", 4},
      {"TK613", "up and in again",
       edit("D:\\Setup.cmf", "|prodotti\\packs\\nerio|", "|prodotti\\..\\prodotti\\packs\\nerio|"), ""},
  };
  return table;
}

std::vector<std::string> everything(LintWorld& world) {
  std::vector<std::string> paths{kHost, "D:\\"};
  for (const char* const alone : {"S:\\zb.gz", "S:\\zb.txt"}) {
    if (world.share().fileExists(alone)) {
      paths.emplace_back(alone);
    }
  }
  return paths;
}

class LintRow : public testing::TestWithParam<std::size_t> {};

TEST_P(LintRow, FindsTheTrapAndNotItsNearMiss) {
  const Row& row = rows().at(GetParam());
  LintWorld world;
  row.arrange(world);
  const std::vector<Found> found = world.lint(everything(world));
  if (row.file.empty()) {
    for (const Found& one : found) {
      EXPECT_NE(one.code, row.code) << textOf(one);
    }
  } else {
    EXPECT_THAT(found, Contains(Found{row.code, row.file, row.line})) << row.what;
  }
}

std::string nameOf(const testing::TestParamInfo<std::size_t>& info) {
  const Row& row = rows().at(info.param);
  std::string name = row.code + std::string("_") + std::to_string(info.param);
  for (const char* letter = row.what; *letter != '\0'; ++letter) {
    name += std::isalnum(static_cast<unsigned char>(*letter)) != 0 ? *letter : '_';
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(Rules, LintRow, testing::Range<std::size_t>(0, rows().size()), nameOf);

TEST(Lint, FindsNothingInACleanWorld) {
  LintWorld world;
  EXPECT_THAT(world.lint({kHost, "D:\\"}), IsEmpty());
  EXPECT_EQ(world.exitCode, 0);
  EXPECT_EQ(world.trelv.console.errors, "");
}

TEST(Lint, EachRuleHasATrapAndANearMiss) {
  std::map<std::string, std::set<bool>> tested;
  for (const Row& row : rows()) {
    tested[row.code].insert(row.file.empty());
  }
  for (const kit::Rule& rule : kit::lintRules()) {
    EXPECT_EQ(tested[rule.code].size(), 2U) << rule.code;
  }
  EXPECT_EQ(tested.size(), kit::lintRules().size());
}

/// Words without a stop behind them: with a finding a colon and what was found may follow.
bool isSentence(const std::string& text) {
  const auto last = static_cast<unsigned char>(text.back());
  const bool accentOrEllipsis = last >= 0x80;
  const bool closing = std::string_view(")]\"").find(text.back()) != std::string_view::npos;
  return text.size() > 8 && (std::isalnum(last) != 0 || closing || accentOrEllipsis);
}

TEST(Lint, EachRuleHasItsEntryInTheDocuments) {
  std::ifstream file(std::string(TRELV_PROJECT_FOLDER) + "/docs/trelv.md");
  std::set<std::string> documented;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("| TK")) {
      EXPECT_TRUE(documented.insert(line.substr(2, 5)).second) << line;
      EXPECT_THAT(line, testing::MatchesRegex("[|] TK[0-9]+ [|] [^ ].* [|] [^ ].* [|] [^ ].* [|]"));
    }
  }
  std::set<std::string> codes;
  for (const kit::Rule& rule : kit::lintRules()) {
    EXPECT_TRUE(codes.insert(rule.code).second) << rule.code;
    EXPECT_TRUE(isSentence(rule.text)) << rule.text;
    EXPECT_TRUE(isSentence(rule.remedy)) << rule.remedy;
  }
  EXPECT_EQ(documented, codes);
}

/// A change of the clean world and what a finding tells of it behind the rule's text.
struct Detail {
  const char* code;
  Arrange arrange;
  std::string told;
};

TEST(Lint, AFindingTellsWhatItHasFound) {
  const std::string longLine = "#Prima_Lista#" + std::string(100, 'x');
  const std::vector<Detail> details{
      {"TK106", edit(kCatalogue, "id=Q2\r\n", "\r\n"), "[prod03]"},
      {"TK107", edit(kCatalogue, "id=Q2", "id=Q\x01"), "Q?"},
      {"TK108", edit(kCatalogue, "id=Q2", "id=q2"), "q2, l'host passa Q2"},
      {"TK111", edit(kCatalogue, "name=Tarsena2", "name="), "[prod03]"},
      {"TK115", edit(kCatalogue, "name=Tarsena2", "ID=ZM"), "[prod03] ID"},
      {"TK201", edit(kZb, "version=09.93.00.00\r\n", "\r\n"), "[Update01]"},
      {"TK204", edit(kZb, "version=09.93.00.00", "version=09.94.00.00"),
       "[Update02] 09.94.00.00, lato Server, Client"},
      {"TK215", edit(kZb, "[Setup01]", "[Exec02]"), "[Update01]"},
      {"TK610", edit("D:\\Setup.cmf", "#SECONDA_LISTA#Esci", longLine), longLine.substr(0, 60)},
      {"TK611", edit("D:\\Setup.cmf", "packs\\nerio|NERIO", "packs\\nerio|PIPPO"), "Nerio: PIPPO"},
  };
  for (const Detail& detail : details) {
    LintWorld world;
    detail.arrange(world);
    world.lint({kHost, "D:\\", "--only", detail.code});
    const auto findings = nlohmann::json::parse(world.trelv.console.output)["findings"];
    const auto rule = std::find_if(
        kit::lintRules().begin(), kit::lintRules().end(),
        [&](const kit::Rule& one) -> bool { return one.code == std::string(detail.code); });
    ASSERT_EQ(findings.size(), 1U) << detail.code;
    EXPECT_EQ(findings[0]["text"], rule->text + (": " + detail.told));
    EXPECT_EQ(findings[0]["remedy"], rule->remedy);
  }
}

TEST(Lint, FindingsAreAnswered1ToPeopleToo) {
  LintWorld world;
  EXPECT_EQ(world.trelv.run({"lint", kHost}), 0);
  world.remove(kCatalogue);
  EXPECT_EQ(world.trelv.run({"lint", kHost}), 1);
}

TEST(Lint, OfAGapOnlyTheFirstCommandBehindItIsTold) {
  LintWorld world;
  world.edit(kZb, "Client01=" + kSetupExe + "Client -s",
             "Client01=" + kSetupExe + "a\r\nClient03=b.exe\r\nClient04=c.exe");
  EXPECT_THAT(world.lint({kHost, "--only", "TK205"}), ElementsAre(Found{"TK205", kZb, 5}));
}

TEST(Lint, AFolderOfTwoEntriesIsLintedOnce) {
  LintWorld world;
  world.edit("D:\\Setup.cmf", "packs\\nerio|", "packs\\bilancio|");
  world.put(kBilancio + "leggimi.txt", "");
  EXPECT_THAT(world.lint({"D:\\", "--only", "TK605"}),
              ElementsAre(Found{"TK605", kBilancio + "leggimi.txt", 0}));
}

TEST(Lint, AProgramIsLookedForOnceHoweverManyCommandsNameIt) {
  LintWorld world;
  world.machine.callLog().clear();
  world.lint({kZb, kHost, "--only", "TK208"});
  EXPECT_EQ(world.machine.callLog().countOf("files.look " + kSetups + "bilancio\\setup.exe"), 1U);
}

TEST(Lint, PathsAreShownAsTheyWereGiven) {
  LintWorld world;
  world.remove(kCatalogue);
  EXPECT_THAT(world.lint({"S:\\Lumo\\"}), ElementsAre(Found{"TK101", kCatalogue, 0}));
  world.trelv.paths.currentFolder = "S:";
  EXPECT_THAT(world.lint({"Lumo"}),
              ElementsAre(Found{"TK101", "Lumo\\prg\\com\\setup\\aggdovra\\agdvcomp.ini", 0}));
}

TEST(Lint, OnlyAndIgnoreChooseRules) {
  LintWorld world;
  world.edit(kCatalogue, "id=Q2", "id=PIPPO");
  world.edit(kCatalogue, "name=Tarsena2", "name=");
  EXPECT_THAT(world.lint({"--only", "TK111,TK101", kHost}),
              ElementsAre(Found{"TK111", kCatalogue, 12}));
  EXPECT_THAT(world.lint({"--ignore", "TK111", kHost}),
              ElementsAre(Found{"TK107", kCatalogue, 11}));
  world.lint({"--only", "TK999", kHost});
  EXPECT_EQ(world.exitCode, 64);
  world.lint({"--ignore", "TK1", kHost});
  EXPECT_EQ(world.exitCode, 64);
}

TEST(Lint, TellsThingsApartByWhatTheyHold) {
  LintWorld world;
  world.put("S:\\a.txt", LintWorld::catalogueText() + "[prod5]\r\n");
  world.put("S:\\b.txt", "[Update1]\r\n" + LintWorld::configurationText());
  world.put("S:\\c.bin", zipBytes({{"a", ""}}));
  EXPECT_THAT(world.lint({"S:\\a.txt"}), ElementsAre(Found{"TK103", "S:\\a.txt", 14}));
  EXPECT_THAT(world.lint({"S:\\b.txt"}), ElementsAre(Found{"TK207", "S:\\b.txt", 1}));
  EXPECT_THAT(world.lint({"S:\\c.bin"}), ElementsAre(Found{"TK501", "S:\\c.bin", 0}));
}

TEST(Lint, WhatIsNothingOfThatCannotBeDone) {
  LintWorld world;
  world.put("S:\\x.bin", std::string("\0\1\2", 3));
  world.share().makeFolders("S:\\vuota");
  for (const char* const path : {"S:\\x.bin", "S:\\vuota", "S:\\manca", "S:\\Lumo\\manca\\x"}) {
    EXPECT_THAT(world.lint({path}), IsEmpty());
    EXPECT_EQ(world.exitCode, 2) << path;
    EXPECT_TRUE(world.trelv.console.errors.starts_with("trelv: " + std::string(path) + ": "))
        << world.trelv.console.errors;
  }
}

TEST(Lint, APackIsLintedAsWhatItBecomes) {
  LintWorld world;
  std::vector<ArchiveFile> files = LintWorld::tree();
  files[0].content += "[prod9]\r\n";
  files[1].content += "[Update7]\r\n";
  world.put("S:\\b.zip", zipBytes(files));
  EXPECT_THAT(world.lint({"S:\\b.zip"}),
              ElementsAre(Found{"TK103", "S:\\b.zip" + kInner + "agdvcomp.ini", 14},
                          Found{"TK207", "S:\\b.zip" + kInner + "zb.ini", 22}));
  world.put("S:\\b.gz", LintWorld::gzBytes({{kTree + "z.zip", zipBytes(files)}}));
  EXPECT_THAT(
      world.lint({"S:\\b.gz"}),
      ElementsAre(Found{"TK103", "S:\\b.gz" + kInner + "z.zip" + kInner + "agdvcomp.ini", 14},
                  Found{"TK207", "S:\\b.gz" + kInner + "z.zip" + kInner + "zb.ini", 22}));
}

TEST(Lint, TheCatalogueOfAPackNamesItsFilesWithEitherSeparator) {
  LintWorld world;
  std::vector<ArchiveFile> files = LintWorld::tree();
  files[0].content = replaceAll(files[0].content, "\\", "/");
  files[1].content = "testo\r\n";
  world.put("S:\\b.zip", zipBytes(files));
  EXPECT_THAT(world.lint({"S:\\b.zip", "--only", "TK219"}),
              ElementsAre(Found{"TK219", "S:\\b.zip" + kInner + "zb.ini", 0}));
}

TEST(Lint, WhatTheCatalogueOfTheShareLacksIsNotToldOfItsPacksToo) {
  LintWorld world;
  world.remove(kSetups + "q2.ini");
  packWith({})(world);
  EXPECT_THAT(world.lint({kHost, "--only", "TK104"}), ElementsAre(Found{"TK104", kCatalogue, 13}));
}

TEST(Lint, WithoutAHostRulesOfTheShareKeepSilent) {
  LintWorld world;
  world.put("S:\\b.zip", zipBytes({LintWorld::tree()[0], LintWorld::tree("09.90.00.00")[1]}));
  EXPECT_THAT(world.lint({"S:\\b.zip", "--only", "TK104,TK208,TK217,TK222,TK514"}), IsEmpty());
  EXPECT_THAT(world.lint({kZb}), IsEmpty());
}

TEST(Lint, EndsClearlyWithAVeryLongLine) {
  LintWorld world;
  world.put(kCatalogue, LintWorld::catalogueText() + "x=" + std::string(10U << 20U, 'a'));
  EXPECT_THAT(world.lint({kHost}), ElementsAre(Found{"TK112", kCatalogue, 14}));
  world.put(kCatalogue, std::string(10U << 20U, 'a'));
  EXPECT_THAT(world.lint({kHost, "--only", "TK101"}), ElementsAre(Found{"TK101", kCatalogue, 0}));
}

TEST(Lint, SaysOfTheSectionBehindTheLastOneWhomItAnswersFor) {
  for (const auto& [section, told] :
       {std::pair{"[prod101]", true}, std::pair{"[prod102]", false}}) {
    LintWorld world;
    world.edit(kCatalogue, "; prodotti", section);
    world.lint({kHost});
    EXPECT_EQ(world.trelv.console.output.find("che risponde per i prodotti non elencati") !=
                  std::string::npos,
              told)
        << section;
  }
}

TEST(Lint, ReadsUtf16WithItsMark) {
  LintWorld world;
  for (const bool swapped : {false, true}) {
    world.put(kCatalogue, wide(LintWorld::catalogueText() + "[prod7]\r\n", swapped));
    EXPECT_THAT(world.lint({kHost}), ElementsAre(Found{"TK103", kCatalogue, 14}));
  }
}

TEST(Lint, OnlyReads) {
  LintWorld world;
  packWith({})(world);
  world.machine.callLog().clear();
  world.lint({kHost, "D:\\"});
  std::set<std::string> methods;
  for (const sim::SimCall& call : world.machine.callLog().all()) {
    methods.insert(call.text.substr(0, call.text.find(' ')));
  }
  for (const char* const reading :
       {"files.look", "files.read", "files.readPart", "files.list", "files.identify",
        "files.mayAddFile", "versions.read", "environment.get", "system.shellFolder",
        "system.temporaryFolder", "system.systemWindowsFolder", "support.temporaryPath"}) {
    methods.erase(reading);
  }
  EXPECT_THAT(methods, IsEmpty());
}

}  // namespace
}  // namespace trelv::tests
