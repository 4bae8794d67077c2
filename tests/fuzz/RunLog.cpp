// Whatever stands in a run log: what is read of it are its lines, in their order, and a whole start
// that stands at its end is read as if it stood alone.
#include <cstdint>

#include "base/Text.h"
#include "fuzz/Property.h"
#include "fuzz/Targets.h"
#include "kit/StartLog.h"
#include "kit/TextLines.h"

namespace trelv::fuzz {
namespace {

const std::string kStart =
    "05/03/2009 10:00:01 -- Gestione ProdTrelv - Linea di comando ArgV = INTEGRATEDRUN S:\\Lumo "
    "S:\\Lumo MVBIL\t Numero parametri = 4\r\n"
    "05/03/2009 10:00:01 -- Gestione ProdTrelv - Inizio procedura\r\n"
    "05/03/2009 10:00:02 -- Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in "
    "cartella: "
    "S:\\Lumo\\prg\\com\\setup\\aggdovra\r\n"
    "05/03/2009 10:00:02 -- Gestione ProdTrelv - Lato Server la versione: 09.93 è minore o uguale "
    "a "
    "quella corrente: 09.93\r\n"
    "05/03/2009 10:00:03 -- Gestione ProdTrelv - Termine procedura "
    "UpdateAllProdottiComplementari\r\n"
    "05/03/2009 10:00:03 -- Gestione ProdTrelv - Esecuzione di: S:\\Lumo\\mv\\zb\\mvbil.exe\r\n";

void checkLines(const std::vector<kit::LogLine>& lines, const std::vector<std::string>& all) {
  std::size_t last = lines.empty() ? 0 : lines.front().number - 1;
  for (const kit::LogLine& line : lines) {
    require(line.number == last + 1, "lines stand in their order", {line.whole});
    require(line.number <= all.size() && line.whole == all[line.number - 1],
            "a line is one of the log", {line.whole});
    require(line.whole.ends_with(line.text), "a line's text stands in it", {line.whole, line.text});
    last = line.number;
  }
}

void checkStart(const kit::StartLog& start, const std::vector<std::string>& all) {
  require(!start.lines.empty(), "a start has lines");
  require(!start.arguments.empty() && equalNoCase(trim(start.arguments.front()), "INTEGRATEDRUN"),
          "a start of another mode is passed over", {start.lines.front().whole});
  checkLines(start.lines, all);
  for (std::size_t i = 0; i < start.runs.size(); ++i) {
    require(start.runs[i].side == (i % 2 == 0 ? Side::Server : Side::Client),
            "the sides alternate");
    require(!start.runs[i].lines.empty(), "a run has lines");
    checkLines(start.runs[i].lines, all);
  }
}

std::vector<std::string> textsOf(const kit::StartLog& start) {
  std::vector<std::string> texts = start.arguments;
  for (const kit::LogLine& line : start.lines) {
    texts.push_back(line.whole);
  }
  return texts;
}

void checkStartBehind(const std::string& text) {
  static const kit::RunLogText alone = kit::readRunLog(kStart);
  static const std::vector<std::string> texts = textsOf(*alone.start);
  const kit::RunLogText log = kit::readRunLog(text + "\n" + kStart);
  require(log.start && textsOf(*log.start) == texts, "the newest start is the one at the end",
          {text});
  require(log.start->walked && log.start->wentOn && !log.start->mixed &&
              log.start->runs.size() == alone.start->runs.size(),
          "what stands before a start changes nothing in it", {text});
}

}  // namespace

void checkRunLog(std::string_view bytes) {
  const std::string text(bytes);
  const std::vector<std::string> all = kit::textLines(text);
  const kit::RunLogText log = kit::readRunLog(text);
  require(log.empty == all.empty(), "a log without lines is empty");
  if (log.start) {
    checkStart(*log.start, all);
  }
  // Costly: of inputs that differ in their length only, one is enough.
  if (text.size() % 4 == 0) {
    checkStartBehind(text);
  }
}

}  // namespace trelv::fuzz
