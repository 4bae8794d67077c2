#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "kit/LintRules.h"
#include "kit/Progress.h"
#include "kit/QuietProgram.h"
#include "kit/Workplace.h"

namespace trelv::kit {

struct ByteSource;

/// Looks at what the paths of one command line name: tells host folders, media, packs and
/// configuration files apart by what they hold, reads each once, and has the rules judge it. Of
/// several host folders the first is the one that packs and files beside it are compared with.
class Linting {
 public:
  Linting(Workplace& workplace, const RuleChoice& rules, Progress& progress);

  /// Raises Failure for a path that is none of these or cannot be read.
  std::vector<Finding> run(const std::vector<std::string>& given);

 private:
  enum class Kind { Host, Medium, Pack, Catalogue, Configuration };
  struct Thing {
    GivenPath place;
    Kind kind;
  };

  /// A catalogue with the configuration files that it names, in its order.
  struct Products {
    Catalogue catalogue;
    std::vector<Configuration> configurations;
  };

  /// What a pack brings: its files by their path in it, upper case, with "\".
  using Brought = std::map<std::string, std::string>;

  Thing recognise(const std::string& given);
  Kind kindOfFolder(const GivenPath& place);
  Kind kindOfFile(const GivenPath& place);

  void lintHost(const GivenPath& place);
  void lintRecords(Host& host, const Products& products);
  void lintMedium(const GivenPath& place);
  void lintPackFile(const std::string& path, const GivenPath& shownBy, PackPlace place);
  void lintArchive(const ByteSource& source, Pack pack);
  void readArchive(const ByteSource& source, Pack& pack, Brought& files,
                   std::vector<std::pair<std::string, std::string>>& inner);
  void judgePack(Pack& pack, const Brought& files);
  void lintCatalogueFile(const GivenPath& place);
  void lintConfigurationFile(const GivenPath& place);

  /// The text of a file (full path); null where it is missing or cannot be read.
  const IniText* readIni(const std::string& path, std::string& trouble);
  const IniText* keep(const std::string& bytes);
  Catalogue catalogueOf(const IniText* text, const std::string& shown, const std::string& trouble,
                        Host* host);
  Configuration configurationOf(const IniText& text, const std::string& shown,
                                const std::string& product, Host* host);
  Products readProducts(Host& host);
  MediumText readMediumText(const GivenPath& place, const char* name);
  void judge(const Products& products);
  bool anythingInstalled(const Host& host, const std::vector<Configuration>& configurations);

  Workplace& workplace_;
  const RuleChoice& rules_;
  Progress& progress_;
  QuietProgram quiet_;
  std::unique_ptr<Host> host_;
  /// The host's, once read.
  std::unique_ptr<Products> hostProducts_;
  std::list<IniText> texts_;
  std::vector<Finding> findings_;
};

}  // namespace trelv::kit
