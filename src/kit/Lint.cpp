#include "kit/Lint.h"

#include "kit/Linting.h"

namespace trelv::kit {

void Lint::declare(Syntax& syntax) {
  syntax.rest("PERCORSO", "cartelle di host, supporti, pacchetti, cataloghi, configurazioni", 1,
              paths_);
  syntax.list("only", "CODICE,…", "cerca soltanto questi errori", only_);
  syntax.list("ignore", "CODICE,…", "non cerca questi errori", ignored_);
}

Answer Lint::run(Workplace& workplace, Progress& progress) {
  const RuleChoice rules(only_, ignored_);
  Answer answer;
  answer.findings = Linting(workplace, rules, progress).run(paths_);
  answer.exitCode = answer.findings.empty() ? exit_code::kGood : exit_code::kFindings;
  return answer;
}

}  // namespace trelv::kit
