#include "kit/Finding.h"

namespace trelv::kit {
namespace {

std::string italianName(Severity severity) {
  switch (severity) {
    case Severity::Error:
      return "errore";
    case Severity::Warning:
      return "avviso";
    case Severity::Note:
      break;
  }
  return "nota";
}

}  // namespace

std::string severityName(Severity severity) {
  switch (severity) {
    case Severity::Error:
      return "error";
    case Severity::Warning:
      return "warning";
    case Severity::Note:
      break;
  }
  return "note";
}

std::string findingsText(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) {
    const std::string line = finding.line ? ":" + std::to_string(*finding.line) : "";
    text += finding.file + line + ": " + italianName(finding.severity) + " " + finding.code + ": " +
            finding.text + "\n";
    text += "    rimedio: " + finding.remedy + "\n";
  }
  return text;
}

}  // namespace trelv::kit
