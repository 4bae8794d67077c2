#include "platform/XmlStore.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/Text.h"
#include "platform/modLibrary.h"

namespace trelv {
namespace {

constexpr const char* kPointerKey = "SOFTWARE\\LUMO\\Configurazione";

/// A longer file is no configuration of ours, bytes.
constexpr std::size_t kMostBytes = std::size_t{4} * 1024 * 1024;
/// Nor is one with more elements in each other: written with its indentation it would grow with the
/// square of their number.
constexpr int kMostLevels = 100;

/// As long as a change of a file is tried. Whoever has its turn needs milliseconds.
constexpr std::uint32_t kLongestWait = 3000;

namespace code {
constexpr std::int32_t kDone = 0;
constexpr std::int32_t kDocumentEmpty = -1000;
constexpr std::int32_t kInsertFailed = -2000;
constexpr std::int32_t kNavigateError = -3000;
constexpr std::int32_t kNoProduct = -3001;
constexpr std::int32_t kNoSection = -3002;
constexpr std::int32_t kNoKey = -3003;
constexpr std::int32_t kNoAttribute = -3004;
constexpr std::int32_t kNoSchemaPointer = -4001;
constexpr std::int32_t kNoConfigPointer = -4002;
constexpr std::int32_t kNoSchemaFile = -4011;
constexpr std::int32_t kNoConfigFile = -4012;
constexpr std::int32_t kSchemaViolated = -5000;
constexpr std::int32_t kProductInvalid = -5001;
constexpr std::int32_t kSectionInvalid = -5002;
constexpr std::int32_t kKeyInvalid = -5003;
constexpr std::int32_t kAttributeInvalid = -5004;
constexpr std::int32_t kValueInvalid = -5005;
constexpr std::int32_t kTypeInvalid = -6000;
}  // namespace code

/// One level of the address of a setting: its element, and what its absence and a bad name answer.
struct Level {
  const char* element;
  std::string name;
  std::int32_t missing;
  std::int32_t invalid;
};

using Address = std::array<Level, 4>;

Address addressOf(const std::string& product, const std::string& section, const std::string& key,
                  const std::string& attribute) {
  return {{{"product", product, code::kNoProduct, code::kProductInvalid},
           {"section", section, code::kNoSection, code::kSectionInvalid},
           {"key", key, code::kNoKey, code::kKeyInvalid},
           {"attribute", attribute, code::kNoAttribute, code::kAttributeInvalid}}};
}

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

/// Bytes that follow the first byte of a UTF-8 character; nothing for a byte that begins none.
std::optional<std::size_t> followers(char first) {
  const auto byte = static_cast<unsigned char>(first);
  if (byte < 0x80U) {
    return 0;
  }
  if (byte >= 0xC2U && byte < 0xE0U) {
    return 1;
  }
  if (byte >= 0xE0U && byte < 0xF0U) {
    return 2;
  }
  if (byte >= 0xF0U && byte < 0xF5U) {
    return 3;
  }
  return std::nullopt;
}

/// Neither a control character nor half of one, and none that Unicode lacks.
bool isXmlCharacter(std::uint32_t number) {
  return number == '\t' || number == '\n' || number == '\r' ||
         (number >= 0x20U && number <= 0xD7FFU) || (number >= 0xE000U && number <= 0xFFFDU) ||
         (number >= 0x10000U && number <= 0x10FFFFU);
}

/// The number of the character that begins the text, with so many bytes behind the first; nothing
/// where these do not belong to it or where fewer would have done.
std::optional<std::uint32_t> characterOf(std::string_view text, std::size_t count) {
  constexpr std::array<std::uint32_t, 4> kLeast = {0, 0x80, 0x800, 0x10000};
  const std::string_view rest = text.substr(1, count);
  if (rest.size() < count || !std::all_of(rest.begin(), rest.end(), isContinuation)) {
    return std::nullopt;
  }
  // Of the first byte those bits count that the length leaves.
  std::uint32_t number =
      static_cast<unsigned char>(text[0]) & (count == 0 ? 0x7FU : 0x3FU >> count);
  for (const char byte : rest) {
    number = (number << 6U) | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return number < kLeast.at(count) ? std::nullopt : std::optional(number);
}

/// UTF-8 without characters that no XML text may hold: control characters other than tab and line
/// ends.
bool isXmlText(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const std::optional<std::size_t> count = followers(text[i]);
    if (!count) {
      return false;
    }
    const std::optional<std::uint32_t> character = characterOf(text.substr(i), *count);
    if (!character || !isXmlCharacter(*character)) {
      return false;
    }
    i += 1 + *count;
  }
  return true;
}

/// A name has no line ends and tabs, which readers of XML turn into blanks.
bool isName(const std::string& text) {
  return !text.empty() && isXmlText(text) && text.find_first_of("\t\r\n") == std::string::npos;
}

/// A value has no carriage return, which readers of XML turn into a line feed.
bool isValue(const std::string& text) {
  return isXmlText(text) && text.find('\r') == std::string::npos;
}

std::int32_t checkNames(const Address& address) {
  for (const Level& level : address) {
    if (!isName(level.name)) {
      return level.invalid;
    }
  }
  return code::kDone;
}

/// Puts a text into a caller's buffer as a library does: at most `size` characters of the code
/// page, the rest of the buffer stays NUL.
void fill(machine::Locale& locale, const std::string& text, std::int32_t size,
          std::string& buffer) {
  const std::size_t room =
      std::min(buffer.size(), static_cast<std::size_t>(std::max<std::int32_t>(size, 0)));
  const std::string written = locale.toAnsi(text).substr(0, room);
  buffer = locale.fromAnsi(written) + std::string(buffer.size() - written.size(), '\0');
}

// --- The document

constexpr const char* kEntities[] = {"lt", "gt", "amp", "quot", "apos"};

/// The text between "&" and ";": a predefined entity or a character by its number. The parser takes
/// any number, and what it makes of it could not be read back.
bool isReference(std::string_view name) {
  if (name.size() > 1 && name[0] == '#') {
    const bool hexadecimal = name[1] == 'x';
    const std::string_view digits = name.substr(hexadecimal ? 2 : 1);
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number,
                                              hexadecimal ? 16 : 10);
    return error == std::errc() && end == digits.data() + digits.size() && isXmlCharacter(number);
  }
  return std::find(std::begin(kEntities), std::end(kEntities), name) != std::end(kEntities);
}

bool hasOnlyReferences(std::string_view raw) {
  for (std::size_t at = raw.find('&'); at != std::string_view::npos; at = raw.find('&', at + 1)) {
    const std::size_t end = raw.find(';', at);
    if (end == std::string_view::npos || !isReference(raw.substr(at + 1, end - at - 1))) {
      return false;
    }
  }
  return true;
}

/// Looks for what the parser lets pass although it is not well-formed, or not wanted. The document
/// must have been read without resolving references.
class StrictReader : public pugi::xml_tree_walker {
 public:
  bool for_each(pugi::xml_node& node) override {
    const bool top = depth() == 0;
    if (depth() >= kMostLevels) {
      return false;
    }
    switch (node.type()) {
      case pugi::node_element:
        roots_ += top ? 1 : 0;
        return attributesAreFine(node);
      case pugi::node_pcdata:
        return !top && hasOnlyReferences(node.value());
      case pugi::node_cdata:
        return !top;
      case pugi::node_doctype:
        // Brings entities that could grow without end: no configuration of ours has one.
        return false;
      case pugi::node_declaration:
        return encodingIsFine(node);
      default:
        return true;
    }
  }
  bool end(pugi::xml_node& /*document*/) override { return roots_ == 1; }

 private:
  static bool attributesAreFine(const pugi::xml_node& node) {
    for (const pugi::xml_attribute attribute : node.attributes()) {
      if (!hasOnlyReferences(attribute.value()) || node.attribute(attribute.name()) != attribute) {
        return false;
      }
    }
    return true;
  }
  static bool encodingIsFine(const pugi::xml_node& declaration) {
    const pugi::xml_attribute encoding = declaration.attribute("encoding");
    return !encoding || equalNoCase(encoding.value(), "UTF-8") ||
           equalNoCase(encoding.value(), "US-ASCII");
  }

  int roots_ = 0;
};

constexpr unsigned int kParseRaw = pugi::parse_cdata | pugi::parse_pi | pugi::parse_comments |
                                   pugi::parse_declaration | pugi::parse_doctype |
                                   pugi::parse_fragment;
/// Comments and instructions of others are kept, and a value of blanks only.
constexpr unsigned int kParse = pugi::parse_default | pugi::parse_pi | pugi::parse_comments |
                                pugi::parse_declaration | pugi::parse_ws_pcdata_single;

bool parse(pugi::xml_document& document, const std::string& bytes, unsigned int options) {
  return document.load_buffer(bytes.data(), bytes.size(), options, pugi::encoding_utf8)
      .
      operator bool();
}

bool isWellFormed(const std::string& bytes) {
  pugi::xml_document raw;
  StrictReader reader;
  return isXmlText(bytes) && parse(raw, bytes, kParseRaw) && raw.traverse(reader);
}

/// Every line end as one line feed, also where the parser leaves it: in an instruction each writing
/// would otherwise add to it.
std::string withLineFeeds(std::string text) {
  return replaceAll(replaceAll(std::move(text), kCrLf, "\n"), "\r", "\n");
}

/// Fills the document from the file's bytes; 0 or the code of what is wrong with them.
std::int32_t load(const std::string& bytes, pugi::xml_document& document) {
  if (bytes.empty()) {
    return code::kDocumentEmpty;
  }
  if (bytes.size() > kMostBytes || !isWellFormed(bytes) ||
      !parse(document, withLineFeeds(bytes), kParse)) {
    return code::kNavigateError;
  }
  return document.child("configuration") ? code::kDone : code::kSchemaViolated;
}

pugi::xml_node findLevel(const pugi::xml_node& parent, const Level& level) {
  for (const pugi::xml_node node : parent.children(level.element)) {
    if (equalNoCase(node.attribute("name").value(), level.name)) {
      return node;
    }
  }
  return {};
}

/// The element of a setting; `missing` is 0 or the code of the first level that is not there.
pugi::xml_node find(const pugi::xml_document& document, const Address& address,
                    std::int32_t& missing) {
  pugi::xml_node node = document.child("configuration");
  missing = code::kDone;
  for (const Level& level : address) {
    node = findLevel(node, level);
    if (!node) {
      missing = level.missing;
      break;
    }
  }
  return node;
}

/// The element of a setting, made with the levels above it when missing; empty when memory ends.
pugi::xml_node findOrMake(pugi::xml_document& document, const Address& address) {
  pugi::xml_node node = document.child("configuration");
  for (const Level& level : address) {
    pugi::xml_node next = findLevel(node, level);
    if (!next) {
      next = node.append_child(level.element);
      next.append_attribute("name").set_value(level.name.c_str());
    }
    node = next;
  }
  return node;
}

/// Comments may stand between the parts of a value.
std::string textOf(const pugi::xml_node& element) {
  std::string text;
  for (const pugi::xml_node node : element.children()) {
    if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
      text += node.value();
    }
  }
  return text;
}

bool setElement(pugi::xml_node element, std::int32_t type, const std::string& value) {
  element.remove_children();
  pugi::xml_attribute typeAttribute = element.attribute("type");
  if (!typeAttribute) {
    typeAttribute = element.append_attribute("type");
  }
  return typeAttribute.set_value(type) && element.text().set(value.c_str());
}

class TextWriter : public pugi::xml_writer {
 public:
  void write(const void* data, std::size_t size) override {
    text.append(static_cast<const char*>(data), size);
  }
  std::string text;
};

std::string textOf(const pugi::xml_document& document) {
  TextWriter writer;
  document.save(writer, "  ", pugi::format_indent, pugi::encoding_utf8);
  return replaceAll(std::move(writer.text), "\n", kCrLf);
}

/// As each further writing would leave it: blanks that were alone in an element count no more where
/// one has come beside them, which the parser only sees when it reads anew. Nothing where it could
/// not be read again, as when its line ends have made it too long.
std::optional<std::string> inOneForm(const pugi::xml_document& document) {
  pugi::xml_document again;
  if (load(textOf(document), again) != code::kDone) {
    return std::nullopt;
  }
  std::string text = textOf(again);
  return text.size() > kMostBytes ? std::nullopt : std::optional(std::move(text));
}

// --- The file

/// Puts a new content in the place of a file in one step: a reader, or a crash in between, meets
/// the old content or the new one. `whose` makes the temporary file this process's own.
bool replaceContent(machine::Files& files, const std::string& path, const std::string& whose,
                    const std::string& bytes) {
  const std::string temporary = path + "-" + whose + ".tmp";
  if (files.write(temporary, bytes) == system_code::kSuccess &&
      files.copyRights(path, temporary) == system_code::kSuccess &&
      files.replaceFile(temporary, path) == system_code::kSuccess) {
    return true;
  }
  files.removeFile(temporary);
  return false;
}

/// Nothing can stand there: neither the file nor the server, or the path is none.
bool namesNoFile(SystemCode code) {
  return meansMissing(code) || code == system_code::kBadNetPath ||
         code == system_code::kInvalidName || code == system_code::kBadPathname;
}

/// A text value of the pointer key; empty when it is missing or no text.
std::string pointer(machine::RegistryKey& key, machine::Locale& locale, const std::string& name) {
  std::uint32_t type = 0;
  std::uint32_t size = 0;
  if (key.describeValue(name, type, size) != system_code::kSuccess ||
      type != machine::value_type::kText) {
    return {};
  }
  std::string data(size, '\0');
  if (key.readValue(name, data) != system_code::kSuccess) {
    return {};
  }
  return locale.fromAnsi(data.substr(0, data.find('\0')));
}

/// Finds the XML file; 0 or the code of what is missing.
std::int32_t locate(machine::Files& files, machine::Registry& registry, machine::Locale& locale,
                    std::string& configFile) {
  std::unique_ptr<machine::RegistryKey> key;
  if (registry.openKey(machine::Hive::LocalMachine, kPointerKey, machine::key_access::kQueryValue,
                       key) != system_code::kSuccess) {
    return code::kNoSchemaPointer;
  }
  const std::string schemaFile = pointer(*key, locale, "Schema");
  configFile = pointer(*key, locale, "Config");
  if (schemaFile.empty()) {
    return code::kNoSchemaPointer;
  }
  if (configFile.empty()) {
    return code::kNoConfigPointer;
  }
  machine::FileFacts facts;
  if (files.look(schemaFile, facts) != system_code::kSuccess || facts.folder) {
    return code::kNoSchemaFile;
  }
  if (files.look(configFile, facts) != system_code::kSuccess || facts.folder) {
    return code::kNoConfigFile;
  }
  return code::kDone;
}

/// Reads the XML file into the document; 0 or a code.
std::int32_t read(machine::Files& files, const std::string& configFile,
                  pugi::xml_document& document) {
  std::string bytes;
  const SystemCode answer = files.read(configFile, kMostBytes + 1, bytes);
  if (answer != system_code::kSuccess) {
    return namesNoFile(answer) ? code::kNoConfigFile : code::kNavigateError;
  }
  return load(bytes, document);
}

/// Finds the XML file and reads it into the document; 0 or a code.
std::int32_t open(machine::Files& files, machine::Registry& registry, machine::Locale& locale,
                  std::string& configFile, pugi::xml_document& document) {
  const std::int32_t located = locate(files, registry, locale, configFile);
  return located == code::kDone ? read(files, configFile, document) : located;
}

}  // namespace

XmlStore::XmlStore(machine::Files& files, machine::Registry& registry, machine::Locale& locale,
                   machine::SystemFacts& system, machine::Exclusion& exclusion)
    : files_(files), registry_(registry), locale_(locale), system_(system), exclusion_(exclusion) {}

std::int32_t XmlStore::getParameter(const std::string& product, const std::string& section,
                                    const std::string& key, const std::string& attribute,
                                    const std::string& defaultValue, std::int32_t size,
                                    std::string& buffer) {
  const Address address = addressOf(product, section, key, attribute);
  std::int32_t answer = checkNames(address);
  if (answer != code::kDone) {
    return answer;
  }
  std::string configFile;
  pugi::xml_document document;
  answer = open(files_, registry_, locale_, configFile, document);
  if (answer != code::kDone) {
    return answer;
  }
  const pugi::xml_node element = find(document, address, answer);
  fill(locale_, answer == code::kDone ? textOf(element) : defaultValue, size, buffer);
  return answer;
}

std::int32_t XmlStore::setParameter(const std::string& product, const std::string& section,
                                    const std::string& key, const std::string& attribute,
                                    std::int32_t type, const std::string& value) {
  const Address address = addressOf(product, section, key, attribute);
  std::int32_t answer = checkNames(address);
  if (answer != code::kDone) {
    return answer;
  }
  if (type < 1) {
    return code::kTypeInvalid;
  }
  if (!isValue(value)) {
    return code::kValueInvalid;
  }
  std::string configFile;
  pugi::xml_document asItStands;
  answer = open(files_, registry_, locale_, configFile, asItStands);
  if (answer != code::kDone) {
    return answer;
  }
  const std::string whose =
      std::to_string(system_.sessionId()) + "-" + std::to_string(system_.processId());
  // Who may make no file there is not to wait for a turn that he never gets.
  if (files_.mayAddFile(modLibrary::ParentPath(configFile)) == system_code::kAccessDenied) {
    return code::kInsertFailed;
  }
  // Without its turn a write could undo another one; refused, it is told and can be repeated.
  std::unique_ptr<machine::Mark> turn;
  if (exclusion_.take(configFile + ".lck", whose, kLongestWait, turn) != system_code::kSuccess) {
    return code::kInsertFailed;
  }
  // Another program may have written meanwhile.
  pugi::xml_document document;
  answer = read(files_, configFile, document);
  if (answer != code::kDone) {
    return answer;
  }
  if (!setElement(findOrMake(document, address), type, value)) {
    return code::kInsertFailed;
  }
  const std::optional<std::string> text = inOneForm(document);
  return text && replaceContent(files_, configFile, whose, *text) ? code::kDone
                                                                  : code::kInsertFailed;
}

std::int32_t XmlStore::getConfigPath(std::int32_t /*kind*/, std::string& buffer) {
  std::string configFile;
  const std::int32_t answer = locate(files_, registry_, locale_, configFile);
  if (answer == code::kDone) {
    fill(locale_, modLibrary::ParentPath(configFile), static_cast<std::int32_t>(buffer.size()),
         buffer);
  }
  return answer;
}

}  // namespace trelv
