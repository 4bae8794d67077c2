#include "kit/CommandLine.h"

#include <algorithm>
#include <exception>
#include <new>
#include <nlohmann/json.hpp>

#include "base/RuntimeError.h"
#include "kit/Failure.h"
#include "kit/ProgramVersion.h"
#include "kit/Syntax.h"

namespace trelv::kit {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kSchema = "trelv/1";
constexpr const char* kProgram = "trelv";

struct CommonOptions {
  bool json = false;
  bool quiet = false;
  bool help = false;
  bool version = false;
};

void declareCommon(Syntax& syntax, CommonOptions& options) {
  syntax.flag("json", "scrive un documento JSON", options.json);
  syntax.flag("quiet", "non mostra l'avanzamento", options.quiet);
  syntax.flag("help", "mostra questo aiuto", options.help);
  syntax.flag("version", "mostra la versione", options.version);
}

/// One line, whatever a path has in it.
int complain(Workplace& workplace, std::string text, int exitCode) {
  std::replace_if(
      text.begin(), text.end(),
      [](char character) -> bool { return static_cast<unsigned char>(character) < ' '; }, ' ');
  workplace.console.complain(std::string(kProgram) + ": " + text + "\n");
  return exitCode;
}

/// An answer that nobody got is none.
void print(Workplace& workplace, const std::string& text) {
  const SystemCode code = workplace.console.print(text);
  if (code != system_code::kSuccess) {
    throw Failure("standard output", code);
  }
}

/// One document: these keys, in this order, and nothing else.
std::string document(const std::string& verb, const Answer& answer) {
  Json findings = Json::array();
  for (const Finding& finding : answer.findings) {
    findings.push_back({{"code", finding.code},
                        {"severity", severityName(finding.severity)},
                        {"file", finding.file},
                        {"line", finding.line ? Json(*finding.line) : Json(nullptr)},
                        {"text", finding.text},
                        {"remedy", finding.remedy}});
  }
  const Json whole{{"schema", kSchema},
                   {"verb", verb},
                   {"program", programVersion()},
                   {"findings", findings},
                   {"result", answer.result ? *answer.result : Json::object()}};
  // A name that is no UTF-8 must not end the document.
  return whole.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string overview(const std::vector<VerbRow>& table) {
  std::string text =
      "trelv: prepara, controlla e spiega le consegne di TrelvManager\n\n"
      "Uso: trelv VERBO [OPZIONI] ARGOMENTI\n\nVerbi:\n";
  for (const VerbRow& row : table) {
    const std::string name = row.name;
    text += "  " + name + std::string(name.size() < 10 ? 10 - name.size() : 1, ' ') + row.summary +
            "\n";
  }
  return text + "\ntrelv VERBO --help mostra argomenti e opzioni di un verbo.\n";
}

std::string versionLine() { return std::string(kProgram) + " " + programVersion() + "\n"; }

/// A command line without verb: it can ask for help or version only.
int runWithoutVerb(const std::vector<std::string>& arguments, Workplace& workplace,
                   const std::vector<VerbRow>& table) {
  CommonOptions options;
  Syntax syntax;
  declareCommon(syntax, options);
  syntax.read(arguments);
  if (!options.help && !options.version) {
    throw WrongUsage("manca il verbo");
  }
  print(workplace, options.help ? overview(table) : versionLine());
  return exit_code::kGood;
}

/// Help and version are shown whatever else stands there.
bool asks(const std::vector<std::string>& arguments, const char* option) {
  const auto end = std::find(arguments.begin(), arguments.end(), "--");
  return std::find(arguments.begin(), end, option) != end;
}

int runVerb(const VerbRow& row, const std::vector<std::string>& arguments, Workplace& workplace) {
  const std::unique_ptr<Verb> verb = row.make();
  CommonOptions options;
  Syntax syntax;
  verb->declare(syntax);
  declareCommon(syntax, options);
  if (asks(arguments, "--help") || asks(arguments, "--version")) {
    print(workplace,
          asks(arguments, "--help") ? syntax.help(row.name, row.summary) : versionLine());
    return exit_code::kGood;
  }
  syntax.read(arguments);
  Progress progress(workplace.console, !options.quiet && workplace.console.errorIsTerminal());
  const Answer answer = verb->run(workplace, progress);
  progress.clear();
  print(workplace,
        options.json ? document(row.name, answer) : findingsText(answer.findings) + answer.text);
  return answer.exitCode;
}

/// Options may stand before the verb too.
int runArguments(std::vector<std::string> arguments, Workplace& workplace,
                 const std::vector<VerbRow>& table) {
  const auto name =
      std::find_if(arguments.begin(), arguments.end(),
                   [](const std::string& text) -> bool { return !text.starts_with("-"); });
  if (name == arguments.end()) {
    return runWithoutVerb(arguments, workplace, table);
  }
  const auto row = std::find_if(table.begin(), table.end(), [&](const VerbRow& candidate) -> bool {
    return candidate.name == *name;
  });
  if (row == table.end()) {
    throw WrongUsage("verbo sconosciuto: " + *name);
  }
  arguments.erase(name);
  return runVerb(*row, arguments, workplace);
}

}  // namespace

int run(const std::vector<std::string>& arguments, Workplace& workplace,
        const std::vector<VerbRow>& table) {
  try {
    return runArguments(arguments, workplace, table);
  } catch (const WrongUsage& error) {
    return complain(workplace, error.what() + std::string(" (trelv --help)"), exit_code::kUsage);
  } catch (const Failure& error) {
    return complain(workplace, error.what(), exit_code::kFailed);
  } catch (const std::bad_alloc&) {
    return complain(workplace, "memoria insufficiente", exit_code::kFailed);
  } catch (const RuntimeError& error) {
    return complain(workplace, error.description(), exit_code::kFailed);
  } catch (const std::exception& error) {
    return complain(workplace, error.what(), exit_code::kFailed);
  }
}

}  // namespace trelv::kit
