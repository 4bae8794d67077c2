#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "platform/XmlStore.h"
#include "sim/KilledMachine.h"
#include "sim/SimMachine.h"
#include "support/Refusals.h"

namespace trelv {
namespace {

constexpr auto kHive = machine::Hive::LocalMachine;
constexpr const char* kPointers = "SOFTWARE\\LUMO\\Configurazione";
constexpr const char* kSchemaFile = "C:\\Lumo\\Conf\\schema.xsd";
constexpr const char* kFile = "C:\\Lumo\\Conf\\config.xml";

constexpr const char* kDocument =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
    "<configuration>\r\n"
    "  <product name=\"SYSTEM\">\r\n"
    "    <section name=\"Complementary_Products\">\r\n"
    "      <key name=\"Integration\">\r\n"
    "        <attribute name=\"Path\" type=\"1\">S:\\Lumo</attribute>\r\n"
    "      </key>\r\n"
    "    </section>\r\n"
    "  </product>\r\n"
    "</configuration>\r\n";

/// A whole document round what stands in the place of the value.
std::string around(const std::string& content) {
  return "<configuration><product name=\"SYSTEM\"><section name=\"Complementary_Products\">"
         "<key name=\"Integration\"><attribute name=\"Path\" type=\"1\">" +
         content + "</attribute></key></section></product></configuration>";
}

/// Code and value of a reading.
using Answer = std::pair<std::int32_t, std::string>;

class XmlStoreTest : public testing::Test {
 protected:
  XmlStoreTest() {
    setPointer("Schema", kSchemaFile);
    setPointer("Config", kFile);
    sim.putFile(kSchemaFile, "<schema/>");
    put(kDocument);
  }

  void setPointer(const std::string& name, const std::string& file) {
    sim.registry().setText(kHive, kPointers, name, file);
  }
  void put(const std::string& document) { sim.putFile(kFile, document); }
  std::string text() { return sim.fileText(kFile); }
  bool holds(const std::string& part) { return text().find(part) != std::string::npos; }
  static std::string upToNul(const std::string& buffer) {
    return buffer.substr(0, buffer.find('\0'));
  }
  Answer get(const std::string& product, const std::string& section, const std::string& key,
             const std::string& attribute, std::int32_t size = 1000) {
    std::string buffer(1000, '\0');
    const std::int32_t code =
        store.getParameter(product, section, key, attribute, "_DEFAULT_VALUE_", size, buffer);
    return {code, upToNul(buffer)};
  }
  std::int32_t set(const std::string& product, const std::string& section, const std::string& key,
                   const std::string& attribute, const std::string& value, std::int32_t type = 1) {
    return store.setParameter(product, section, key, attribute, type, value);
  }
  Answer getPath(std::int32_t size = 1000) {
    return get("SYSTEM", kSection, "Integration", "Path", size);
  }
  std::int32_t setPath(const std::string& value, std::int32_t type = 1) {
    return set("SYSTEM", kSection, "Integration", "Path", value, type);
  }
  Answer configPath() {
    std::string buffer(1000, '\0');
    const std::int32_t code = store.getConfigPath(1, buffer);
    return {code, upToNul(buffer)};
  }
  /// Every call answers this code, and nothing is read or written.
  void expectRefused(std::int32_t code) {
    EXPECT_EQ(getPath(), Answer(code, ""));
    EXPECT_EQ(setPath("x"), code);
  }
  /// No temporary file is left.
  void expectNoOtherFile() {
    EXPECT_EQ(sim.diskOf(kFile).names("Lumo\\Conf"),
              (std::vector<std::string>{"schema.xsd", "config.xml"}));
  }

  static constexpr const char* kSection = "Complementary_Products";
  sim::SimMachine sim;
  XmlStore store{sim.machine().files, sim.machine().registry, sim.machine().locale,
                 sim.machine().system, sim.machine().exclusion};
};

// --- Reading

TEST_F(XmlStoreTest, ReadsASettingByNamesInAnyCase) {
  EXPECT_EQ(getPath(), Answer(0, "S:\\Lumo"));
  EXPECT_EQ(get("system", "COMPLEMENTARY_products", "integration", "PATH"), Answer(0, "S:\\Lumo"));
}

TEST_F(XmlStoreTest, TellsTheLevelThatIsMissingAndGivesTheDefault) {
  const std::string value = "_DEFAULT_VALUE_";
  EXPECT_EQ(get("DOVRA", kSection, "Integration", "Path"), Answer(-3001, value));
  EXPECT_EQ(get("SYSTEM", "Other", "Integration", "Path"), Answer(-3002, value));
  EXPECT_EQ(get("SYSTEM", kSection, "Other", "Path"), Answer(-3003, value));
  EXPECT_EQ(get("SYSTEM", kSection, "Integration", "Other"), Answer(-3004, value));
}

TEST_F(XmlStoreTest, ReadsValuesAsTheyAreMeant) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {around(""), ""},
      {around("  "), "  "},
      {around(" a &amp; b &lt;c&gt; &quot;&apos; &#232;&#xE9; "), " a & b <c> \"' èé "},
      {around("S:\\<![CDATA[A & B]]><!-- note -->\\C"), "S:\\A & B\\C"},
      {around("S:\\Città"), "S:\\Città"},
      {"\xEF\xBB\xBF" + around("S:\\Città"), "S:\\Città"},
      // What the code page lacks.
      {around("S:\\Ж"), "S:\\?"}};
  for (const auto& [document, value] : rows) {
    put(document);
    EXPECT_EQ(getPath(), Answer(0, value)) << document;
  }
}

TEST_F(XmlStoreTest, NeverWritesMoreThanTheSizeOfTheBuffer) {
  put(around("àààààbbbbb"));
  EXPECT_EQ(getPath(6).second, "àààààb");
  EXPECT_EQ(getPath(0).second, "");
  EXPECT_EQ(getPath(-1).second, "");
  EXPECT_EQ(get("SYSTEM", kSection, "Integration", "No", 4).second, "_DEF");
}

TEST_F(XmlStoreTest, FillsTheWholeBufferWhenTheValueIsLong) {
  put(around(std::string(5000, 'x')));
  std::string buffer(1000, '\0');
  EXPECT_EQ(store.getParameter("SYSTEM", kSection, "Integration", "Path", "d", 1000, buffer), 0);
  EXPECT_EQ(buffer, std::string(1000, 'x'));
}

// --- Where it lies

TEST_F(XmlStoreTest, TellsWhichPointerOrFileIsMissing) {
  const auto expectMissing = [this](std::int32_t code) {
    expectRefused(code);
    EXPECT_EQ(configPath().first, code);
  };
  sim.removeTree(kFile);
  expectMissing(-4012);
  EXPECT_FALSE(sim.fileExists(kFile));
  sim.makeFolders(kFile);
  expectMissing(-4012);
  sim.removeTree(kSchemaFile);
  expectMissing(-4011);
  setPointer("Config", "");
  expectMissing(-4002);
  sim.registry().removeValue(kHive, kPointers, "Config");
  expectMissing(-4002);
  setPointer("Schema", "");
  expectMissing(-4001);
  sim.registry().removeValue(kHive, kPointers, "Schema");
  expectMissing(-4001);
  sim.registry().removeKey(kHive, kPointers);
  expectMissing(-4001);
}

TEST_F(XmlStoreTest, GivesTheFolderOfTheFileWithoutBackslashWhateverTheFileHolds) {
  for (const char* const document : {kDocument, "", "rubbish"}) {
    put(document);
    EXPECT_EQ(configPath(), Answer(0, "C:\\Lumo\\Conf"));
  }
}

// --- What is no document

TEST_F(XmlStoreTest, AFileOfNoBytesIsAnEmptyDocument) {
  put("");
  expectRefused(-1000);
}

TEST_F(XmlStoreTest, AnotherRootViolatesTheSchema) {
  put("<other/>");
  EXPECT_EQ(getPath().first, -5000);
  EXPECT_EQ(setPath("x"), -5000);
  EXPECT_EQ(text(), "<other/>");
}

std::string utf16(const std::string& text) {
  std::string bytes = "\xFF\xFE";
  for (const char c : text) {
    bytes += c;
    bytes += '\0';
  }
  return bytes;
}

const std::string kWhole = "<configuration></configuration>";

const std::vector<std::pair<const char*, std::string>> kBadDocuments = {
    {"blanks", "  \r\n"},
    {"mark only", "\xEF\xBB\xBF"},
    {"text", "rubbish"},
    {"ini file", "[S]\r\nk=v\r\n"},
    {"cut in a tag", "<configuration><product na"},
    {"cut after a tag", "<configuration><product name=\"SYSTEM\">"},
    {"cut in a comment", "<configuration><!-- "},
    {"cut before the end", "<configuration></configuration"},
    {"crossed tags", "<configuration><a></configuration></a>"},
    {"two roots", kWhole + kWhole},
    {"text before the root", "x" + kWhole},
    {"text behind the root", kWhole + "x"},
    {"attribute without quotes", "<configuration a=b></configuration>"},
    {"attribute twice", "<configuration a=\"1\" a=\"2\"></configuration>"},
    {"unknown entity", "<configuration>&foo;</configuration>"},
    {"bare ampersand", "<configuration>a & b</configuration>"},
    {"unknown entity in an attribute", "<configuration a=\"&foo;\"/>"},
    {"character NUL by its number", around("&#0;")},
    {"control character by its number", around("&#31;")},
    {"control character by its number in an attribute", "<configuration a=\"&#x1;\"/>"},
    {"first half of a character by its number", around("&#xD800;")},
    {"second half of a character by its number", around("&#xDFFF;")},
    {"number of no character", around("&#xFFFE;")},
    {"number behind the last character", around("&#x110000;")},
    {"number that is A when it is cut to 32 bits", around("&#4294967361;")},
    {"number that is A when it is cut to 64 bits", around("&#x10000000000000041;")},
    {"document type", "<!DOCTYPE configuration>" + kWhole},
    {"entity from a file",
     "<!DOCTYPE c [<!ENTITY e SYSTEM \"file:///C:/a.txt\">]><configuration>&e;"
     "</configuration>"},
    {"binary", std::string("\x7F\x45\x4C\x46\x00\x01\x02", 7)},
    {"NUL inside", "<configuration>" + std::string(1, '\0') + "</configuration>"},
    {"control character", "<configuration>\x01</configuration>"},
    {"UTF-16", utf16(kWhole)},
    {"Latin-1 byte", around("\xE8")},
    {"cut UTF-8", "<configuration/>\xC3"},
    {"other encoding", "<?xml version=\"1.0\" encoding=\"windows-1252\"?>" + kWhole},
    {"too long", "<configuration>" + std::string(4U * 1024U * 1024U, ' ') + "</configuration>"}};

TEST_F(XmlStoreTest, ADocumentThatIsNotWellFormedCannotBeReadAndStaysAsItIs) {
  for (const auto& [name, bytes] : kBadDocuments) {
    SCOPED_TRACE(name);
    put(bytes);
    expectRefused(-3000);
    EXPECT_TRUE(text() == bytes);
    expectNoOtherFile();
  }
}

TEST_F(XmlStoreTest, ReadsEachCharacterThatANumberMayName) {
  for (const auto& [number, character] :
       std::vector<std::pair<const char*, const char*>>{{"9", "\t"},
                                                        {"xA", "\n"},
                                                        {"32", " "},
                                                        {"x00000000000000000041", "A"},
                                                        {"00000000000000000000008364", "€"},
                                                        {"xD7FF", "\xED\x9F\xBF"},
                                                        {"xE000", "\xEE\x80\x80"},
                                                        {"xFFFD", "\xEF\xBF\xBD"},
                                                        {"x10000", "\xF0\x90\x80\x80"},
                                                        {"x10FFFF", "\xF4\x8F\xBF\xBF"}}) {
    put("<configuration><vendor>&#" + std::string(number) + ";</vendor></configuration>");
    EXPECT_EQ(setPath("x"), 0) << number;
    EXPECT_EQ(setPath("y"), 0) << number;
    EXPECT_TRUE(holds(replaceAll("<vendor>" + std::string(character), "\n", "\r\n")))
        << number << text();
  }
}

TEST_F(XmlStoreTest, ExpandsNoEntities) {
  std::string bomb = "<!DOCTYPE c [<!ENTITY a \"xxxxxxxxxx\">";
  for (char c = 'b'; c <= 'j'; ++c) {
    const std::string inner = std::string("&") + static_cast<char>(c - 1) + ";";
    std::string entity = std::string("<!ENTITY ") + c + " \"";
    for (int i = 0; i < 10; ++i) {
      entity += inner;
    }
    bomb += entity + "\">";
  }
  put(bomb + "]><configuration>&j;</configuration>");
  EXPECT_EQ(getPath().first, -3000);
}

TEST_F(XmlStoreTest, RefusesMoreThanAHundredLevels) {
  const auto deep = [](std::size_t levels) {
    std::string starts = "<configuration>";
    std::string ends;
    for (std::size_t i = 1; i < levels; ++i) {
      starts += "<a>";
      ends += "</a>";
    }
    return starts + ends + "</configuration>";
  };
  put(deep(100));
  EXPECT_EQ(setPath("x"), 0);
  EXPECT_EQ(getPath().second, "x");
  for (const std::size_t levels : {std::size_t{101}, std::size_t{100000}}) {
    put(deep(levels));
    EXPECT_EQ(getPath().first, -3000) << levels;
    EXPECT_EQ(setPath("x"), -3000) << levels;
  }
}

TEST_F(XmlStoreTest, EveryCutOfAGoodDocumentIsToldAndNoneCrashes) {
  const std::string whole = kDocument;
  const std::size_t rootEnd = whole.rfind('>') + 1;
  for (std::size_t length = 1; length < rootEnd; ++length) {
    put(whole.substr(0, length));
    EXPECT_EQ(getPath().first, -3000) << length;
  }
}

TEST_F(XmlStoreTest, AFileThatIsGoneBehindTheLookAtItIsMissing) {
  for (const SystemCode gone :
       {system_code::kFileNotFound, system_code::kPathNotFound, system_code::kBadNetPath,
        system_code::kInvalidName, system_code::kBadPathname}) {
    sim.callLog().setInjector(tests::refuse({sim::CallKind::FileRead}, gone));
    expectRefused(-4012);
  }
}

TEST_F(XmlStoreTest, AFileThatMayNotBeReadIsANavigationError) {
  sim.diskOf(kFile).holdOpen(kFile, sim::Sharing::None);
  expectRefused(-3000);
}

// --- Parameters

TEST_F(XmlStoreTest, RefusesEmptyOrImpossibleNames) {
  for (const std::string name : {"", "\x01", "\xC3", "a\tb", "a\nb", "a\rb"}) {
    EXPECT_EQ(get(name, "s", "k", "a").first, -5001);
    EXPECT_EQ(get("p", name, "k", "a").first, -5002);
    EXPECT_EQ(get("p", "s", name, "a").first, -5003);
    EXPECT_EQ(get("p", "s", "k", name).first, -5004);
    EXPECT_EQ(set(name, "s", "k", "a", "v"), -5001);
    EXPECT_EQ(set("p", name, "k", "a", "v"), -5002);
    EXPECT_EQ(set("p", "s", name, "a", "v"), -5003);
    EXPECT_EQ(set("p", "s", "k", name, "v"), -5004);
  }
  EXPECT_EQ(text(), kDocument);
}

TEST_F(XmlStoreTest, RefusesImpossibleValuesAndTypes) {
  for (const std::string& value :
       {std::string("a\0b", 3), std::string("\x1B"), std::string("\xE8"), std::string("a\r\nb")}) {
    EXPECT_EQ(setPath(value), -5005);
  }
  // Longer than needed, half of a character, none, behind the last one.
  for (const char* const value :
       {"\xC1\xBF", "\xE0\x80\x80", "\xE0\x9F\xBF", "\xF0\x80\x80\x80", "\xF0\x8F\xBF\xBF",
        "\xED\xA0\x80", "\xED\xBF\xBF", "\xEF\xBF\xBE", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"}) {
    EXPECT_EQ(setPath(value), -5005);
    put(around(value));
    expectRefused(-3000);
    put(kDocument);
  }
  EXPECT_EQ(setPath("x", 0), -6000);
  EXPECT_EQ(setPath("x", -1), -6000);
  EXPECT_EQ(text(), kDocument);
}

// --- Writing

TEST_F(XmlStoreTest, ReplacesAValue) {
  for (const char* const value : {"T:\\Nuovo", "U:\\Altro"}) {
    EXPECT_EQ(setPath(value), 0);
    EXPECT_EQ(getPath(), Answer(0, value));
  }
  expectNoOtherFile();
}

TEST_F(XmlStoreTest, WritesTheDocumentInItsOneForm) {
  put("<configuration/>");
  EXPECT_EQ(setPath("S:\\Lumo"), 0);
  const std::string whole = kDocument;
  EXPECT_EQ(text(), "<?xml version=\"1.0\"?>" + whole.substr(whole.find("\r\n")));
}

TEST_F(XmlStoreTest, WritesAnEqualValueWithoutChangingTheRest) {
  EXPECT_EQ(setPath("S:\\Lumo"), 0);
  EXPECT_EQ(text(), kDocument);
}

TEST_F(XmlStoreTest, BlanksOfAnEmptyLevelAreInItsOneFormToo) {
  for (const char* const blanks : {"\r\n  ", "&#32;", "&#32;<!-- c -->", "<!-- c -->&#9;"}) {
    put("<configuration><vendor>" + std::string(blanks) + "<b/></vendor><product name=\"SYSTEM\">" +
        blanks + "</product></configuration>");
    EXPECT_EQ(setPath("S:\\Lumo"), 0);
    const std::string first = text();
    EXPECT_TRUE(holds("\r\n    <section name=\"Complementary_Products\">\r\n")) << first;
    EXPECT_EQ(setPath("S:\\Lumo"), 0);
    EXPECT_EQ(text(), first);
  }
}

// Line ends become two bytes; behind blanks that count no more comes a line of its own.
TEST_F(XmlStoreTest, WhatCouldNotBeReadAgainIsNotWritten) {
  std::string inLine;
  for (int i = 0; i < 150'000; ++i) {
    inLine += "<v>&#32;<b/></v>";
  }
  for (const std::string& other : {std::string(std::size_t{3} << 20U, '\n'), inLine}) {
    const std::string bytes = replaceAll(around("S:\\Lumo"), "<configuration>",
                                         "<configuration><vendor>" + other + "</vendor>");
    put(bytes);
    ASSERT_EQ(getPath(), Answer(0, "S:\\Lumo"));
    EXPECT_EQ(setPath("T:\\Altro"), -2000);
    EXPECT_TRUE(text() == bytes);
    EXPECT_EQ(getPath(), Answer(0, "S:\\Lumo"));
    expectNoOtherFile();
  }
}

TEST_F(XmlStoreTest, FindsTheLevelsInAnyCaseWhenWriting) {
  EXPECT_EQ(set("System", "complementary_products", "INTEGRATION", "path", "x", 2), 0);
  EXPECT_EQ(getPath(), Answer(0, "x"));
  EXPECT_TRUE(holds("<attribute name=\"Path\" type=\"2\">x</attribute>"));
  EXPECT_FALSE(holds("\"System\""));
}

TEST_F(XmlStoreTest, AddsOnlyTheMissingLevels) {
  EXPECT_EQ(set("SYSTEM", kSection, "Integration", "User", "m"), 0);
  EXPECT_EQ(set("DOVRA", "Client", "Path", "default", "C:\\D"), 0);
  EXPECT_EQ(getPath().second, "S:\\Lumo");
  EXPECT_EQ(get("SYSTEM", kSection, "Integration", "User").second, "m");
  EXPECT_EQ(get("DOVRA", "Client", "Path", "default").second, "C:\\D");
  EXPECT_EQ(text().find(kSection), text().rfind(kSection));
}

TEST_F(XmlStoreTest, KeepsWhatItDoesNotKnow) {
  put("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
      "<!-- head -->\n"
      "<?tool keep?>\n"
      "<configuration version=\"7\">\n"
      "  <vendor>a<b/>c</vendor>\n"
      "  <!-- inner -->\n"
      "  <product name=\"PELAN\" colour=\"red\"><![CDATA[x < y]]></product>\n"
      "</configuration>\n"
      "<!-- tail -->\n");
  EXPECT_EQ(setPath("S:\\Lumo"), 0);
  EXPECT_EQ(getPath().second, "S:\\Lumo");
  for (const char* const part :
       {"encoding=\"UTF-8\" standalone=\"yes\"", "<!-- head -->", "<?tool keep?>",
        "<configuration version=\"7\">", "<vendor>a<b />c</vendor>", "<!-- inner -->",
        "name=\"PELAN\" colour=\"red\"", "<![CDATA[x < y]]>", "<!-- tail -->"}) {
    EXPECT_TRUE(holds(part)) << part << "\n" << text();
  }
}

TEST_F(XmlStoreTest, LinesOfWhatItDoesNotKnowStayAsManyAtEachWrite) {
  for (const char* const end : {"\r\n", "\n", "\r"}) {
    put(
        replaceAll("<?tool one|two||?>|<!-- one|two -->|<configuration a=\"1|2\">|"
                   "  <vendor><![CDATA[one|two]]>three|four</vendor>|</configuration>|",
                   "|", end));
    EXPECT_EQ(setPath("S:\\Lumo"), 0);
    const std::string first = text();
    EXPECT_TRUE(holds("<?tool one\r\ntwo\r\n\r\n?>")) << first;
    EXPECT_TRUE(holds("<!-- one\r\ntwo -->")) << first;
    EXPECT_TRUE(holds("<![CDATA[one\r\ntwo]]>three\r\nfour")) << first;
    EXPECT_EQ(setPath("S:\\Lumo"), 0);
    EXPECT_EQ(text(), first);
  }
}

TEST_F(XmlStoreTest, ValuesAndNamesComeBackAsTheyWereWritten) {
  for (const char* const value :
       {"", " ", "   ", " a ", "a&b", "<a>", "]]>", "&amp;", "\"'\"", "<!-- -->", "Città è più €",
        "a\tb", "a\nb", "\\\\srv\\dati\\", "%PATHWORK%"}) {
    EXPECT_EQ(setPath(value), 0);
    EXPECT_EQ(getPath(), Answer(0, value));
  }
  for (const char* const name : {"a b", " ", "<a>", "a&b", "\"'", "è"}) {
    EXPECT_EQ(set("SYSTEM", name, "k", "a", name), 0);
    EXPECT_EQ(set("SYSTEM", name, "k", "b", "2"), 0);
    EXPECT_EQ(get("SYSTEM", name, "k", "a"), Answer(0, name));
    EXPECT_EQ(get("SYSTEM", name, "k", "b"), Answer(0, "2"));
  }
}

TEST_F(XmlStoreTest, ReadsTheFileAnewBeforeEachWrite) {
  XmlStore other{sim.machine().files, sim.machine().registry, sim.machine().locale,
                 sim.machine().system, sim.machine().exclusion};
  EXPECT_EQ(set("A", "s", "k", "a", "1"), 0);
  EXPECT_EQ(other.setParameter("B", "s", "k", "a", 1, "2"), 0);
  EXPECT_EQ(set("C", "s", "k", "a", "3"), 0);
  EXPECT_EQ(get("A", "s", "k", "a").second, "1");
  EXPECT_EQ(get("B", "s", "k", "a").second, "2");
  EXPECT_EQ(get("C", "s", "k", "a").second, "3");
}

TEST_F(XmlStoreTest, NeverLeavesHalfAFileInPlace) {
  std::vector<std::string> seen;
  for (std::size_t i = 0; i < 20; ++i) {
    put(kDocument);
    sim.callLog().clear();
    sim.onCall(i, [&] { seen.push_back(text()); });
    setPath("T:\\Nuovo");
  }
  ASSERT_FALSE(seen.empty());
  for (const std::string& each : seen) EXPECT_TRUE(each == kDocument || each == text()) << each;
}

TEST_F(XmlStoreTest, AFailedWriteLeavesTheOldFileAndNoOther) {
  const auto expectFailed = [this] {
    EXPECT_EQ(setPath("T:\\Nuovo"), -2000);
    EXPECT_EQ(text(), kDocument);
    expectNoOtherFile();
  };
  for (const sim::CallKind kind : {sim::CallKind::FileWrite, sim::CallKind::FileReplace}) {
    for (const SystemCode code : {system_code::kAccessDenied, system_code::kDiskFull}) {
      sim.callLog().setInjector(tests::refuse({kind}, code));
      expectFailed();
    }
  }
  sim.callLog().setInjector(nullptr);
  sim.diskOf(kFile).setCapacity(sim.diskOf(kFile).usedBytes() + 10);
  expectFailed();
}

TEST_F(XmlStoreTest, KeepsTheRightsOfTheFile) {
  const sim::RightsList rights{{"mario", sim::Right::All}, {"*", sim::Right::Read}};
  sim.diskOf(kFile).setRights(kFile, rights);
  EXPECT_EQ(setPath("T:\\Nuovo"), 0);
  EXPECT_EQ(sim.diskOf(kFile).rights(kFile), rights);
}

TEST_F(XmlStoreTest, TheTemporaryFileIsOfThisProcess) {
  bool seen = false;
  sim.onCall("files.replaceFile",
             [&] { seen = sim.fileExists(std::string(kFile) + "-1-4711.tmp"); });
  EXPECT_EQ(setPath("T:\\Nuovo"), 0);
  EXPECT_TRUE(seen);
  expectNoOtherFile();
}

// --- Two writers

/// A store on a share, and a second workstation that uses it.
class TwoWriters : public XmlStoreTest {
 protected:
  TwoWriters() {
    other_.mount("C:", sim.volumes().diskOf("C:\\"));
    other_.registry().setText(kHive, kPointers, "Schema", kSchemaFile);
    other_.registry().setText(kHive, kPointers, "Config", kFile);
  }
  std::int32_t setTheirs() { return theirs_.setParameter("DOVRA", "s", "k", "a", 1, "loro"); }
  void expectBoth() {
    EXPECT_EQ(getPath(), Answer(0, "T:\\Nuovo"));
    EXPECT_EQ(get("DOVRA", "s", "k", "a"), Answer(0, "loro"));
    expectNoOtherFile();
  }

  static constexpr const char* kTurn = "C:\\Lumo\\Conf\\config.xml.lck";
  sim::SimMachine other_;
  XmlStore theirs_{other_.machine().files, other_.machine().registry, other_.machine().locale,
                   other_.machine().system, other_.machine().exclusion};
};

TEST_F(TwoWriters, LoseNeithersValueWhereverTheyMeet) {
  std::size_t refused = 0;
  std::size_t number = 1;
  for (bool reached = true; reached; ++number) {
    put(kDocument);
    std::int32_t answer = -1;
    sim.callLog().clear();
    sim.onCall(number, [&] { answer = setTheirs(); });
    EXPECT_EQ(setPath("T:\\Nuovo"), 0) << number;
    reached = answer != -1;
    if (answer != 0) {
      // It waited in vain, was told so and does it again.
      EXPECT_TRUE(answer == -2000 || !reached) << number;
      refused += reached ? 1U : 0U;
      EXPECT_EQ(setTheirs(), 0) << number;
    }
    SCOPED_TRACE(number);
    expectBoth();
  }
  EXPECT_GT(refused, 3U) << "from the turn on to the renaming";
  EXPECT_GT(number, refused + 3) << "before it both can write";
}

TEST_F(TwoWriters, TheSecondWaitsAndReadsWhatTheFirstWrote) {
  std::unique_ptr<machine::Mark> turn = other_.exclusion().takeForAnother(kTurn, "");
  sim.exclusion().onWait([&] {
    turn.reset();
    EXPECT_EQ(setTheirs(), 0);
  });
  EXPECT_EQ(setPath("T:\\Nuovo"), 0);
  expectBoth();
}

TEST_F(TwoWriters, AWriteWithoutItsTurnIsRefusedAfterThreeSecondsAndChangesNothing) {
  const std::unique_ptr<machine::Mark> turn = other_.exclusion().takeForAnother(kTurn, "");
  const int before = sim.clock().now().second;
  EXPECT_EQ(setPath("T:\\Nuovo"), -2000);
  EXPECT_EQ(sim.clock().now().second - before, 3);
  EXPECT_EQ(text(), kDocument);
}

TEST_F(TwoWriters, WhoMayMakeNoFileThereDoesNotWaitForATurn) {
  const sim::RightsList rights{{"*", sim::Right::Read}};
  sim.diskOf(kFile).setRights("Lumo\\Conf", rights);
  sim.callLog().clear();
  EXPECT_EQ(setPath("T:\\Nuovo"), -2000);
  EXPECT_EQ(sim.callLog().countOf("exclusion.take"), 0U);
  EXPECT_EQ(text(), kDocument);
}

TEST_F(TwoWriters, ReadingNeedsNoTurn) {
  const std::unique_ptr<machine::Mark> turn = other_.exclusion().takeForAnother(kTurn, "");
  EXPECT_EQ(getPath(), Answer(0, "S:\\Lumo"));
  EXPECT_EQ(configPath(), Answer(0, "C:\\Lumo\\Conf"));
}

TEST_F(TwoWriters, AWriterThatIsEndedByForceKeepsNobodyOut) {
  std::size_t number = 1;
  for (bool reached = true; reached; ++number) {
    put(kDocument);
    {
      const sim::KilledMachine kill(sim, number);
      try {
        setPath("T:\\Nuovo");
      } catch (const sim::Killed&) {
      }
      reached = kill.reached();
    }
    EXPECT_EQ(setTheirs(), 0) << number;
    EXPECT_EQ(setPath("T:\\Nuovo"), 0) << number;
    EXPECT_EQ(get("DOVRA", "s", "k", "a"), Answer(0, "loro")) << number;
    EXPECT_FALSE(sim.fileExists(kTurn)) << number;
  }
  EXPECT_GT(number, 8U);
}

TEST_F(TwoWriters, ATurnThatAPowerFailureLeftIsTaken) {
  sim.putFile(kTurn, "1-99");
  EXPECT_EQ(setPath("T:\\Nuovo"), 0);
  EXPECT_EQ(setTheirs(), 0);
  expectBoth();
}

}  // namespace
}  // namespace trelv
