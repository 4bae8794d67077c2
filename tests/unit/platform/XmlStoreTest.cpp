#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/XmlStore.h"
#include "sim/SimMachine.h"

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

struct Answer {
  std::int32_t code = 0;
  std::string value;
};

/// A whole document round what stands in the place of the value.
std::string around(const std::string& content) {
  return "<configuration><product name=\"SYSTEM\"><section name=\"Complementary_Products\">"
         "<key name=\"Integration\"><attribute name=\"Path\" type=\"1\">" +
         content + "</attribute></key></section></product></configuration>";
}

class XmlStoreTest : public testing::Test {
 protected:
  XmlStoreTest() {
    sim.registry().setText(kHive, kPointers, "Schema", kSchemaFile);
    sim.registry().setText(kHive, kPointers, "Config", kFile);
    sim.putFile(kSchemaFile, "<schema/>");
    sim.putFile(kFile, kDocument);
  }

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
  Answer getPath() { return get("SYSTEM", "Complementary_Products", "Integration", "Path"); }
  std::int32_t setPath(const std::string& value, std::int32_t type = 1) {
    return store.setParameter("SYSTEM", "Complementary_Products", "Integration", "Path", type,
                              value);
  }
  Answer configPath() {
    std::string buffer(1000, '\0');
    const std::int32_t code = store.getConfigPath(1, buffer);
    return {code, upToNul(buffer)};
  }
  /// No temporary file is left.
  std::vector<std::string> filesLeft() { return sim.diskOf(kFile).names("Lumo\\Conf"); }

  sim::SimMachine sim;
  XmlStore store{sim.machine().files, sim.machine().registry, sim.machine().locale};
};

// --- Reading

TEST_F(XmlStoreTest, ReadsASetting) {
  const Answer answer = getPath();
  EXPECT_EQ(answer.code, 0);
  EXPECT_EQ(answer.value, "S:\\Lumo");
}

TEST_F(XmlStoreTest, ComparesNamesWithoutRegardToCase) {
  EXPECT_EQ(get("system", "COMPLEMENTARY_products", "integration", "PATH").value, "S:\\Lumo");
}

TEST_F(XmlStoreTest, TellsTheLevelThatIsMissingAndGivesTheDefault) {
  const std::string section = "Complementary_Products";
  const auto expectDefault = [](const Answer& answer, std::int32_t code) {
    EXPECT_EQ(answer.code, code);
    EXPECT_EQ(answer.value, "_DEFAULT_VALUE_");
  };
  expectDefault(get("DOVRA", section, "Integration", "Path"), -3001);
  expectDefault(get("SYSTEM", "Other", "Integration", "Path"), -3002);
  expectDefault(get("SYSTEM", section, "Other", "Path"), -3003);
  expectDefault(get("SYSTEM", section, "Integration", "Other"), -3004);
}

TEST_F(XmlStoreTest, ReadsAnEmptyValueAsEmpty) {
  sim.putFile(kFile, around(""));
  EXPECT_EQ(getPath().code, 0);
  EXPECT_EQ(getPath().value, "");
}

TEST_F(XmlStoreTest, ReadsBlanksReferencesAndMarkedTextAsTheyAreMeant) {
  sim.putFile(kFile, around("  "));
  EXPECT_EQ(getPath().value, "  ");
  sim.putFile(kFile, around(" a &amp; b &lt;c&gt; &quot;&apos; &#232;&#xE9; "));
  EXPECT_EQ(getPath().value, " a & b <c> \"' èé ");
  sim.putFile(kFile, around("S:\\<![CDATA[A & B]]><!-- note -->\\C"));
  EXPECT_EQ(getPath().value, "S:\\A & B\\C");
}

TEST_F(XmlStoreTest, ReadsUtf8WithAndWithoutMark) {
  sim.putFile(kFile, around("S:\\Città"));
  EXPECT_EQ(getPath().value, "S:\\Città");
  sim.putFile(kFile, "\xEF\xBB\xBF" + around("S:\\Città"));
  EXPECT_EQ(getPath().value, "S:\\Città");
}

TEST_F(XmlStoreTest, WritesAQuestionMarkForWhatTheCodePageLacks) {
  sim.putFile(kFile, around("S:\\Ж"));
  EXPECT_EQ(getPath().value, "S:\\?");
}

TEST_F(XmlStoreTest, NeverWritesMoreThanTheSizeOfTheBuffer) {
  sim.putFile(kFile, around("àààààbbbbb"));
  const std::string section = "Complementary_Products";
  EXPECT_EQ(get("SYSTEM", section, "Integration", "Path", 6).value, "àààààb");
  EXPECT_EQ(get("SYSTEM", section, "Integration", "Path", 0).value, "");
  EXPECT_EQ(get("SYSTEM", section, "Integration", "Path", -1).value, "");
  EXPECT_EQ(get("SYSTEM", section, "Integration", "No", 4).value, "_DEF");
}

TEST_F(XmlStoreTest, FillsTheWholeBufferWhenTheValueIsLong) {
  sim.putFile(kFile, around(std::string(5000, 'x')));
  std::string buffer(1000, '\0');
  EXPECT_EQ(store.getParameter("SYSTEM", "Complementary_Products", "Integration", "Path", "d", 1000,
                               buffer),
            0);
  EXPECT_EQ(buffer, std::string(1000, 'x'));
}

// --- Where it lies

TEST_F(XmlStoreTest, TellsAMissingPointer) {
  sim.registry().removeValue(kHive, kPointers, "Schema");
  EXPECT_EQ(getPath().code, -4001);
  EXPECT_EQ(setPath("x"), -4001);
  EXPECT_EQ(configPath().code, -4001);
  sim.registry().setText(kHive, kPointers, "Schema", kSchemaFile);
  sim.registry().removeValue(kHive, kPointers, "Config");
  EXPECT_EQ(getPath().code, -4002);
  EXPECT_EQ(setPath("x"), -4002);
  EXPECT_EQ(configPath().code, -4002);
}

TEST_F(XmlStoreTest, TellsAMissingKeyAsTheFirstPointer) {
  sim.registry().removeKey(kHive, kPointers);
  EXPECT_EQ(getPath().code, -4001);
  EXPECT_EQ(getPath().value, "");
}

TEST_F(XmlStoreTest, TakesAnEmptyPointerForAMissingOne) {
  sim.registry().setText(kHive, kPointers, "Config", "");
  EXPECT_EQ(getPath().code, -4002);
  sim.registry().setText(kHive, kPointers, "Schema", "");
  EXPECT_EQ(getPath().code, -4001);
}

TEST_F(XmlStoreTest, TellsAMissingFile) {
  sim.removeTree(kFile);
  EXPECT_EQ(getPath().code, -4012);
  EXPECT_EQ(getPath().value, "");
  EXPECT_EQ(setPath("x"), -4012);
  EXPECT_EQ(configPath().code, -4012);
  EXPECT_FALSE(sim.fileExists(kFile));
  sim.removeTree(kSchemaFile);
  EXPECT_EQ(getPath().code, -4011);
  EXPECT_EQ(setPath("x"), -4011);
  EXPECT_EQ(configPath().code, -4011);
}

TEST_F(XmlStoreTest, TakesAFolderForAMissingFile) {
  sim.removeTree(kFile);
  sim.makeFolders(kFile);
  EXPECT_EQ(getPath().code, -4012);
}

TEST_F(XmlStoreTest, GivesTheFolderOfTheFileWithoutBackslash) {
  EXPECT_EQ(configPath().code, 0);
  EXPECT_EQ(configPath().value, "C:\\Lumo\\Conf");
}

TEST_F(XmlStoreTest, GivesTheFolderWhateverTheFileHolds) {
  sim.putFile(kFile, "");
  EXPECT_EQ(configPath().value, "C:\\Lumo\\Conf");
  sim.putFile(kFile, "rubbish");
  EXPECT_EQ(configPath().value, "C:\\Lumo\\Conf");
}

// --- What is no document

TEST_F(XmlStoreTest, AFileOfNoBytesIsAnEmptyDocument) {
  sim.putFile(kFile, "");
  EXPECT_EQ(getPath().code, -1000);
  EXPECT_EQ(getPath().value, "");
  EXPECT_EQ(setPath("x"), -1000);
}

TEST_F(XmlStoreTest, AnotherRootViolatesTheSchema) {
  sim.putFile(kFile, "<other/>");
  EXPECT_EQ(getPath().code, -5000);
  EXPECT_EQ(setPath("x"), -5000);
  EXPECT_EQ(sim.fileText(kFile), "<other/>");
}

struct BadDocument {
  const char* label;
  std::string bytes;
};

void PrintTo(const BadDocument& document, std::ostream* out) { *out << document.label; }

class XmlStoreBadDocumentTest : public XmlStoreTest,
                                public testing::WithParamInterface<BadDocument> {};

TEST_P(XmlStoreBadDocumentTest, CannotBeReadAndStaysAsItIs) {
  sim.putFile(kFile, GetParam().bytes);
  EXPECT_EQ(getPath().code, -3000);
  EXPECT_EQ(getPath().value, "");
  EXPECT_EQ(setPath("x"), -3000);
  EXPECT_EQ(sim.fileText(kFile), GetParam().bytes);
  EXPECT_EQ(filesLeft().size(), 2U);
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

INSTANTIATE_TEST_SUITE_P(
    Documents, XmlStoreBadDocumentTest,
    testing::Values(
        BadDocument{"blanks", "  \r\n"}, BadDocument{"mark only", "\xEF\xBB\xBF"},
        BadDocument{"text", "rubbish"}, BadDocument{"ini file", "[S]\r\nk=v\r\n"},
        BadDocument{"cut in a tag", "<configuration><product na"},
        BadDocument{"cut after a tag", "<configuration><product name=\"SYSTEM\">"},
        BadDocument{"cut in a comment", "<configuration><!-- "},
        BadDocument{"cut before the end", "<configuration></configuration"},
        BadDocument{"crossed tags", "<configuration><a></configuration></a>"},
        BadDocument{"two roots", kWhole + kWhole},
        BadDocument{"text before the root", "x" + kWhole},
        BadDocument{"text behind the root", kWhole + "x"},
        BadDocument{"attribute without quotes", "<configuration a=b></configuration>"},
        BadDocument{"attribute twice", "<configuration a=\"1\" a=\"2\"></configuration>"},
        BadDocument{"unknown entity", "<configuration>&foo;</configuration>"},
        BadDocument{"bare ampersand", "<configuration>a & b</configuration>"},
        BadDocument{"unknown entity in an attribute", "<configuration a=\"&foo;\"/>"},
        BadDocument{"document type", "<!DOCTYPE configuration>" + kWhole},
        BadDocument{"entity from a file",
                    "<!DOCTYPE c [<!ENTITY e SYSTEM \"file:///C:/a.txt\">]><configuration>&e;"
                    "</configuration>"},
        BadDocument{"binary", std::string("\x7F\x45\x4C\x46\x00\x01\x02", 7)},
        BadDocument{"NUL inside", "<configuration>" + std::string(1, '\0') + "</configuration>"},
        BadDocument{"control character", "<configuration>\x01</configuration>"},
        BadDocument{"UTF-16", utf16(kWhole)}, BadDocument{"Latin-1 byte", around("\xE8")},
        BadDocument{"cut UTF-8", "<configuration/>\xC3"},
        BadDocument{"other encoding", "<?xml version=\"1.0\" encoding=\"windows-1252\"?>" + kWhole},
        BadDocument{"too long",
                    "<configuration>" + std::string(4U * 1024U * 1024U, ' ') + "</configuration>"}),
    [](const auto& row) { return "Number" + std::to_string(row.index); });

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
  sim.putFile(kFile, bomb + "]><configuration>&j;</configuration>");
  EXPECT_EQ(getPath().code, -3000);
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
  sim.putFile(kFile, deep(100));
  EXPECT_EQ(setPath("x"), 0);
  EXPECT_EQ(getPath().value, "x");
  for (const std::size_t levels : {std::size_t{101}, std::size_t{100000}}) {
    sim.putFile(kFile, deep(levels));
    EXPECT_EQ(getPath().code, -3000) << levels;
    EXPECT_EQ(setPath("x"), -3000) << levels;
  }
}

TEST_F(XmlStoreTest, EveryCutOfAGoodDocumentIsToldAndNoneCrashes) {
  const std::string whole = kDocument;
  const std::size_t rootEnd = whole.rfind('>') + 1;
  for (std::size_t length = 1; length < rootEnd; ++length) {
    sim.putFile(kFile, whole.substr(0, length));
    EXPECT_EQ(getPath().code, -3000) << length;
  }
}

TEST_F(XmlStoreTest, AFileThatMayNotBeReadIsANavigationError) {
  sim.diskOf(kFile).holdOpen(kFile, sim::Sharing::None);
  EXPECT_EQ(getPath().code, -3000);
  EXPECT_EQ(setPath("x"), -3000);
}

// --- Parameters

TEST_F(XmlStoreTest, RefusesEmptyOrImpossibleNames) {
  const std::string bad(1, '\x01');
  for (const std::string& name : {std::string(), bad, std::string("\xC3"), std::string("a\tb"),
                                  std::string("a\nb"), std::string("a\rb")}) {
    EXPECT_EQ(get(name, "s", "k", "a").code, -5001);
    EXPECT_EQ(get("p", name, "k", "a").code, -5002);
    EXPECT_EQ(get("p", "s", name, "a").code, -5003);
    EXPECT_EQ(get("p", "s", "k", name).code, -5004);
    EXPECT_EQ(store.setParameter(name, "s", "k", "a", 1, "v"), -5001);
    EXPECT_EQ(store.setParameter("p", name, "k", "a", 1, "v"), -5002);
    EXPECT_EQ(store.setParameter("p", "s", name, "a", 1, "v"), -5003);
    EXPECT_EQ(store.setParameter("p", "s", "k", name, 1, "v"), -5004);
  }
  EXPECT_EQ(sim.fileText(kFile), kDocument);
}

TEST_F(XmlStoreTest, RefusesImpossibleValuesAndTypes) {
  EXPECT_EQ(setPath(std::string("a\0b", 3)), -5005);
  EXPECT_EQ(setPath("\x1B"), -5005);
  EXPECT_EQ(setPath("\xE8"), -5005);
  EXPECT_EQ(setPath("a\r\nb"), -5005);
  EXPECT_EQ(setPath("x", 0), -6000);
  EXPECT_EQ(setPath("x", -1), -6000);
  EXPECT_EQ(sim.fileText(kFile), kDocument);
}

// --- Writing

TEST_F(XmlStoreTest, ReplacesAValue) {
  EXPECT_EQ(setPath("T:\\Nuovo"), 0);
  EXPECT_EQ(getPath().value, "T:\\Nuovo");
  EXPECT_EQ(filesLeft().size(), 2U);
}

TEST_F(XmlStoreTest, WritesTheDocumentInItsOneForm) {
  sim.putFile(kFile, "<configuration/>");
  EXPECT_EQ(setPath("S:\\Lumo"), 0);
  EXPECT_EQ(sim.fileText(kFile),
            "<?xml version=\"1.0\"?>\r\n"
            "<configuration>\r\n"
            "  <product name=\"SYSTEM\">\r\n"
            "    <section name=\"Complementary_Products\">\r\n"
            "      <key name=\"Integration\">\r\n"
            "        <attribute name=\"Path\" type=\"1\">S:\\Lumo</attribute>\r\n"
            "      </key>\r\n"
            "    </section>\r\n"
            "  </product>\r\n"
            "</configuration>\r\n");
}

TEST_F(XmlStoreTest, WritesAnEqualValueWithoutChangingTheRest) {
  EXPECT_EQ(setPath("S:\\Lumo"), 0);
  EXPECT_EQ(sim.fileText(kFile), kDocument);
}

TEST_F(XmlStoreTest, FindsTheLevelsInAnyCaseWhenWriting) {
  EXPECT_EQ(store.setParameter("System", "complementary_products", "INTEGRATION", "path", 2, "x"),
            0);
  EXPECT_EQ(getPath().value, "x");
  const std::string text = sim.fileText(kFile);
  EXPECT_NE(text.find("<attribute name=\"Path\" type=\"2\">x</attribute>"), std::string::npos);
  EXPECT_EQ(text.find("\"System\""), std::string::npos);
}

TEST_F(XmlStoreTest, AddsOnlyTheMissingLevels) {
  EXPECT_EQ(store.setParameter("SYSTEM", "Complementary_Products", "Integration", "User", 1, "m"),
            0);
  EXPECT_EQ(store.setParameter("DOVRA", "Client", "Path", "default", 1, "C:\\D"), 0);
  EXPECT_EQ(getPath().value, "S:\\Lumo");
  EXPECT_EQ(get("SYSTEM", "Complementary_Products", "Integration", "User").value, "m");
  EXPECT_EQ(get("DOVRA", "Client", "Path", "default").value, "C:\\D");
  const std::string text = sim.fileText(kFile);
  EXPECT_EQ(text.find("Complementary_Products"), text.rfind("Complementary_Products"));
}

TEST_F(XmlStoreTest, KeepsWhatItDoesNotKnow) {
  sim.putFile(kFile,
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
              "<!-- head -->\n"
              "<?tool keep?>\n"
              "<configuration version=\"7\">\n"
              "  <vendor>a<b/>c</vendor>\n"
              "  <!-- inner -->\n"
              "  <product name=\"PELAN\" colour=\"red\"><![CDATA[x < y]]></product>\n"
              "</configuration>\n"
              "<!-- tail -->\n");
  EXPECT_EQ(setPath("S:\\Lumo"), 0);
  EXPECT_EQ(getPath().value, "S:\\Lumo");
  const std::string text = sim.fileText(kFile);
  for (const char* const part :
       {"encoding=\"UTF-8\" standalone=\"yes\"", "<!-- head -->", "<?tool keep?>",
        "<configuration version=\"7\">", "<vendor>a<b />c</vendor>", "<!-- inner -->",
        "name=\"PELAN\" colour=\"red\"", "<![CDATA[x < y]]>", "<!-- tail -->"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
  }
}

class XmlStoreValueTest : public XmlStoreTest, public testing::WithParamInterface<const char*> {};

TEST_P(XmlStoreValueTest, ComesBackAsItWasWritten) {
  EXPECT_EQ(setPath(GetParam()), 0);
  EXPECT_EQ(getPath().code, 0);
  EXPECT_EQ(getPath().value, GetParam());
}

INSTANTIATE_TEST_SUITE_P(Values, XmlStoreValueTest,
                         testing::Values("", " ", "   ", " a ", "a&b", "<a>", "]]>", "&amp;",
                                         "\"'\"", "<!-- -->", "Città è più €", "a\tb", "a\nb",
                                         "\\\\srv\\dati\\", "%PATHWORK%"),
                         [](const auto& row) { return "Number" + std::to_string(row.index); });

TEST_F(XmlStoreTest, FindsNamesOfAnyCharactersAgain) {
  for (const char* const name : {"a b", " ", "<a>", "a&b", "\"'", "è"}) {
    EXPECT_EQ(store.setParameter("SYSTEM", name, "k", "a", 1, name), 0);
    EXPECT_EQ(store.setParameter("SYSTEM", name, "k", "b", 1, "2"), 0);
    EXPECT_EQ(get("SYSTEM", name, "k", "a").value, name);
    EXPECT_EQ(get("SYSTEM", name, "k", "b").value, "2");
  }
}

TEST_F(XmlStoreTest, ReadsTheFileAnewBeforeEachWrite) {
  XmlStore other{sim.machine().files, sim.machine().registry, sim.machine().locale};
  EXPECT_EQ(store.setParameter("A", "s", "k", "a", 1, "1"), 0);
  EXPECT_EQ(other.setParameter("B", "s", "k", "a", 1, "2"), 0);
  EXPECT_EQ(store.setParameter("C", "s", "k", "a", 1, "3"), 0);
  EXPECT_EQ(get("A", "s", "k", "a").value, "1");
  EXPECT_EQ(get("B", "s", "k", "a").value, "2");
  EXPECT_EQ(get("C", "s", "k", "a").value, "3");
}

TEST_F(XmlStoreTest, NeverLeavesHalfAFileInPlace) {
  std::vector<std::string> seen;
  for (std::size_t i = 0; i < 20; ++i) {
    sim.putFile(kFile, kDocument);
    sim.callLog().clear();
    sim.onCall(i, [&] { seen.push_back(sim.fileText(kFile)); });
    setPath("T:\\Nuovo");
  }
  const std::string last = sim.fileText(kFile);
  ASSERT_FALSE(seen.empty());
  for (const std::string& text : seen) {
    EXPECT_TRUE(text == kDocument || text == last) << text;
  }
}

TEST_F(XmlStoreTest, AFailedWriteLeavesTheOldFileAndNoOther) {
  for (const sim::CallKind kind : {sim::CallKind::FileWrite, sim::CallKind::FileReplace}) {
    for (const SystemCode code : {system_code::kAccessDenied, system_code::kDiskFull}) {
      sim.callLog().setInjector([&](const sim::SimCall& call) -> std::optional<SystemCode> {
        return call.kind == kind ? std::optional<SystemCode>(code) : std::nullopt;
      });
      EXPECT_EQ(setPath("T:\\Nuovo"), -2000);
      EXPECT_EQ(sim.fileText(kFile), kDocument);
      EXPECT_EQ(filesLeft(), (std::vector<std::string>{"schema.xsd", "config.xml"}));
    }
  }
}

TEST_F(XmlStoreTest, AFullDiskLeavesTheOldFileAndNoOther) {
  sim.diskOf(kFile).setCapacity(sim.diskOf(kFile).usedBytes() + 10);
  EXPECT_EQ(setPath("T:\\Nuovo"), -2000);
  EXPECT_EQ(sim.fileText(kFile), kDocument);
  EXPECT_EQ(filesLeft().size(), 2U);
}

TEST_F(XmlStoreTest, ReadsDirectlyAfterEachWriteAgain) {
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(setPath("T:\\" + std::to_string(i)), 0);
    EXPECT_EQ(getPath().value, "T:\\" + std::to_string(i));
  }
}

}  // namespace
}  // namespace trelv
