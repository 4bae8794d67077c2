#pragma once

#include <list>
#include <map>
#include <set>
#include <string>
#include <utility>
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

  /// A share with what is configured there.
  struct KnownHost {
    Host host;
    Products products;
  };

  /// What a pack brings: its files by their path in it, upper case, with "\".
  using Brought = std::map<std::string, std::string>;
  struct ReadPack {
    Pack pack;
    Brought files;
  };
  /// Packs within a pack: path, bytes.
  using Inner = std::vector<std::pair<std::string, std::string>>;

  std::vector<Thing> recogniseAll(const std::vector<std::string>& given);
  Thing recognise(const std::string& given);
  bool isSame(const GivenPath& left, const GivenPath& right);
  Kind kindOfFolder(const GivenPath& place);
  Kind kindOfFile(const GivenPath& place);

  void lint(const Thing& thing);
  void lintHost(const GivenPath& place);
  void lintRecords(KnownHost& known);
  void lintMedium(const GivenPath& place);
  void lintPackFile(const std::string& path, const GivenPath& shownBy, PackPlace place);
  void lintCatalogueFile(const GivenPath& place);
  void lintConfigurationFile(const GivenPath& place);

  void readHost(KnownHost& known);
  bool anythingInstalled(const KnownHost& known);
  std::vector<std::string> filesIn(const std::string& folder, const GivenPath& place);

  /// Reads a pack and the packs in it. One that a start has opened meanwhile is left out, unless it
  /// was asked for by its name.
  void readPackFile(const std::string& path, const GivenPath& shownBy, PackPlace place,
                    KnownHost* known, std::vector<ReadPack>& packs);
  void readArchive(const ByteSource& source, Pack given, std::vector<ReadPack>& packs);
  static void readContent(const ByteSource& source, ReadPack& read, Inner& inner);
  /// Is the entry a pack that is opened out of this one?
  static bool isInner(const Pack& pack, const PackEntry& entry);
  static void addArriving(const Pack& pack, std::set<std::string>& arriving);
  static std::map<std::string, std::string> productsByFile(const Catalogue& catalogue,
                                                           const KnownHost* known);
  static const Configuration* replacedBy(const std::string& inner, const KnownHost* known);
  Products productsIn(const ReadPack& read, const KnownHost* known);
  void judgePack(ReadPack& read, const KnownHost* known);

  /// The text of a file (full path); null where it is missing or cannot be read.
  const IniText* readIni(const std::string& path, std::string& trouble);
  /// Null where there is no such file; raises Failure where it cannot be read.
  const IniText* readExistingIni(const std::string& path, const GivenPath& place);
  const IniText* keep(const std::string& bytes);
  Catalogue catalogueOf(const IniText* text, const std::string& shown, const std::string& trouble,
                        Host* host);
  Configuration configurationOf(const IniText& text, const std::string& shown,
                                const std::string& product, Host* host);
  Products readProducts(Host& host);
  MediumText readMediumText(const GivenPath& place, const char* name);
  void judge(const Products& products);

  /// The host that packs and files are compared with; null without one.
  KnownHost* compared() { return hosts_.empty() ? nullptr : &hosts_.front(); }
  static Host* hostOf(KnownHost* known) { return known != nullptr ? &known->host : nullptr; }

  Workplace& workplace_;
  const RuleChoice& rules_;
  Progress& progress_;
  QuietProgram quiet_;
  std::list<KnownHost> hosts_;
  std::list<IniText> texts_;
  std::vector<Finding> findings_;
};

}  // namespace trelv::kit
